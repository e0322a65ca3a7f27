// The driver's network events, and how listeners hear them.
#include <cstdint>
#include <stdexcept>

#include <gtest/gtest.h>

#include <qvnrt/CDataServiceRights.h>
#include <qvnrt/RTServer.h>

#include "support/FakeSession.h"
#include "support/ManualClock.h"
#include "support/RecordingListener.h"

namespace {

using qvnrt::test::FakeSession;
using qvnrt::test::RecordingListener;
using Events = std::vector<std::string>;

class NetworkEvents : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.Connect(2)); }

    FakeSession session;
    RecordingListener listener;
};

TEST_F(NetworkEvents, ConnectionLostInASilentModeIsRaisedOncePerConnection) {
    ASSERT_TRUE(session.fake.connectionLost(0));
    EXPECT_EQ(-1, RTServer::m_lStatus);
    EXPECT_EQ(Events{"Disconnected"}, listener.events);
    session.fake.connectionLost(0);  // already offline: nothing more
    EXPECT_EQ(1u, listener.events.size());
    EXPECT_TRUE(session.ui.messages.empty());

    ASSERT_EQ(0, RTServer::Connect("a", "b", 0, 0, 2));
    session.fake.connectionLost(0);
    EXPECT_EQ((Events{"Disconnected", "Disconnected"}), listener.events);
}

TEST_F(NetworkEvents, ConnectionLostClearsServerStateAndTellsTheGateUnlessMode1) {
    RTServer::s_lProcessingEOD = 1;
    RTServer::s_lServerTimeDelta = 30;
    const int toldBefore = g_appDataServiceRights.m_connectionStateCount;
    session.fake.connectionLost(3);
    EXPECT_EQ(0, RTServer::IsProcessingEOD());
    EXPECT_EQ(0, RTServer::s_lServerTimeDelta);
    EXPECT_EQ(toldBefore + 1, g_appDataServiceRights.m_connectionStateCount);

    ASSERT_EQ(0, RTServer::Connect("a", "b", 0, 0, 1));
    const int toldInMode1 = g_appDataServiceRights.m_connectionStateCount;
    session.fake.connectionLost(3);
    EXPECT_EQ(toldInMode1, g_appDataServiceRights.m_connectionStateCount);
}

TEST_F(NetworkEvents, InteractiveModeTellsTheUser) {
    RTServer::Disconnect();
    ASSERT_EQ(0, RTServer::Connect("a", "b", 0, 0, 0));
    listener.events.clear();

    session.fake.connectionLost(1);
    ASSERT_EQ(1u, session.ui.messages.size());
    EXPECT_EQ(0, session.ui.messages[0].text.find("Unable to open port for interprocess"));
    EXPECT_EQ(0u, session.ui.messages[0].style);  // style and help id stand reversed
    EXPECT_EQ(0x30u, session.ui.messages[0].helpId);
    EXPECT_EQ(Events{"Disconnected"}, listener.events);

    // Any other reason: a message and, deliberately, no event.
    ASSERT_EQ(0, RTServer::Connect("a", "b", 0, 0, 0));
    session.fake.connectionLost(2);
    EXPECT_EQ(-1, RTServer::m_lStatus);
    ASSERT_EQ(2u, session.ui.messages.size());
    EXPECT_EQ(0, session.ui.messages[1].text.find("Application interprocess communication "
                                                  "unavailable.  Data no longer available."));
    EXPECT_EQ(0x40u, session.ui.messages[1].style);
    EXPECT_EQ(Events{"Disconnected"}, listener.events);
    EXPECT_FALSE(RTServer::IsConnected());
}

TEST_F(NetworkEvents, RightsServerTimeAndEndOfDayProcessing) {
    int rights = 0;
    const int appliedBefore = g_appDataServiceRights.m_rightsApplied;
    session.fake.fireNetwork(RTNET_RIGHTS, &rights);
    EXPECT_EQ(&rights, g_appDataServiceRights.m_rightsData);
    EXPECT_EQ(appliedBefore + 1, g_appDataServiceRights.m_rightsApplied);

    qvnrt::test::ManualClock clock(1000000);
    long serverTime = 1000090;
    session.fake.fireNetwork(RTNET_SERVER_TIME, &serverTime);
    EXPECT_EQ(90, RTServer::s_lServerTimeDelta);

    int processing = 1;
    session.fake.fireNetwork(RTNET_EOD_PROCESSING, &processing);
    EXPECT_EQ(1, RTServer::IsProcessingEOD());
    processing = 0;
    session.fake.fireNetwork(RTNET_EOD_PROCESSING, &processing);
    EXPECT_EQ(0, RTServer::IsProcessingEOD());
    processing = 1;
    session.fake.fireNetwork(RTNET_EOD_PROCESSING, &processing);
    session.fake.fireNetwork(RTNET_EOD_PROCESSING, nullptr);  // null counts as finished
    EXPECT_EQ(0, RTServer::IsProcessingEOD());
    EXPECT_EQ((Events{"RightsChanged", "EODStarted", "EODFinished", "EODStarted", "EODFinished"}),
              listener.events);
}

TEST_F(NetworkEvents, RightsDataIsActedOnOnlyWhileConnected) {
    RTServer::Disconnect();
    const int appliedBefore = g_appDataServiceRights.m_rightsApplied;
    session.fake.fireNetwork(RTNET_RIGHTS, nullptr);
    EXPECT_EQ(appliedBefore, g_appDataServiceRights.m_rightsApplied);
    EXPECT_EQ("RightsChanged", listener.events.back());
}

TEST_F(NetworkEvents, ConnectionEstablishedAndLimits) {
    RTServer::Disconnect();
    listener.events.clear();
    session.fake.connected(250, 3);  // a non-zero result: connected, no limit
    EXPECT_TRUE(RTServer::IsConnected());
    EXPECT_EQ(Events{"ConnectResult 3"}, listener.events);

    session.fake.connected(250, 0);
    session.fake.fireNetwork(RTNET_NO_LIMIT);
    EXPECT_EQ((Events{"ConnectResult 3", "ConnectResult 0", "ServerLimit 250",
                      "ServerLimit 2147483647"}),
              listener.events);
}

TEST_F(NetworkEvents, IgnoredAndMalformedEvents) {
    RTServer::s_lServerTimeDelta = 12;
    for (int event : {3, 0, 9, -1, 1000, RTNET_SERVER_TIME, RTNET_CONNECTED,
                      RTNET_SECURITY_CHANGE}) {
        session.fake.fireNetwork(event, nullptr);  // unknown, or known but without its argument
    }
    EXPECT_TRUE(listener.events.empty());
    EXPECT_EQ(12, RTServer::s_lServerTimeDelta);
    EXPECT_TRUE(RTServer::IsConnected());
}

TEST_F(NetworkEvents, ListenersMayRemoveThemselvesOrOthersDuringAWalk) {
    auto first = std::make_unique<RecordingListener>();
    auto second = std::make_unique<RecordingListener>();
    // Whichever of the three comes first in address order removes all three.
    const auto removeAll = [&](const std::string&) {
        RTServer::removeEventListener(listener);
        RTServer::removeEventListener(*first);
        RTServer::removeEventListener(*second);
    };
    listener.after = first->after = second->after = removeAll;
    RTServer::Disconnect();
    const size_t heard =
        listener.events.size() + first->events.size() + second->events.size();
    EXPECT_EQ(1u, heard);
    RTServer::addEventListener(listener);
    RTServer::addEventListener(listener);  // twice: no effect
    listener.after = nullptr;
    ASSERT_EQ(0, RTServer::Connect("a", "b", 0, 0, 2));
    session.fake.connectionLost(0);
    EXPECT_EQ("Disconnected", listener.events.back());
}

TEST_F(NetworkEvents, ExceptionsOfListeners) {
    RecordingListener other;
    int thrown = 0;
    const auto throwing = [&](const std::string&) {
        ++thrown;
        throw std::runtime_error("listener failed");
    };
    listener.after = other.after = throwing;

    // Events without an argument: each call is guarded and the walk goes on.
    EXPECT_NO_THROW(session.fake.fireNetwork(RTNET_RIGHTS, nullptr));
    EXPECT_EQ(2, thrown);

    // Events with an int argument: the first exception ends the walk and leaves NetworkCB.
    RTNetConnectResult result{0, 7};
    EXPECT_THROW(RTServer::NetworkCB(RTNET_CONNECTED, &result), std::runtime_error);
    EXPECT_EQ(3, thrown);
    EXPECT_EQ(3u, listener.events.size() + other.events.size());
    EXPECT_TRUE(RTServer::IsConnected());
}

}  // namespace
