// Intraday requests against the fake driver: the plain form that reaches the driver, the
// packets' road to the owner, the market-open test, the delay, the heartbeat and the live
// queue of the direct path.

#include <gtest/gtest.h>

#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTServer.h>

#include "calendar/PeriodTestSupport.h"
#include "store/StoreState.h"
#include "support/FakeSession.h"
#include "support/IntradayOwner.h"
#include "support/ManualClock.h"

namespace {

using qvnrt::test::At;
using qvnrt::test::Hm;
using qvnrt::test::IntradayOwner;
using qvnrt::test::Minute;
using qvnrt::test::Sessions;
using qvnrt::test::Tick;

constexpr uint8_t kDirect = 0x11;
constexpr int32_t kMissing = -32080;

class IntradayRequest : public ::testing::Test {
protected:
    void SetUp() override {
        RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
        ASSERT_TRUE(session.Connect());
        owner = std::make_unique<IntradayOwner>();
        owner->OpenSecurity("IBM", static_cast<RTSecurityType>(7), 0, 0);
        SetNow(At(2026, 11, 18, 10, 4, 30));  // a Wednesday
    }
    void TearDown() override { owner.reset(); }

    void UseRegularDay() { owner->UseRules(Sessions(true, {{Hm(9, 30), Hm(16, 0)}})); }
    void SetNow(uint32_t date) {
        clock.now = date - EPOCH_1970;
        RTSecCache::Store().refreshClock();
    }
    bool Ask(short weight, short live = 0, uint32_t end = 0, uint8_t route = 0,
             unsigned char filterMode = 2, short days = 198, unsigned short word = 0) {
        return owner->RequestTick(At(2026, 11, 16, 0, 0), end, weight, live, filterMode, 0, 0,
                                  0, 0, days, nullptr, 0, route, word, 0, 0);
    }
    qvnrt::test::FakeCall Sent() { return session.fake.last("clientReqTickBars"); }
    unsigned long Handle() { return static_cast<unsigned long>(Sent().result); }
    void RunTimer() {
        clock.ticks += 1000;
        RTSecCache::CacheTimerProc(nullptr, 0, 0, clock.ticks);
    }

    qvnrt::test::FakeSession session;
    qvnrt::test::ManualClock clock;
    std::unique_ptr<IntradayOwner> owner;
};

struct Reduction {
    short weight, live;
    bool withEnd;
    unsigned char filterMode;
    short days;
    short plainWeight, plainLive;
    int converted;
    friend void PrintTo(const Reduction& c, std::ostream* out) {
        *out << "weight " << c.weight << " live " << c.live << (c.withEnd ? " with an end" : "")
             << " filter " << int{c.filterMode} << " days " << c.days;
    }
};

class RequestReduction : public IntradayRequest,
                         public ::testing::WithParamInterface<Reduction> {};

TEST_P(RequestReduction, DriverSeesOnePlainFormWhateverTheOwnerAsked) {
    const Reduction& c = GetParam();
    const uint32_t end = c.withEnd ? At(2026, 11, 17, 16, 0) : 0;
    ASSERT_TRUE(Ask(c.weight, c.live, end, kDirect, c.filterMode, c.days, 0xBEEF));
    const TICKDATA sent = Sent().tickData();
    EXPECT_EQ(c.plainWeight, sent.weight);
    EXPECT_EQ(c.plainLive, sent.live);
    EXPECT_EQ(2, sent.filterMode);
    EXPECT_EQ(198, sent.days);
    EXPECT_EQ(0xBEEF, sent.requestWord);
    EXPECT_EQ(kDirect, sent.route);
    EXPECT_EQ(end, sent.end);
    EXPECT_EQ(c.converted, owner->m_bConvert);
    EXPECT_EQ(c.weight, owner->m_origRequest.weight);
    EXPECT_EQ(Handle(), owner->m_hTickEvent);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, RequestReduction,
    ::testing::Values(Reduction{1, 1, false, 2, 198, 1, 1, 0},
                      Reduction{5, 1, false, 2, 198, 1, 1, 1},
                      Reduction{-1, 1, false, 2, 198, -1, 1, 0},
                      Reduction{-1, 1, true, 2, 198, -1, 0, 0},   // live needs an open end
                      Reduction{-7, 1, false, 2, 198, -1, 1, 1},
                      Reduction{-7, 1, true, 2, 198, -1, 0, 1},
                      Reduction{1, 0, false, 3, 198, 1, 0, 1},    // a filter converts ticks
                      Reduction{1, 0, false, 2, 0x44, 1, 0, 1},
                      Reduction{-1, 0, false, 2, 0x44, -1, 0, 1}),
    [](const auto& info) { return "case" + std::to_string(info.index); });

struct BadRequest {
    const char* what;
    short weight;
    uint32_t start, end;
};

TEST_F(IntradayRequest, NonsenseRequestsAnswerFalseAndNeverReachTheDriver) {
    const BadRequest cases[] = {
        {"weight 0", 0, At(2026, 11, 16, 9, 30), 0},
        {"wider than a day", -1441, At(2026, 11, 16, 9, 30), 0},
        {"end before start", -5, At(2026, 11, 16, 9, 30), At(2026, 11, 13, 9, 30)},
    };
    for (const BadRequest& c : cases) {
        session.fake.clearLog();
        EXPECT_FALSE(owner->RequestTick(c.start, c.end, c.weight, 0, 2, 0, 0, 0, 0, 198, nullptr,
                                        0, 0, 0, 0, 0))
            << c.what;
        EXPECT_TRUE(session.fake.calls("clientReqTickBars").empty()) << c.what;
    }
    IntradayOwner noSymbol;
    EXPECT_FALSE(noSymbol.RequestTick(0, 0, -1, 1, 2, 0, 0, 0, 0, 198, nullptr, 0, kDirect, 0, 0,
                                      0));
}

TEST_F(IntradayRequest, UnconvertedRecordsArriveAsDatesWithEveryOtherByteKept) {
    const uint32_t t = At(2026, 11, 16, 10, 0);
    RTINTRADAY_PRICEREC bars[2] = {Minute(t + 60, 7, 1.5f, 2.5f, 3.5f, 0.5f),
                                   Minute(t, 9, 4.0f, 5.0f, 6.0f, 3.0f)};
    ASSERT_TRUE(Ask(-1));
    session.fake.fireTick(Handle(), 2, 0, RTREC_INTRADAY_PRICEREC, bars);
    session.fake.fireTick(Handle(), 0, 0, 0, nullptr);
    ASSERT_EQ(2u, owner->calls.size());
    const auto& packet = owner->calls[0];
    EXPECT_EQ(0, packet.done);
    ASSERT_EQ(2u, packet.bars.size());
    for (int i = 0; i < 2; ++i) {
        RTINTRADAY_PRICEREC expected = bars[i];
        expected.time += EPOCH_1970;
        EXPECT_EQ(0, std::memcmp(&expected, &packet.bars[i], sizeof(expected))) << i;
    }
    EXPECT_EQ(1, owner->calls[1].done);  // the end of history
    EXPECT_EQ(0, owner->calls[1].count);

    TICKREC ticks[2] = {Tick(t + 5, 100, 10.25f, 0x41), Tick(t, 200, 10.5f, 0x42)};
    ASSERT_TRUE(Ask(1));
    session.fake.fireTick(Handle(), 2, 0, RTREC_TICKREC, ticks);
    const auto& tickPacket = owner->calls.back();
    ASSERT_EQ(2u, tickPacket.ticks.size());
    // Unary plus reads the packed fields by value.
    EXPECT_EQ(ticks[1].time + EPOCH_1970, +tickPacket.ticks[1].time);
    EXPECT_EQ(0x42, tickPacket.ticks[1].flag);
    EXPECT_EQ(10.5f, +tickPacket.ticks[1].price);
}

TEST_F(IntradayRequest, BadPacketsAreSurvivedAndLatePacketsDropped) {
    UseRegularDay();
    ASSERT_TRUE(Ask(-5, 0, 0, kDirect));  // packets as the driver sends them, not the cache
    const unsigned long first = Handle();
    session.fake.fireTick(first, -3, 0, RTREC_INTRADAY_PRICEREC, nullptr);
    ASSERT_EQ(1u, owner->calls.size());
    EXPECT_EQ(0, owner->calls[0].count);
    session.fake.fireTick(first, 4, 0, RTREC_INTRADAY_PRICEREC, nullptr);  // no data
    EXPECT_EQ(0, owner->calls.back().count);
    TICKREC tick = Tick(At(2026, 11, 16, 10, 0), 1, 1.0f);
    const size_t before = owner->calls.size();
    session.fake.fireTick(first, 1, 0, 9, &tick);  // a type minutes cannot be
    ASSERT_EQ(before + 1, owner->calls.size());
    EXPECT_EQ(0, owner->calls.back().count);
    EXPECT_EQ(0, owner->calls.back().done);

    owner->CloseTick();
    EXPECT_EQ(0u, owner->m_hTickEvent);
    RTINTRADAY_PRICEREC late = Minute(At(2026, 11, 16, 10, 0), 5, 1, 1, 1, 1);
    const size_t closed = owner->calls.size();
    session.fake.fireTickWithUser(first, 1, 0, RTREC_INTRADAY_PRICEREC, &late,
                                  reinterpret_cast<unsigned long>(owner.get()));
    EXPECT_EQ(closed, owner->calls.size());

    ASSERT_TRUE(Ask(-5));
    const unsigned long second = Handle();
    const unsigned long user = reinterpret_cast<unsigned long>(owner.get());
    owner.reset();  // gone: the driver's late packet finds nothing
    EXPECT_TRUE(session.fake.fireTickWithUser(second, 1, 0, RTREC_INTRADAY_PRICEREC, &late, user)
                    .has_value());
}

struct MarketCase {
    const char* what;
    int hour, minute;
    int bitFlags;
    long exchangeDelay;  // 0: the exchange says nothing
    int done;
    friend void PrintTo(const MarketCase& c, std::ostream* out) { *out << c.what; }
};

class MarketOpen : public IntradayRequest, public ::testing::WithParamInterface<MarketCase> {};

TEST_P(MarketOpen, FirstPacketSaysWhetherMoreIsDueToday) {
    const MarketCase& c = GetParam();
    UseRegularDay();
    owner->m_bitFlags = c.bitFlags;
    owner->m_exchange = 3;
    if (c.exchangeDelay) session.fake.setExchangeLong(3, 11, c.exchangeDelay);
    SetNow(At(2026, 11, 18, c.hour, c.minute));
    ASSERT_TRUE(Ask(-1, 0, 0, 0, 2, 0x44));  // a filter: converted minutes
    RTINTRADAY_PRICEREC bar = Minute(At(2026, 11, 18, 9, 45), 10, 1, 2, 3, 0.5f);
    session.fake.fireTick(Handle(), 1, 0, RTREC_INTRADAY_PRICEREC, &bar);
    ASSERT_EQ(1u, owner->calls.size());
    EXPECT_EQ(c.done, owner->calls[0].done) << c.what;
}

INSTANTIATE_TEST_SUITE_P(
    Clock, MarketOpen,
    ::testing::Values(MarketCase{"open", 15, 0, 0, 0, 0},
                      MarketCase{"after the close", 16, 10, 0, 0, 1},
                      MarketCase{"before the open", 9, 0, 0, 0, 1},
                      MarketCase{"delayed by default 20 minutes", 16, 10, 0x20, 0, 0},
                      MarketCase{"delayed, close seen 20 minutes late", 16, 21, 0x20, 0, 1},
                      MarketCase{"delayed by the exchange's 5 minutes", 16, 6, 0x20, 5, 1}),
    [](const auto& info) { return "case" + std::to_string(info.index); });

TEST_F(IntradayRequest, MarketTestRunsAgainOnlyAtTheNextEdge) {
    UseRegularDay();
    SetNow(At(2026, 11, 18, 17, 0));
    ASSERT_TRUE(Ask(-5, 0, 0, kDirect));
    RTINTRADAY_PRICEREC bar = Minute(At(2026, 11, 18, 15, 58), 10, 1, 2, 3, 0.5f);
    session.fake.fireTick(Handle(), 1, 0, RTREC_INTRADAY_PRICEREC, &bar);
    EXPECT_EQ(At(2026, 11, 19, 9, 30), owner->m_closedUntil);
    EXPECT_EQ(0u, owner->m_openUntil);
    SetNow(At(2026, 11, 19, 9, 31));
    bar = Minute(At(2026, 11, 19, 9, 30), 10, 1, 2, 3, 0.5f);
    session.fake.fireTick(Handle(), 1, 1, RTREC_INTRADAY_PRICEREC, &bar);
    EXPECT_EQ(0u, owner->m_closedUntil);
    EXPECT_EQ(At(2026, 11, 19, 15, 59, 59), owner->m_openUntil);
    EXPECT_EQ(0, owner->calls.back().done);
}

class HeartBeat : public IntradayRequest {
protected:
    void SetUp() override {
        IntradayRequest::SetUp();
        UseRegularDay();
        SetNow(At(2026, 11, 18, 10, 4, 30));
        ASSERT_TRUE(Ask(-5, 0, 0, kDirect));  // live bars as the driver sends them
        RTINTRADAY_PRICEREC bars[2] = {Minute(At(2026, 11, 18, 10, 3), 10, 5, 6, 7, 4),
                                       Minute(At(2026, 11, 18, 10, 1), 20, 4, 5, 6, 3)};
        session.fake.fireTick(Handle(), 2, 0, RTREC_INTRADAY_PRICEREC, bars);
        session.fake.fireTick(Handle(), 0, 0, 0, nullptr);
        owner->calls.clear();
    }
};

TEST_F(HeartBeat, OpensOneEmptyBarPerPeriodUnderTheQuoteHandle) {
    EXPECT_EQ(At(2026, 11, 18, 10, 4, 59), owner->m_barEnd);
    owner->OnHeartBeat();  // still inside the open bar
    EXPECT_TRUE(owner->calls.empty());
    for (int minute : {7, 8, 12}) {
        SetNow(At(2026, 11, 18, 10, minute, 30));
        owner->OnHeartBeat();
    }
    ASSERT_EQ(2u, owner->calls.size());
    const uint32_t stamps[] = {At(2026, 11, 18, 10, 9, 59), At(2026, 11, 18, 10, 14, 59)};
    for (size_t i = 0; i < 2; ++i) {
        const auto& call = owner->calls[i];
        EXPECT_EQ(owner->m_request, call.handle);
        EXPECT_EQ((std::vector<int>{1, 0, 1, RTREC_INTRADAY_PRICEREC}),
                  (std::vector<int>{call.count, call.done, call.isNew, call.type}));
        ASSERT_EQ(1u, call.bars.size());
        EXPECT_EQ(stamps[i], call.bars[0].time);
        EXPECT_EQ(kMissing, call.bars[0].volume);
        EXPECT_EQ(-32080.0f, call.bars[0].high);
    }
}

TEST_F(HeartBeat, TellsTheSessionEndOnceAndIgnoresReentry) {
    SetNow(At(2026, 11, 18, 16, 0, 30));
    owner->OnHeartBeat();
    SetNow(At(2026, 11, 18, 16, 10, 30));
    owner->OnHeartBeat();
    ASSERT_EQ(1u, owner->calls.size());
    EXPECT_EQ(0, owner->calls[0].count);
    EXPECT_EQ(1, owner->calls[0].done);
    EXPECT_EQ(At(2026, 11, 19, 9, 30), owner->m_closedUntil);

    owner->m_bInHeartBeat = 1;  // as inside the owner's callback
    SetNow(At(2026, 11, 19, 9, 40, 30));
    owner->OnHeartBeat();
    EXPECT_EQ(1u, owner->calls.size());
    owner->m_bInHeartBeat = 0;
    owner->OnHeartBeat();
    ASSERT_EQ(2u, owner->calls.size());
    EXPECT_EQ(At(2026, 11, 19, 9, 44, 59), owner->calls[1].bars.at(0).time);
}

TEST_F(HeartBeat, LateRealBarRestoresTheSavedBar) {
    SetNow(At(2026, 11, 18, 10, 7, 30));
    owner->OnHeartBeat();
    RTINTRADAY_PRICEREC late = Minute(At(2026, 11, 18, 10, 4), 30, 6, 8, 9, 6);
    session.fake.fireTick(Handle(), 1, 1, RTREC_INTRADAY_PRICEREC, &late);
    const auto bars = owner->AllBars();
    ASSERT_FALSE(bars.empty());
    const RTINTRADAY_PRICEREC merged = bars.back();
    EXPECT_EQ(At(2026, 11, 18, 10, 4, 59), merged.time);
    EXPECT_EQ(60, merged.volume);
    EXPECT_EQ(8.0f, merged.close);
    EXPECT_EQ(9.0f, merged.high);
    EXPECT_EQ(0u, owner->m_savedBarStart);

    // Closed bars take no late data: the open bar goes out again as it was.
    RTINTRADAY_PRICEREC older = Minute(At(2026, 11, 18, 9, 50), 30, 6, 8, 9, 6);
    session.fake.fireTick(Handle(), 1, 1, RTREC_INTRADAY_PRICEREC, &older);
    const RTINTRADAY_PRICEREC again = owner->AllBars().back();
    EXPECT_EQ(0, std::memcmp(&merged, &again, sizeof(again)));
}

TEST_F(IntradayRequest, DirectLiveTicksWaitForTheTimer) {
    ASSERT_TRUE(Ask(1, 1, 0, kDirect));
    TICKREC ticks[2] = {Tick(At(2026, 11, 18, 10, 4, 1), 1, 2.0f),
                        Tick(At(2026, 11, 18, 10, 4, 2), 3, 2.5f)};
    session.fake.fireTick(Handle(), 2, 1, RTREC_TICKREC, ticks);
    session.fake.fireTick(Handle(), 1, 1, RTREC_TICKREC, ticks + 1);
    EXPECT_TRUE(owner->calls.empty());
    RunTimer();
    ASSERT_EQ(1u, owner->calls.size());
    EXPECT_EQ(1, owner->calls[0].isNew);
    ASSERT_EQ(3u, owner->calls[0].ticks.size());
    EXPECT_EQ(At(2026, 11, 18, 10, 4, 2), +owner->calls[0].ticks[2].time);
    RunTimer();
    EXPECT_EQ(1u, owner->calls.size());
}

}  // namespace
