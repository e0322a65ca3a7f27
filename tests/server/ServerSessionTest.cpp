// Connect, Disconnect, CloseServer and CloseEvent against the fake driver.
#include <gtest/gtest.h>

#include <qvnrt/CDataServiceRights.h>
#include <qvnrt/RTServer.h>

#include "support/FakeSession.h"
#include "support/RecordingListener.h"

namespace {

using qvnrt::test::FakeSession;
using qvnrt::test::RecordingListener;
using Events = std::vector<std::string>;

class ServerSession : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.Load()); }

    long ConnectWith(long driverResult, int connectMode = 1, int wantRights = 0) {
        session.fake.setResult("clientOpenServer", driverResult);
        return RTServer::Connect("one", "two", 42, wantRights, connectMode);
    }

    FakeSession session;
    RecordingListener listener;
};

TEST_F(ServerSession, ConnectPassesItsArgumentsToTheDriver) {
    g_appDataServiceRights.SetRightsValue(5, 77);
    ASSERT_EQ(0, ConnectWith(RTOPEN_REMOTE, 4, 1));
    const auto open = session.fake.last("clientOpenServer");
    EXPECT_EQ("one", open.text("firstText"));
    EXPECT_EQ("two", open.text("secondText"));
    EXPECT_EQ(65536u, open.number("connectBuffer"));
    EXPECT_EQ(42u, open.number("connectNumber"));
    EXPECT_EQ(77, open.integer("rights"));  // the gate's value for tag 5
    EXPECT_EQ(4, open.integer("connectMode"));
    // The cache is off: the driver is told that nothing newer is wanted.
    EXPECT_EQ(2147483647u, open.number("changeStamp"));
    EXPECT_EQ(4, RTServer::s_connectMode);

    RTServer::Disconnect();
    ConnectWith(RTOPEN_REMOTE);  // rights of zero: the gate is not asked
    EXPECT_EQ(0, session.fake.last("clientOpenServer").integer("rights"));
}

TEST_F(ServerSession, ResultTable) {
    EXPECT_EQ(-5, ConnectWith(RTOPEN_REFUSED));
    EXPECT_FALSE(RTServer::IsConnected());

    EXPECT_EQ(1234, ConnectWith(1234));  // a code of the driver's, stored as it came
    EXPECT_EQ(1234, RTServer::m_lStatus);

    EXPECT_EQ(0, ConnectWith(RTOPEN_REMOTE));
    EXPECT_EQ(1, RTServer::m_locality);
    EXPECT_FALSE(RTServer::IsLocal());
    EXPECT_TRUE(listener.events.empty());  // no event for a remote service
}

TEST_F(ServerSession, LocalServiceRaisesLocalModeAndTellsTheGate) {
    const int toldBefore = g_appDataServiceRights.m_connectionStateCount;
    EXPECT_EQ(0, ConnectWith(RTOPEN_LOCAL));
    EXPECT_EQ(2, RTServer::m_locality);
    EXPECT_TRUE(RTServer::IsLocal());
    EXPECT_EQ(Events{"LocalMode"}, listener.events);
    EXPECT_EQ(toldBefore + 1, g_appDataServiceRights.m_connectionStateCount);
    EXPECT_EQ(0, g_appDataServiceRights.m_lastConnectionState);
}

TEST_F(ServerSession, PendingConnectionCompletesThroughEvent6) {
    const int toldBefore = g_appDataServiceRights.m_connectionStateCount;
    EXPECT_EQ(-1, ConnectWith(RTOPEN_PENDING, 1));
    EXPECT_EQ(toldBefore, g_appDataServiceRights.m_connectionStateCount);  // mode 1: silent
    EXPECT_EQ(3, RTServer::m_locality);
    EXPECT_TRUE(session.fake.connected(9, 1));
    EXPECT_TRUE(RTServer::IsConnected());
    EXPECT_FALSE(RTServer::IsLocal());  // event 6 does not change the locality

    RTServer::Disconnect();
    EXPECT_EQ(-1, ConnectWith(RTOPEN_PENDING, 2));
    EXPECT_GT(g_appDataServiceRights.m_connectionStateCount, toldBefore);
}

TEST_F(ServerSession, ConnectWhileConnectedOrUnloadedDoesNotCallTheDriver) {
    ASSERT_EQ(0, ConnectWith(RTOPEN_REMOTE));
    EXPECT_EQ(0, ConnectWith(RTOPEN_REFUSED));
    EXPECT_EQ(1, session.fake.count("clientOpenServer"));

    RTServer::CloseServer();
    EXPECT_FALSE(RTServer::IsLoaded());
    EXPECT_EQ(0, RTServer::m_lStatus);  // unchanged by CloseServer
    EXPECT_FALSE(RTServer::IsConnected());
    EXPECT_EQ(0, RTServer::Connect("a", "b", 0, 0, 1));  // the present status
    EXPECT_EQ(1, session.fake.count("clientOpenServer"));
}

TEST_F(ServerSession, DisconnectKeepsTheDriverLoaded) {
    RTServer::Disconnect();
    EXPECT_TRUE(listener.events.empty());  // offline: nothing to raise
    EXPECT_EQ(0, session.fake.count("clientCloseServer"));

    ASSERT_EQ(0, ConnectWith(RTOPEN_REMOTE));
    RTServer::s_lProcessingEOD = 1;
    RTServer::Disconnect();
    EXPECT_EQ(1, session.fake.count("clientCloseServer"));
    EXPECT_EQ(-1, RTServer::m_lStatus);
    EXPECT_EQ(0, RTServer::IsProcessingEOD());
    EXPECT_TRUE(RTServer::IsLoaded());
    EXPECT_EQ(Events{"Disconnected"}, listener.events);
    EXPECT_EQ(0, ConnectWith(RTOPEN_REMOTE));  // at once
}

TEST_F(ServerSession, CloseServerRaisesNothing) {
    ASSERT_EQ(0, ConnectWith(RTOPEN_REMOTE));
    RTServer::s_lProcessingEOD = 1;
    RTServer::CloseServer();
    EXPECT_TRUE(listener.events.empty());
    EXPECT_EQ(0, RTServer::IsProcessingEOD());
    EXPECT_EQ(1, session.fake.count("clientCloseServer"));
    EXPECT_FALSE(RTServer::IsConnected());
}

TEST_F(ServerSession, CloseEventCallsTheDriverOnlyWhileConnected) {
    unsigned long request = 17;
    RTServer::CloseEvent(request);  // offline: dropped silently
    EXPECT_EQ(0u, request);
    EXPECT_EQ(0, session.fake.count("clientCloseEvent"));

    ASSERT_EQ(0, ConnectWith(RTOPEN_REMOTE));
    request = 18;
    RTServer::CloseEvent(request);
    EXPECT_EQ(0u, request);
    EXPECT_EQ(18u, session.fake.last("clientCloseEvent").number("request"));
    RTServer::CloseEvent(request);  // 0: nothing to cancel
    EXPECT_EQ(1, session.fake.count("clientCloseEvent"));
}

TEST_F(ServerSession, PropertiesGoToTheDriverOnlyWhenLoaded) {
    session.fake.setPropertyLong(13, 1);
    EXPECT_EQ(1, RTServer::GetProperty(static_cast<RTProperties>(13), 0));
    RTServer::CloseServer();
    EXPECT_EQ(0, RTServer::GetProperty(static_cast<RTProperties>(13), 0));
    char buffer[8] = "x";
    EXPECT_EQ(0, RTServer::GetPropertyString(static_cast<RTProperties>(1), buffer, 8, nullptr));
    EXPECT_EQ(0, RTServer::GetNewsSource(1, 2, buffer, 8));
}

}  // namespace
