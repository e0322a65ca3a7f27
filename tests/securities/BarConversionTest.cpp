// Bars of any width built from one-minute bars, history and live, through the packet state
// machine. No driver is needed: packets are handed in as the cache would hand them.

#include <gtest/gtest.h>

#include <map>

#include "calendar/PeriodTestSupport.h"
#include "support/IntradayOwner.h"

namespace {

using qvnrt::test::At;
using qvnrt::test::Hm;
using qvnrt::test::IntradayOwner;
using qvnrt::test::Minute;
using qvnrt::test::Sessions;
using qvnrt::test::Text;

// The owner asked for bars of `minutes`; the driver serves one-minute bars.
void AskForBars(IntradayOwner& owner, int minutes) {
    owner.m_origRequest.weight = static_cast<int16_t>(-minutes);
    owner.m_plainRequest.weight = -1;
    owner.m_bConvert = 1;
}

// One-minute bars from `first` on, one a minute, newest first as history comes.
std::vector<RTINTRADAY_PRICEREC> History(uint32_t first, int minutes, int32_t volume = 1) {
    std::vector<RTINTRADAY_PRICEREC> bars;
    for (int i = minutes - 1; i >= 0; --i) {
        const float price = 100.0f + static_cast<float>(i % 13);
        bars.push_back(Minute(first + 60u * static_cast<uint32_t>(i), volume, price, price + 0.5f,
                              price + 1.0f, price - 1.0f));
    }
    return bars;
}

int Send(IntradayOwner& owner, std::vector<RTINTRADAY_PRICEREC> bars, int isNew = 0) {
    return owner.ReqTickCallbackHelper2(0, static_cast<int>(bars.size()), isNew,
                                        RTREC_INTRADAY_PRICEREC, bars.data());
}

// An owner under one regular session, 9:30 to 16:00.
class BarConversion : public ::testing::Test {
protected:
    void SetUp() override { owner.UseRules(Sessions(true, {{Hm(9, 30), Hm(16, 0)}})); }
    IntradayOwner owner;
};

TEST_F(BarConversion, SevenMinuteBarsFollowTheSessionWithAShortLastBar) {
    AskForBars(owner, 7);
    // The day and a pre-market minute, which belongs to no session.
    auto bars = History(At(2026, 11, 18, 9, 30), 390);
    bars.push_back(Minute(At(2026, 11, 18, 8, 0), 99, 1, 1, 1, 1));
    Send(owner, bars);
    const auto out = owner.AllBars();
    ASSERT_EQ(56u, out.size());
    EXPECT_EQ(Text(At(2026, 11, 18, 9, 36, 59)), Text(out.front().time));
    EXPECT_EQ(Text(At(2026, 11, 18, 9, 43, 59)), Text(out[1].time));
    EXPECT_EQ(Text(At(2026, 11, 18, 15, 59, 59)), Text(out.back().time));
    EXPECT_EQ(7, out.front().volume);
    EXPECT_EQ(5, out.back().volume);
    // Open of the bar's first minute, close of its last, the extremes of all seven.
    EXPECT_EQ(100.0f, out.front().open);
    EXPECT_EQ(106.5f, out.front().close);
    EXPECT_EQ(107.0f, out.front().high);
    EXPECT_EQ(99.0f, out.front().low);
    // The newest bar is the one live data continue.
    EXPECT_EQ(out.back().time, owner.m_barEnd);
    EXPECT_EQ(At(2026, 11, 18, 15, 55), owner.m_barStart);
}

TEST_F(BarConversion, ABarSplitOverTwoPacketsIsSentAgainWholeWithTheLaterClose) {
    AskForBars(owner, 7);
    auto bars = History(At(2026, 11, 18, 9, 30), 14);  // two bars: 9:30 and 9:37
    const std::vector<RTINTRADAY_PRICEREC> newer(bars.begin(), bars.begin() + 4);  // 9:40-9:43
    const std::vector<RTINTRADAY_PRICEREC> older(bars.begin() + 4, bars.end());
    Send(owner, newer);
    Send(owner, older);
    ASSERT_EQ(2u, owner.calls.size());
    ASSERT_EQ(1u, owner.calls[0].bars.size());
    EXPECT_EQ(4, owner.calls[0].bars[0].volume);
    ASSERT_EQ(2u, owner.calls[1].bars.size());
    const RTINTRADAY_PRICEREC whole = owner.calls[1].bars[1];
    EXPECT_EQ(owner.calls[0].bars[0].time, whole.time);
    EXPECT_EQ(7, whole.volume);
    EXPECT_EQ(owner.calls[0].bars[0].close, whole.close);
    EXPECT_EQ(bars[6].open, whole.open);  // 9:37, from the older packet
}

TEST_F(BarConversion, LiveMinutesGrowTheOpenBarUnderOneStampThenOpenTheNext) {
    AskForBars(owner, 5);
    Send(owner, History(At(2026, 11, 18, 10, 0), 2));  // 10:00 and 10:01
    owner.calls.clear();
    for (int minute : {2, 3, 4, 5}) {
        Send(owner, {Minute(At(2026, 11, 18, 10, minute), 10, 107, 108, 110 + minute, 106)}, 1);
    }
    ASSERT_EQ(4u, owner.calls.size());
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(1u, owner.calls[i].bars.size());
        EXPECT_EQ(At(2026, 11, 18, 10, 4, 59), owner.calls[i].bars[0].time);
        EXPECT_EQ(2 + 10 * (i + 1), owner.calls[i].bars[0].volume);
        EXPECT_EQ(1, owner.calls[i].isNew);
    }
    EXPECT_EQ(114.0f, owner.calls[2].bars[0].high);
    // The fifth minute closes the bar and opens the next.
    ASSERT_EQ(2u, owner.calls[3].bars.size());
    EXPECT_EQ(At(2026, 11, 18, 10, 4, 59), owner.calls[3].bars[0].time);
    EXPECT_EQ(At(2026, 11, 18, 10, 9, 59), owner.calls[3].bars[1].time);
    EXPECT_EQ(10, owner.calls[3].bars[1].volume);
}

TEST_F(BarConversion, EmptyBarTakesTheFirstRealMinuteWhole) {
    AskForBars(owner, 5);
    Send(owner, History(At(2026, 11, 18, 10, 0), 2));
    // The heartbeat's placeholder for 10:05 to 10:09:59, as OnHeartBeat leaves it.
    owner.m_savedBarStart = owner.m_barStart;
    owner.m_barStart = At(2026, 11, 18, 10, 5);
    owner.m_barEnd = At(2026, 11, 18, 10, 9, 59);
    owner.m_openBar = {owner.m_barEnd, -32080, -32080.0f, -32080.0f, -32080.0f, -32080.0f};
    owner.calls.clear();
    Send(owner, {Minute(At(2026, 11, 18, 10, 6), 12, 5, 6, 7, 4)}, 1);
    const RTINTRADAY_PRICEREC bar = owner.AllBars().at(0);
    EXPECT_EQ(owner.m_barEnd, bar.time);
    EXPECT_EQ(12, bar.volume);
    EXPECT_EQ(5.0f, bar.open);
    EXPECT_EQ(7.0f, bar.high);
    EXPECT_EQ(4.0f, bar.low);
    EXPECT_EQ(0u, owner.m_savedBarStart);  // the empty bars are forgotten
}

TEST(BarConversionWithoutRules, ConvertedRequestsGetNothingAndPlainOnesStillPass) {
    IntradayOwner owner;
    AskForBars(owner, 7);
    Send(owner, History(At(2026, 11, 18, 10, 0), 20));
    Send(owner, History(At(2026, 11, 18, 10, 20), 1), 1);
    EXPECT_TRUE(owner.calls.empty());
    owner.m_origRequest.weight = 100;  // tick bars: nothing either, not even held ticks
    owner.m_plainRequest.weight = 1;
    TICKREC tick = qvnrt::test::Tick(At(2026, 11, 18, 10, 0), 1, 1.0f);
    owner.ReqTickCallbackHelper2(0, 1, 0, RTREC_TICKREC, &tick);
    EXPECT_TRUE(owner.calls.empty());
    owner.m_origRequest.weight = -1;
    owner.m_plainRequest.weight = -1;
    owner.m_bConvert = 0;
    Send(owner, History(At(2026, 11, 18, 10, 0), 20));
    ASSERT_EQ(1u, owner.calls.size());
    EXPECT_EQ(20, owner.calls[0].count);
}

struct SessionCase {
    const char* name;
    SESSION_INFO rules;
    int width;
    // Trading minutes handed in (first minute of each session left out: see below) and the
    // bar stamps expected, all on 2026-11-18 (a Wednesday) unless the day is given.
    std::vector<std::pair<uint32_t, int>> spans;  // first minute, number of minutes
    std::vector<uint32_t> stamps;
    friend void PrintTo(const SessionCase& c, std::ostream* out) { *out << c.name; }
};

class SessionShapes : public ::testing::TestWithParam<SessionCase> {};

// Bars are cut from each session's own start and end with it; nothing spans a break.
TEST_P(SessionShapes, BarsAreCutPerSession) {
    const SessionCase& c = GetParam();
    IntradayOwner owner;
    owner.UseRules(c.rules);
    AskForBars(owner, c.width);
    std::vector<RTINTRADAY_PRICEREC> bars;
    for (const auto& [first, minutes] : c.spans) {
        auto part = History(first, minutes);
        bars.insert(bars.begin(), part.begin(), part.end());  // newest first
    }
    Send(owner, bars);
    std::vector<std::string> stamps;
    for (const auto& bar : owner.AllBars()) stamps.push_back(Text(bar.time));
    std::vector<std::string> expected;
    for (uint32_t stamp : c.stamps) expected.push_back(Text(stamp));
    EXPECT_EQ(expected, stamps);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, SessionShapes,
    ::testing::Values(
        SessionCase{"TwoSessions",
                    Sessions(true, {{Hm(9, 30), Hm(11, 0)}, {Hm(12, 0), Hm(13, 15)}}),
                    30,
                    {{At(2026, 11, 18, 10, 31), 29}, {At(2026, 11, 18, 12, 1), 74}},
                    {At(2026, 11, 18, 10, 59, 59), At(2026, 11, 18, 12, 29, 59),
                     At(2026, 11, 18, 12, 59, 59), At(2026, 11, 18, 13, 14, 59)}},
        SessionCase{"Overnight",
                    Sessions(false, {{Hm(18, 0), Hm(17, 0)}}),
                    60,
                    {{At(2026, 11, 17, 23, 1), 59}, {At(2026, 11, 18, 0, 0), 60},
                     {At(2026, 11, 18, 16, 0), 60}},
                    {At(2026, 11, 17, 23, 59, 59), At(2026, 11, 18, 0, 59, 59),
                     At(2026, 11, 18, 16, 59, 59)}}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
