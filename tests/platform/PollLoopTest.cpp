#include <qvnrt/host.h>

#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

namespace qvnrt {
namespace {

// A pipe whose read end can be watched; closes both ends at the end of a test.
class Pipe {
public:
    Pipe() { EXPECT_EQ(0, ::pipe(m_fds)); }
    ~Pipe() {
        closeRead();
        closeWrite();
    }
    int readEnd() const { return m_fds[0]; }
    void signal() { ASSERT_EQ(1, ::write(m_fds[1], "x", 1)); }
    void drain() {
        char byte;
        ASSERT_EQ(1, ::read(m_fds[0], &byte, 1));
    }
    void closeRead() { closeEnd(0); }
    void closeWrite() { closeEnd(1); }

private:
    void closeEnd(int end) {
        if (m_fds[end] >= 0) ::close(m_fds[end]);
        m_fds[end] = -1;
    }

    int m_fds[2] = {-1, -1};
};

void Sleep(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

class PollLoopTest : public ::testing::Test {
protected:
    PollLoop loop;
};

TEST_F(PollLoopTest, TimerRepeatsUntilItRemovesItselfAndRunEndsOnQuit) {
    int fired = 0;
    MainLoop::TimerId id = 0;
    id = loop.addTimer(5, [&] {
        if (++fired < 3) return;
        loop.removeTimer(id);
        loop.quit();
    });
    ASSERT_NE(0u, id);
    loop.run();
    loop.removeTimer(id);  // again is harmless
    Sleep(20);
    EXPECT_EQ(0, loop.runOnce(0));
    EXPECT_EQ(3, fired);
}

TEST_F(PollLoopTest, MissedExpirationsFoldIntoOneCall) {
    int fired = 0;
    loop.addTimer(1, [&] { ++fired; });
    Sleep(30);
    EXPECT_EQ(1, loop.runOnce(0));
    EXPECT_EQ(1, fired);
}

TEST_F(PollLoopTest, ZeroMillisecondTimerStillFires) {
    int fired = 0;
    ASSERT_NE(0u, loop.addTimer(0, [&] { ++fired; }));
    EXPECT_EQ(1, loop.runOnce(1000));
    EXPECT_EQ(0u, loop.addTimer(10, nullptr));  // nothing to call: refused
}

TEST_F(PollLoopTest, WatchedDescriptorCallsWhileReadable) {
    Pipe pipe;
    int calls = 0;
    loop.watchFd(pipe.readEnd(), [&] {
        ++calls;
        pipe.drain();
    });
    EXPECT_EQ(0, loop.runOnce(0));
    pipe.signal();
    EXPECT_EQ(1, loop.runOnce(1000));
    EXPECT_EQ(0, loop.runOnce(0));  // drained

    // A second watch on the same descriptor replaces the first.
    int replaced = 0;
    loop.watchFd(pipe.readEnd(), [&] {
        ++replaced;
        pipe.drain();
    });
    pipe.signal();
    EXPECT_EQ(1, loop.runOnce(1000));
    EXPECT_EQ(1, calls);
    EXPECT_EQ(1, replaced);

    loop.unwatchFd(pipe.readEnd());
    pipe.signal();
    EXPECT_EQ(0, loop.runOnce(0));
}

TEST_F(PollLoopTest, CallbackMayRemoveItselfAndOthersDuringDispatch) {
    Pipe first, second;
    int secondCalls = 0;
    int timerCalls = 0;
    MainLoop::TimerId timer = loop.addTimer(1, [&] { ++timerCalls; });
    // The closure owns a string that must stay alive while it runs, though its watch is
    // gone (AddressSanitizer reports it otherwise).
    auto owned = std::make_shared<std::string>("still here");
    std::string seen;
    loop.watchFd(first.readEnd(), [&, owned] {
        loop.unwatchFd(first.readEnd());
        loop.unwatchFd(second.readEnd());
        loop.removeTimer(timer);
        seen = *owned;
    });
    owned.reset();
    loop.watchFd(second.readEnd(), [&] { ++secondCalls; });
    first.signal();
    second.signal();
    Sleep(10);  // the timer is due as well
    EXPECT_EQ(1, loop.runOnce(1000));
    EXPECT_EQ("still here", seen);
    EXPECT_EQ(0, secondCalls);
    EXPECT_EQ(0, timerCalls);
    EXPECT_EQ(0, loop.runOnce(20));
}

TEST_F(PollLoopTest, WatchesAndTimersAddedDuringDispatchWaitForTheNextRound) {
    Pipe first, second;
    int added = 0;
    int addedTimer = 0;
    loop.watchFd(first.readEnd(), [&] {
        first.drain();
        loop.watchFd(second.readEnd(), [&] { ++added; });
        loop.addTimer(1, [&] { ++addedTimer; });
    });
    first.signal();
    second.signal();
    EXPECT_EQ(1, loop.runOnce(1000));
    EXPECT_EQ(0, added);
    Sleep(5);
    EXPECT_EQ(2, loop.runOnce(1000));
    EXPECT_EQ(1, added);
    EXPECT_EQ(1, addedTimer);
}

TEST_F(PollLoopTest, WatchReplacedDuringDispatchIsNotCalledForTheOldReadiness) {
    Pipe first, second;
    int oldCalls = 0, newCalls = 0;
    loop.watchFd(first.readEnd(), [&] {
        first.drain();
        loop.watchFd(second.readEnd(), [&] { ++newCalls; });
    });
    loop.watchFd(second.readEnd(), [&] { ++oldCalls; });
    first.signal();
    second.signal();
    EXPECT_EQ(1, loop.runOnce(1000));
    EXPECT_EQ(0, oldCalls);
    EXPECT_EQ(0, newCalls);
    EXPECT_EQ(1, loop.runOnce(0));
    EXPECT_EQ(1, newCalls);
}

TEST_F(PollLoopTest, QuitStopsDispatchAfterTheCurrentCallbackAndLosesNothing) {
    Pipe first, second;
    std::vector<int> order;
    loop.watchFd(first.readEnd(), [&] {
        order.push_back(1);
        first.drain();
        loop.quit();
    });
    loop.watchFd(second.readEnd(), [&] {
        order.push_back(2);
        second.drain();
    });
    first.signal();
    second.signal();
    loop.run();
    EXPECT_EQ(std::vector<int>{1}, order);
    EXPECT_EQ(1, loop.runOnce(0));  // the other is still ready
    EXPECT_EQ((std::vector<int>{1, 2}), order);
}

TEST_F(PollLoopTest, RunForReturnsAfterItsTimeAndQuitEndsOnlyTheInnermostRun) {
    const auto start = std::chrono::steady_clock::now();
    loop.runFor(30);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));

    // The outer timer may fire again inside the nested run (its period is as short as the
    // inner one's): such calls only count, so the outcome does not hang on which timer the
    // kernel reports first.
    bool nested = false;
    bool innerReturned = false;
    int callsAfterInner = 0;
    loop.addTimer(1, [&] {
        if (nested) return;
        if (innerReturned) {
            ++callsAfterInner;
            loop.quit();
            return;
        }
        nested = true;
        const MainLoop::TimerId inner = loop.addTimer(1, [&] { loop.quit(); });
        loop.run();  // a nested loop, as under a modal panel
        loop.removeTimer(inner);
        nested = false;
        innerReturned = true;
    });
    loop.run();
    EXPECT_TRUE(innerReturned);
    EXPECT_EQ(1, callsAfterInner);  // the outer loop went on after the inner quit

    loop.addTimer(1, [&] { loop.quit(); });
    const auto again = std::chrono::steady_clock::now();
    loop.runFor(60000);  // quit ends it early
    EXPECT_LT(std::chrono::steady_clock::now() - again, std::chrono::seconds(30));
}

TEST_F(PollLoopTest, DescriptorClosedWithoutUnwatchIsDropped) {
    Pipe pipe;
    int calls = 0;
    loop.watchFd(pipe.readEnd(), [&] { ++calls; });
    pipe.closeRead();
    EXPECT_EQ(0, loop.runOnce(0));
    EXPECT_EQ(0, loop.runOnce(0));
    EXPECT_EQ(0, calls);
}

TEST_F(PollLoopTest, HungUpDescriptorIsReportedSoItsOwnerSeesTheEnd) {
    Pipe pipe;
    pipe.closeWrite();
    int calls = 0;
    loop.watchFd(pipe.readEnd(), [&] {
        ++calls;
        loop.unwatchFd(pipe.readEnd());
    });
    EXPECT_EQ(1, loop.runOnce(1000));
    EXPECT_EQ(1, calls);
}

// ---- SetMainLoop / GetMainLoop ------------------------------------------------------------

class CountingLoop : public MainLoop {
public:
    TimerId addTimer(unsigned, std::function<void()>) override { return ++timers; }
    void removeTimer(TimerId) override {}
    void watchFd(int, std::function<void()>) override {}
    void unwatchFd(int) override {}
    TimerId timers = 0;
};

TEST(MainLoop, InstalledLoopServesUntilNullRestoresTheLibrarysOwn) {
    MainLoop& own = GetMainLoop();
    EXPECT_NE(nullptr, dynamic_cast<PollLoop*>(&own));
    EXPECT_EQ(&own, &GetMainLoop());  // one process-wide instance

    CountingLoop counting;
    EXPECT_EQ(nullptr, SetMainLoop(&counting));
    EXPECT_EQ(1u, GetMainLoop().addTimer(300, [] {}));
    EXPECT_EQ(1u, counting.timers);
    EXPECT_EQ(&counting, SetMainLoop(nullptr));
    EXPECT_EQ(&own, &GetMainLoop());
}

TEST(MainLoop, LoopDestroyedWhileInstalledIsUninstalled) {
    MainLoop& own = GetMainLoop();
    {
        auto counting = std::make_unique<CountingLoop>();
        SetMainLoop(counting.get());
    }
    EXPECT_EQ(&own, &GetMainLoop());
}

}  // namespace
}  // namespace qvnrt
