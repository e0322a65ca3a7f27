// The tick cache behind RTSecurity::RequestTick, against the fake driver with a temporary
// cache directory: cached spans served without the driver, the .tik file's path, its time
// and size in the symbol's record, and a change of kind "S" removing it.

#include <gtest/gtest.h>

#include <cstring>

#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTServer.h>

#include "calendar/PeriodTestSupport.h"
#include "platform/Directories.h"
#include "store/SecCacheEntry.h"
#include "store/StoreState.h"
#include "store/TickFilePath.h"
#include "support/FakeSession.h"
#include "support/IntradayOwner.h"
#include "support/ManualClock.h"

namespace {

using qvnrt::test::At;
using qvnrt::test::IntradayOwner;
using qvnrt::test::Tick;

class TickCache : public ::testing::Test {
protected:
    void SetUp() override {
        RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
        ASSERT_TRUE(session.Connect());
        clock.now = At(2026, 11, 18, 10, 0) - EPOCH_1970;
        RTSecCache::Store().refreshClock();
        owner = std::make_unique<IntradayOwner>();
        owner->OpenSecurity("BRK.B", static_cast<RTSecurityType>(7), 0, 0);
    }
    void TearDown() override { owner.reset(); }

    bool AskTicks() {
        owner->calls.clear();
        return owner->RequestTick(from, to, 1, 0, 2, 0, 0, 0, 0, 198, nullptr, 0, 0, 0, 0, 0);
    }
    // The driver answers the last request with one tick a second down from its end.
    void Answer() {
        const auto sent = session.fake.last("clientReqTickBars");
        const TICKDATA asked = sent.tickData();
        std::vector<TICKREC> ticks;
        for (uint32_t t = asked.end; t >= asked.start; --t) ticks.push_back(Tick(t, 1, 2.0f));
        const auto handle = static_cast<unsigned long>(sent.result);
        session.fake.fireTick(handle, static_cast<int>(ticks.size()), 0, RTREC_TICKREC, ticks.data());
        session.fake.fireTick(handle, 0, 0, 0, nullptr);
    }
    std::vector<uint32_t> Delivered() const {
        std::vector<uint32_t> times;
        for (const auto& call : owner->calls) {
            for (const TICKREC tick : call.ticks) times.push_back(+tick.time);
        }
        return times;
    }
    int EndCalls() const {
        int ends = 0;
        for (const auto& call : owner->calls) ends += call.count == 0;
        return ends;
    }

    qvnrt::test::FakeSession session;
    qvnrt::test::ManualClock clock;
    std::unique_ptr<IntradayOwner> owner;
    const uint32_t from = At(2026, 11, 17, 10, 0);
    const uint32_t to = At(2026, 11, 17, 10, 2);
};

TEST_F(TickCache, ASecondRequestForACachedSpanMakesNoDriverCall) {
    ASSERT_TRUE(AskTicks());
    Answer();
    const std::vector<uint32_t> first = Delivered();
    ASSERT_EQ(to - from + 1, first.size());
    EXPECT_TRUE(std::is_sorted(first.rbegin(), first.rend()));
    owner->CloseTick();

    const int asked = session.fake.count("clientReqTickBars");
    EXPECT_FALSE(AskTicks());  // nothing to ask: no handle
    EXPECT_EQ(asked, session.fake.count("clientReqTickBars"));
    EXPECT_EQ(first, Delivered());
    EXPECT_EQ(1, EndCalls());
}

TEST_F(TickCache, TheFileTimeAndSizeAreKeptInTheRecordWhenTheLastStoreCloses) {
    ASSERT_TRUE(AskTicks());
    Answer();
    owner->CloseTick();
    const auto* record = owner->m_pCacheEntry->m_record;
    unsigned long long size = 0;
    ASSERT_TRUE(qvnrt::platform::FileSize(RTSecCache::tickFilePath("BRK.B"), size));
    EXPECT_EQ(size, record->tikSize);
    EXPECT_EQ(static_cast<uint32_t>(clock.now), record->tikTime);
}

TEST_F(TickCache, AChangeOfKindSRemovesTheFileAndTheStores) {
    ASSERT_TRUE(AskTicks());
    Answer();
    const std::string path = RTSecCache::tickFilePath("BRK.B");
    ASSERT_TRUE(qvnrt::platform::FileExists(path));
    RTSecChange change{};
    std::strcpy(change.symbol, "BRK.B");
    change.kind = 'S';
    owner->ApplySecChange(&change);
    EXPECT_FALSE(qvnrt::platform::FileExists(path));
    EXPECT_EQ(nullptr, owner->m_pCacheEntry->m_pTickStore);
    EXPECT_EQ(0u, owner->m_pCacheEntry->m_record->tikTime);
    owner->CloseTick();  // the stale handle closes harmlessly
}

struct Escape {
    const char* symbol;
    const char* below;  // the path below the cache directory
};

class TickFilePathTest : public TickCache, public ::testing::WithParamInterface<Escape> {};

TEST_P(TickFilePathTest, EscapesTheSymbolAndPicksItsDirectory) {
    EXPECT_EQ(session.cacheDir.path() + "/" + GetParam().below,
              RTSecCache::tickFilePath(GetParam().symbol));
}

INSTANTIATE_TEST_SUITE_P(Symbols, TickFilePathTest,
                         ::testing::Values(Escape{"BRK.B", "B/BRK%2eB.tik"},
                                           Escape{"^DJI", "_/%5eDJI.tik"},
                                           Escape{"9@a$-_#", "9/9@a$-_#.tik"},
                                           Escape{"a/b c", "a/a%2fb%20c.tik"}));

}  // namespace
