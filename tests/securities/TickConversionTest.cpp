// Bars of N ticks and ticks filtered to the sessions, through the packet state machine.

#include <gtest/gtest.h>

#include "calendar/PeriodTestSupport.h"
#include "support/IntradayOwner.h"

namespace {

using qvnrt::test::At;
using qvnrt::test::Hm;
using qvnrt::test::IntradayOwner;
using qvnrt::test::Sessions;
using qvnrt::test::Text;
using qvnrt::test::Tick;

class TickConversion : public ::testing::Test {
protected:
    void SetUp() override { owner.UseRules(Sessions(true, {{Hm(9, 30), Hm(16, 0)}})); }
    void AskFor(int weight) {
        owner.m_origRequest.weight = static_cast<int16_t>(weight);
        owner.m_plainRequest.weight = 1;
        owner.m_bConvert = 1;
    }
    // `n` ticks a minute apart from `first`, volumes 1, 2, 3 ..., in the order given.
    static std::vector<TICKREC> Ticks(uint32_t first, int n, int volumeFrom = 1) {
        std::vector<TICKREC> ticks;
        for (int i = 0; i < n; ++i) {
            ticks.push_back(Tick(first + 60u * static_cast<uint32_t>(i), volumeFrom + i,
                                 static_cast<float>(10 + i), static_cast<uint8_t>(i)));
        }
        return ticks;
    }
    static std::vector<TICKREC> NewestFirst(std::vector<TICKREC> ticks) {
        std::reverse(ticks.begin(), ticks.end());
        return ticks;
    }
    int Send(std::vector<TICKREC> ticks, int isNew) {
        return owner.ReqTickCallbackHelper2(0, static_cast<int>(ticks.size()), isNew,
                                            RTREC_TICKREC, ticks.empty() ? nullptr : ticks.data());
    }
    std::vector<int> Volumes() const {
        std::vector<int> out;
        for (const auto& bar : owner.AllBars()) out.push_back(bar.volume);
        return out;
    }

    IntradayOwner owner;
};

TEST_F(TickConversion, BarsNeverSpanASessionAndTheOldestSessionWaitsForTheOlderPacket) {
    AskFor(3);
    auto history = Ticks(At(2026, 11, 17, 15, 53), 7);            // 15:53 to 15:59
    const auto today = Ticks(At(2026, 11, 18, 9, 30), 4, 100);     // 9:30 to 9:33
    history.insert(history.end(), today.begin(), today.end());
    history.push_back(Tick(At(2026, 11, 18, 16, 30), 999, 1.0f));  // after the close
    Send(NewestFirst(history), 0);
    // Only today's session: yesterday's may go on in the older packet.
    ASSERT_EQ(1u, owner.calls.size());
    EXPECT_EQ((std::vector<int>{100 + 101 + 102, 103}), Volumes());
    EXPECT_EQ(1, owner.m_tickCount);  // the open bar holds one tick
    Send({}, 0);  // the end of history flushes what was held
    ASSERT_EQ(3u, owner.calls.size());
    EXPECT_EQ((std::vector<int>{303, 103, 1 + 2 + 3, 4 + 5 + 6, 7}), Volumes());
    EXPECT_EQ(Text(At(2026, 11, 17, 15, 59)), Text(owner.calls[1].bars.back().time));
    EXPECT_EQ(0, owner.calls[2].count);  // and then the end is told
    EXPECT_EQ(nullptr, owner.m_pHeldTicks);
}

TEST_F(TickConversion, HeldTicksJoinTheOlderPacketsStartOfSession) {
    AskFor(4);
    const auto ticks = Ticks(At(2026, 11, 18, 9, 30), 10);
    const auto newest = NewestFirst(ticks);
    Send(std::vector<TICKREC>(newest.begin(), newest.begin() + 5), 0);   // 9:35 to 9:39
    EXPECT_TRUE(owner.calls.empty());  // one session, held whole
    Send(std::vector<TICKREC>(newest.begin() + 5, newest.end()), 0);    // 9:30 to 9:34
    Send({}, 0);
    EXPECT_EQ((std::vector<int>{1 + 2 + 3 + 4, 5 + 6 + 7 + 8, 9 + 10}), Volumes());
}

TEST_F(TickConversion, LiveTicksWaitForHistoryThenContinueTheOpenBarAsTickBarRecords) {
    AskFor(3);
    Send(Ticks(At(2026, 11, 18, 10, 0, 5), 2, 50), 1);  // live, while history runs
    EXPECT_TRUE(owner.calls.empty());
    EXPECT_EQ(2, owner.m_nPendingTicks);
    Send(NewestFirst(Ticks(At(2026, 11, 18, 9, 30), 3)), 0);
    Send({}, 0);
    // The pending ticks join the history at its newest end: 1+2+3, then 50+51.
    EXPECT_EQ((std::vector<int>{6, 101}), Volumes());
    EXPECT_EQ(2, owner.m_tickCount);
    EXPECT_EQ(0, owner.m_nPendingTicks);

    owner.calls.clear();
    auto live = Ticks(At(2026, 11, 18, 10, 1), 3, 60);
    live[2].flag = 0x7F;
    Send(live, 1);
    ASSERT_EQ(1u, owner.calls.size());
    const auto& records = owner.calls[0].tickBars;
    EXPECT_EQ(RTREC_TICKBARREC, owner.calls[0].type);
    ASSERT_EQ(2u, records.size());
    EXPECT_EQ(1, records[0].continued);
    EXPECT_EQ(1, records[0].complete);
    // Unary plus reads the packed records' fields by value.
    EXPECT_EQ(50 + 51 + 60, +records[0].bar.volume);
    EXPECT_EQ(0, records[1].continued);
    EXPECT_EQ(0, records[1].complete);
    EXPECT_EQ(0x7F, records[1].flag);
    EXPECT_EQ(61 + 62, +records[1].bar.volume);
    EXPECT_EQ(At(2026, 11, 18, 10, 3), +records[1].bar.time);
}

TEST_F(TickConversion, TicksOutsideTheSessionsVanishAndAnEmptyResultIsNotTold) {
    AskFor(1);
    owner.m_origRequest.filterMode = 3;  // a filter: ticks stay ticks, filtered
    std::vector<TICKREC> live = {Tick(At(2026, 11, 18, 9, 0), 1, 1.0f),
                                 Tick(At(2026, 11, 18, 9, 45, 10), 2, 2.0f, 0x33),
                                 Tick(At(2026, 11, 18, 16, 0), 3, 3.0f)};
    EXPECT_EQ(1, Send(live, 1));
    ASSERT_EQ(1u, owner.calls.size());
    ASSERT_EQ(1u, owner.calls[0].ticks.size());
    EXPECT_EQ(At(2026, 11, 18, 9, 45, 10), +owner.calls[0].ticks[0].time);
    EXPECT_EQ(0x33, owner.calls[0].ticks[0].flag);
    EXPECT_EQ(1, Send({Tick(At(2026, 11, 18, 17, 0), 1, 1.0f)}, 1));
    EXPECT_EQ(1u, owner.calls.size());
}

TEST_F(TickConversion, HistoryTicksLoseTheGapsAndKeepTheirOrder) {
    AskFor(1);
    std::vector<TICKREC> history;
    const auto yesterday = Ticks(At(2026, 11, 17, 15, 58), 2);
    const auto evening = Ticks(At(2026, 11, 17, 18, 0), 50);  // a long gap to jump
    const auto today = Ticks(At(2026, 11, 18, 9, 30), 3);
    for (const auto* part : {&yesterday, &evening, &today}) {
        history.insert(history.end(), part->begin(), part->end());
    }
    Send(NewestFirst(history), 0);
    ASSERT_EQ(1u, owner.calls.size());
    std::vector<std::string> times;
    for (const TICKREC& tick : owner.calls[0].ticks) times.push_back(Text(tick.time));
    EXPECT_EQ((std::vector<std::string>{Text(At(2026, 11, 18, 9, 32)), Text(At(2026, 11, 18, 9, 31)),
                                        Text(At(2026, 11, 18, 9, 30)), Text(At(2026, 11, 17, 15, 59)),
                                        Text(At(2026, 11, 17, 15, 58))}),
              times);
}

}  // namespace
