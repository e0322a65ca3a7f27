#include <qvnrt/qt/QtMainLoop.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "QtTestApp.h"
#include "support/FakeSession.h"
#include "support/RecordingListener.h"

namespace {

using qvnrt::test::RunEventsUntil;

class QtLoop : public ::testing::Test {
protected:
    void SetUp() override {
        qvnrt::test::TestApp();
        qvnrt::SetMainLoop(&loop);
    }
    void TearDown() override { qvnrt::SetMainLoop(nullptr); }

    qvnrt::QtMainLoop loop;
};

TEST_F(QtLoop, TimerRepeatsUntilItRemovesItself) {
    int fired = 0;
    qvnrt::MainLoop::TimerId id = 0;
    id = loop.addTimer(5, [&] {
        if (++fired == 3) loop.removeTimer(id);
    });
    ASSERT_NE(0u, id);
    EXPECT_TRUE(RunEventsUntil([&] { return loop.TimerCount() == 0; }));
    RunEventsUntil([] { return false; }, 60);
    EXPECT_EQ(3, fired);
}

TEST_F(QtLoop, WatchCallsWhileReadableAndReplacesEarlierWatch) {
    int fds[2];
    ASSERT_EQ(0, pipe(fds));
    int first = 0, second = 0;
    loop.watchFd(fds[0], [&] { ++first; });
    loop.watchFd(fds[0], [&] {
        char byte;
        if (read(fds[0], &byte, 1) == 1) ++second;
    });
    EXPECT_EQ(1u, loop.WatchCount());
    ASSERT_EQ(2, write(fds[1], "ab", 2));
    EXPECT_TRUE(RunEventsUntil([&] { return second == 2; }));
    EXPECT_EQ(0, first);

    loop.unwatchFd(fds[0]);
    ASSERT_EQ(1, write(fds[1], "c", 1));
    RunEventsUntil([] { return false; }, 60);
    EXPECT_EQ(2, second);
    close(fds[0]);
    close(fds[1]);
}

// The driver's callbacks arrive from its dispatch call, made when Qt sees its descriptor
// readable; the watch ends with the driver.
TEST_F(QtLoop, DispatchingDriverCallsBackInsideTheQtLoop) {
    qvnrt::test::FakeSession session(QVNFAKE_DISPATCH_PATH);
    ASSERT_TRUE(session.Load());
    EXPECT_EQ(1u, loop.WatchCount());
    session.fake.setResult("clientOpenServer", RTOPEN_PENDING);
    ASSERT_EQ(-1, RTServer::Connect("a", "b", 0, 0, 1));
    RTNetConnectResult result{5, 1};
    session.fake.queue([&] { session.fake.fireNetwork(RTNET_CONNECTED, &result); });
    EXPECT_FALSE(RTServer::IsConnected());
    EXPECT_TRUE(RunEventsUntil([] { return RTServer::IsConnected(); }));

    RTServer::CloseServer();
    EXPECT_EQ(0u, loop.WatchCount());
}

// The cache timer starts with the first cached security and beats inside the Qt loop.
TEST_F(QtLoop, CacheTimerBeatsOnTheQtLoop) {
    qvnrt::test::FakeSession session;
    RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
    ASSERT_TRUE(session.Connect());
    qvnrt::test::RecordingListener listener;
    RTSecurity security;
    ASSERT_NE(0, security.OpenSecurity("IBM", RTSecurityType{}, 0, 0));
    const auto beats = [&] { return std::count(listener.events.begin(), listener.events.end(), "HeartBeatTick"); };
    EXPECT_TRUE(RunEventsUntil([&] { return beats() >= 2; }, 5000));
    EXPECT_EQ(1u, loop.TimerCount());
}

}  // namespace
