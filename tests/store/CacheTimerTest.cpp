// The cache timer: its place on the main loop, the 150 ms rule, the heartbeat, and the
// delivery of buffered end-of-day records.
#include <chrono>
#include <vector>

#include <gtest/gtest.h>

#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTSecurity.h>

#include "securities/SecuritiesState.h"
#include "server/CacheTimer.h"
#include "store/StoreState.h"
#include "support/FakeSession.h"
#include "support/ManualClock.h"
#include "support/RecordingListener.h"

namespace {

using qvnrt::test::ManualClock;
using qvnrt::test::RecordingListener;

class CacheTimer : public ::testing::Test {
protected:
    void SetUp() override { RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0); }

    int Heartbeats() const {
        int count = 0;
        for (const auto& event : listener.events) count += event == "HeartBeatTick";
        return count;
    }

    qvnrt::test::FakeSession session;
    RecordingListener listener;
};

TEST_F(CacheTimer, StartsWithTheFirstOpenAndTicksThroughTheMainLoop) {
    qvnrt::PollLoop loop;
    qvnrt::SetMainLoop(&loop);
    loop.runFor(400);
    EXPECT_EQ(0, Heartbeats());  // no security opened the cache yet
    RTSec_Base security;
    ASSERT_TRUE(security.OpenRTSec("IBM"));
    // As long as two ticks take: a loaded machine folds missed expirations into one call, so
    // a fixed wait could see fewer. Never more than one tick per 300 ms period, though.
    const auto start = std::chrono::steady_clock::now();
    while (Heartbeats() < 2) loop.runFor(100);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_LE(Heartbeats(), elapsed / std::chrono::milliseconds(300) + 1);
    qvnrt::SetMainLoop(nullptr);
}

TEST_F(CacheTimer, TicksCloserThan150MillisecondsOnlyRefreshTheClock) {
    ManualClock clock(5000, 1000);
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 1000);
    EXPECT_EQ(1, Heartbeats());
    EXPECT_EQ(1000u, qvnrt::server::TheCacheTimer().lastTick());  // the tick count at the finish

    clock.now = 5001;
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 1149);
    EXPECT_EQ(1, Heartbeats());
    EXPECT_EQ(5001, RTSecCache::Store().now());

    RTSecCache::CacheTimerProc(nullptr, 0, 0, 1150);
    EXPECT_EQ(2, Heartbeats());

    // The tick count wraps at 32 bits; the difference is taken unsigned.
    clock.ticks = 0xFFFFFFF0u;
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 0xFFFFFFF0u);  // far from 1000: effective
    EXPECT_EQ(3, Heartbeats());
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 100);  // 116 ms after the wrap
    EXPECT_EQ(3, Heartbeats());
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 200);
    EXPECT_EQ(4, Heartbeats());
}

TEST_F(CacheTimer, HeartbeatComesBeforeTheBusyFlag) {
    ManualClock clock(5000, 1000);
    std::vector<bool> busyDuringHeartbeat;
    listener.after = [&](const std::string&) {
        busyDuringHeartbeat.push_back(qvnrt::server::TheCacheTimer().busy());
    };
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 1000);
    EXPECT_EQ(std::vector<bool>{false}, busyDuringHeartbeat);
    EXPECT_FALSE(qvnrt::server::TheCacheTimer().busy());
}

// A security that can be held back, and records what it is given.
class EodOwner : public RTSecurity {
public:
    struct Call {
        int count;
        int flags;
        uint32_t firstDate;
        bool operator==(const Call&) const = default;
    };
    using Calls = std::vector<Call>;
    bool IsReadyForRTCallback() override { return ready; }
    bool ReqEODCallback(unsigned long, int count, int flags, RTPRICEREC* records) override {
        calls.push_back({count, flags, records ? records[0].date : 0});
        return true;
    }
    bool ready = true;
    std::vector<Call> calls;
};

qvnrt::securities::PendingEodEntry Pending(std::vector<uint32_t> dates, bool complete, bool ended) {
    qvnrt::securities::PendingEodEntry entry;
    entry.complete = complete;
    entry.ended = ended;
    for (uint32_t date : dates) entry.records.push_back(RTPRICEREC{date, 0, 1, 1, 1, 1, 1});
    return entry;
}

TEST_F(CacheTimer, BufferedEndOfDayRecordsWaitForAReadySecurity) {
    ManualClock clock(5000, 1000);
    EodOwner owner;
    owner.ready = false;
    qvnrt::securities::State().pendingEod()[&owner] = Pending({10, 11, 12}, false, false);
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 1000);
    EXPECT_TRUE(owner.calls.empty());
    ASSERT_EQ(1u, qvnrt::securities::State().pendingEod().count(&owner));

    owner.ready = true;
    EodOwner single;
    qvnrt::securities::State().pendingEod()[&single] = Pending({20}, false, false);
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 2000);
    // Not final: all but the first, then the first alone with flags 0; a lone record only so.
    EXPECT_EQ((EodOwner::Calls{{2, 1, 11}, {1, 0, 10}}), owner.calls);
    EXPECT_EQ((EodOwner::Calls{{1, 0, 20}}), single.calls);
    EXPECT_EQ(0u, qvnrt::securities::State().pendingEod().count(&owner));
}

TEST_F(CacheTimer, EndedHistoryIsDeliveredWholeWithItsEndMark) {
    ManualClock clock(5000, 1000);
    EodOwner owner, empty;
    qvnrt::securities::State().pendingEod()[&owner] = Pending({10, 11}, true, true);
    qvnrt::securities::State().pendingEod()[&empty] = Pending({}, true, true);
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 1000);
    EXPECT_EQ((EodOwner::Calls{{2, 1, 10}, {0, -1, 0}}), owner.calls);
    EXPECT_EQ((EodOwner::Calls{{0, -1, 0}}), empty.calls);
}

TEST_F(CacheTimer, ClosingTheRequestDropsWhatWasBuffered) {
    EodOwner owner;
    qvnrt::securities::State().pendingEod()[&owner] = Pending({10}, true, false);
    owner.CloseSecurity();
    EXPECT_EQ(0u, qvnrt::securities::State().pendingEod().count(&owner));
}

}  // namespace
