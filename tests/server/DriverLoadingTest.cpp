// Finding and binding the driver, and LoadRTServer's message.
#include <unistd.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <qvnrt/RTServer.h>
#include <qvnrt/host.h>

#include "config/Strings.h"
#include "fake_driver/FakeDriver.h"
#include "platform/Registry.h"
#include "support/RecordingUiHost.h"
#include "support/TempDir.h"

namespace {

using qvnrt::test::FakeDriver;

class DriverLoading : public ::testing::Test {
protected:
    ~DriverLoading() override { RTServer::CloseServer(); }

    // A link named Client.DLL to the fake in the host directory, where a bare name is
    // looked for first.
    void PlaceClientDll() {
        ASSERT_EQ(0, ::symlink(QVNFAKE_PATH, home.host().file("Client.DLL").c_str()));
    }
    void SetRegistryName(const std::string& name) {
        auto key = qvnrt::platform::RegistryKey::Create("Software\\Quorvane\\RealTime");
        ASSERT_TRUE(key && key->SetString("RealTime DLL", name));
    }
    void SetSameDirectory(const std::string& value) {
        home.config().write("QUORVANE.INI", "[INHOUSEDEVELOPMENT]\nSAMEDIRINTF=" + value + "\n");
    }
    // Loads with no name set, as a first start would, and says which name was chosen.
    void ExpectChosen(long result, const std::string& name) {
        RTServer::m_DLLName[0] = '\0';
        EXPECT_EQ(result, RTServer::OpenServer(0)) << name;
        EXPECT_EQ(name, RTServer::m_DLLName);
        RTServer::CloseServer();
    }

    qvnrt::test::IsolatedHome home;
    qvnrt::test::RecordingUiHost ui;
    FakeDriver fake{QVNFAKE_PATH};
};

TEST_F(DriverLoading, NameLengthLimitIs256Characters) {
    const std::string longest(256, 'a');
    EXPECT_EQ(1, RTServer::SetDLLName(longest.c_str()));
    EXPECT_EQ(longest, RTServer::m_DLLName);
    EXPECT_EQ(0, RTServer::SetDLLName(std::string(257, 'b').c_str()));
    EXPECT_EQ(0, RTServer::SetDLLName(nullptr));
    EXPECT_EQ(longest, RTServer::m_DLLName);  // a refused name leaves the old one
}

TEST_F(DriverLoading, NoNameAndNoDefaultGives7338) {
    EXPECT_EQ(7338, RTServer::OpenServer(1));
    EXPECT_EQ(-3, RTServer::m_lStatus);
    EXPECT_FALSE(RTServer::IsLoaded());
    EXPECT_STREQ("", RTServer::m_DLLName);
}

TEST_F(DriverLoading, GivenNameIsLoadedAndBound) {
    ASSERT_EQ(1, RTServer::SetDLLName(QVNFAKE_PATH));
    EXPECT_EQ(0, RTServer::OpenServer(1));
    EXPECT_TRUE(RTServer::IsLoaded());
    EXPECT_EQ(-1, RTServer::m_lStatus);
    EXPECT_FALSE(RTServer::IsConnected());
    EXPECT_NE(nullptr, RTServer::m_lpReqSecurity);
    EXPECT_NE(nullptr, RTServer::m_lpclientDislayServerProps);
    // Both shapes of the exchange calls are bound to the same entry points.
    EXPECT_EQ(reinterpret_cast<void*>(RTServer::m_lpGetExchangeLong),
              reinterpret_cast<void*>(RTServer::m_lpGetExchangeFieldAccess));
    EXPECT_EQ(reinterpret_cast<void*>(RTServer::m_lpGetExchangeString),
              reinterpret_cast<void*>(RTServer::m_lpGetExchangeStringFieldAccess));

    // Loaded: a second call changes nothing, not even for a new name.
    RTServer::SetDLLName("/no/such/driver.so");
    EXPECT_EQ(0, RTServer::OpenServer(0));
    EXPECT_TRUE(RTServer::IsLoaded());
}

TEST_F(DriverLoading, UnloadableNameGives7348AndIsKeptForTheNextTry) {
    RTServer::SetDLLName("/no/such/driver.so");
    EXPECT_EQ(7348, RTServer::OpenServer(0));
    EXPECT_EQ(-3, RTServer::m_lStatus);
    EXPECT_STREQ("/no/such/driver.so", RTServer::m_DLLName);
    EXPECT_EQ(7348, RTServer::OpenServer(1));  // the same name is tried again
}

TEST_F(DriverLoading, OnlyDisplayPreferencesDialogMayBeMissing) {
    RTServer::SetDLLName(QVNFAKE_NO_DISPLAY_PATH);
    ASSERT_EQ(0, RTServer::OpenServer(1));
    EXPECT_EQ(nullptr, RTServer::m_lpclientDislayServerProps);
    RTServer::DisplayServerProperties(nullptr);  // no entry point to call: nothing happens
    RTServer::CloseServer();

    // clientChangeEvent is needed although nothing calls it.
    RTServer::SetDLLName(QVNFAKE_NO_CHANGE_PATH);
    EXPECT_EQ(7339, RTServer::OpenServer(1));
    EXPECT_FALSE(RTServer::IsLoaded());
    EXPECT_EQ(-3, RTServer::m_lStatus);
}

TEST_F(DriverLoading, SameDirectoryDevelopmentSettingIgnoresTheRegistry) {
    PlaceClientDll();
    SetRegistryName("/no/such/driver.so");
    for (const char* yes : {"Yes", "yes", "y"}) {
        SetSameDirectory(yes);
        ExpectChosen(0, "Client.DLL");
    }
    // Any other first letter falls through to the registry's name.
    SetSameDirectory("no");
    ExpectChosen(7348, "/no/such/driver.so");
}

TEST_F(DriverLoading, RegistryNameAndItsDefault) {
    SetRegistryName(QVNFAKE_PATH);
    ExpectChosen(0, QVNFAKE_PATH);
    // No value: Client.DLL, found in the host directory.
    PlaceClientDll();
    qvnrt::platform::RegistryKey::Open("Software\\Quorvane\\RealTime")->DeleteValue("RealTime DLL");
    ExpectChosen(0, "Client.DLL");
    // A value too long for the reader's 260 bytes gives the default as well.
    SetRegistryName(std::string(300, 'x'));
    ExpectChosen(0, "Client.DLL");
}

TEST_F(DriverLoading, LoadMessageShownOnceUntilASuccess) {
    const std::string text = qvnrt::LoadString(7338);
    EXPECT_EQ(0, LoadRTServer(1, 1));
    EXPECT_EQ(0, LoadRTServer(1, 1));
    ASSERT_EQ(1u, ui.messages.size());
    EXPECT_EQ(text, ui.messages[0].text);
    EXPECT_EQ(qvnrt::MB_ICONINFORMATION, ui.messages[0].style);

    RTServer::SetDLLName(QVNFAKE_PATH);
    EXPECT_EQ(1, LoadRTServer(1, 1));
    RTServer::CloseServer();
    RTServer::SetDLLName("/no/such/driver.so");
    EXPECT_EQ(0, LoadRTServer(1, 1));  // re-armed by the success
    ASSERT_EQ(2u, ui.messages.size());
    EXPECT_EQ(qvnrt::LoadString(7348), ui.messages[1].text);

    EXPECT_EQ(0, LoadRTServer(0, 1));  // not only once: shown at every failure
    EXPECT_EQ(0, LoadRTServer(0, 1));
    EXPECT_EQ(4u, ui.messages.size());
}

TEST_F(DriverLoading, DispatchDescriptorIsWatchedWhileLoaded) {
    FakeDriver dispatching(QVNFAKE_DISPATCH_PATH);
    qvnrt::PollLoop loop;
    qvnrt::SetMainLoop(&loop);
    RTServer::SetDLLName(QVNFAKE_DISPATCH_PATH);
    ASSERT_EQ(0, RTServer::OpenServer(1));
    dispatching.setResult("clientOpenServer", RTOPEN_PENDING);
    ASSERT_EQ(-1, RTServer::Connect("a", "b", 0, 0, 1));  // completes through event 6
    RTNetConnectResult result{5, 1};
    dispatching.queue([&] { dispatching.fireNetwork(RTNET_CONNECTED, &result); });
    EXPECT_FALSE(RTServer::IsConnected());
    loop.runOnce(1000);
    EXPECT_TRUE(RTServer::IsConnected());
    EXPECT_EQ(1, dispatching.dispatchCount());

    RTServer::CloseServer();
    dispatching.queue([] {});
    loop.runOnce(50);
    EXPECT_EQ(1, dispatching.dispatchCount());  // no longer watched
    qvnrt::SetMainLoop(nullptr);
}

}  // namespace
