// Bars built from history packets, split at random points, equal a plain aggregation of the
// same minutes written here from the civil calendar: for every width, across a holiday, a
// shortened day and the change back from daylight time.

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "calendar/PeriodTestSupport.h"
#include "support/IntradayOwner.h"

namespace {

using namespace qvnrt::test;

// Two weeks around the end of daylight time in 2026 (Sunday 1 November).
constexpr int kYear = 2026;
const std::vector<HolidayRow> kRows = {
    {2026, 10, 28, 4, 0xFFFF},     // closed
    {2026, 11, 5, 0, 0x0D00},      // ends at 13:00
};

struct Trading {
    long civil;
    uint32_t open, close;  // first second, first second after
};

std::vector<Trading> TradingDays(bool withHolidays) {
    std::vector<Trading> days;
    for (long z = DaysFromCivil(kYear, 10, 26); z <= DaysFromCivil(kYear, 11, 6); ++z) {
        if (WeekdayOfCivil(z) > 5) continue;
        int y, m, d;
        CivilFromDays(z, y, m, d);
        if (withHolidays && m == 10 && d == 28) continue;
        const int closeHour = (withHolidays && m == 11 && d == 5) ? 13 : 16;
        days.push_back({z, At(y, m, d, 9, 30), At(y, m, d, closeHour, 0)});
    }
    return days;
}

// The reference: each session minute into the bar that holds it, cut from the open.
std::map<uint32_t, RTINTRADAY_PRICEREC> Reference(const std::vector<RTINTRADAY_PRICEREC>& minutes,
                                                  const std::vector<Trading>& days, int width) {
    std::map<uint32_t, RTINTRADAY_PRICEREC> bars;
    const uint32_t span = 60u * static_cast<uint32_t>(width);
    for (auto minute = minutes.rbegin(); minute != minutes.rend(); ++minute) {  // oldest first
        const uint32_t time = minute->time + EPOCH_1970;
        for (const Trading& day : days) {
            if (time < day.open || time >= day.close) continue;
            const uint32_t start = day.open + (time - day.open) / span * span;
            const uint32_t stamp = std::min(start + span, day.close) - 1;
            auto [at, fresh] = bars.try_emplace(stamp, *minute);
            RTINTRADAY_PRICEREC& bar = at->second;
            bar.time = stamp;
            if (!fresh) {
                bar.volume += minute->volume;
                bar.close = minute->close;
                bar.high = std::max(bar.high, minute->high);
                bar.low = std::min(bar.low, minute->low);
            }
        }
    }
    return bars;
}

// Random minutes, newest first: most session minutes, some gaps, and strays outside the
// sessions (before the open, after the close, on the holiday and the week end).
std::vector<RTINTRADAY_PRICEREC> RandomHistory(std::mt19937& random) {
    std::vector<RTINTRADAY_PRICEREC> minutes;
    std::uniform_int_distribution<int> price(400, 600), volume(1, 500), percent(0, 99);
    for (long z = DaysFromCivil(kYear, 10, 26); z <= DaysFromCivil(kYear, 11, 6); ++z) {
        int y, m, d;
        CivilFromDays(z, y, m, d);
        for (uint32_t t = At(y, m, d, 8, 0); t < At(y, m, d, 17, 0); t += 60) {
            if (percent(random) >= 70) continue;
            const float open = static_cast<float>(price(random)) / 4.0f;
            const float close = static_cast<float>(price(random)) / 4.0f;
            const float high = std::max(open, close) + 0.25f;
            const float low = std::min(open, close) - 0.25f;
            minutes.push_back({t - EPOCH_1970, volume(random), open, close, high, low});
        }
    }
    std::reverse(minutes.begin(), minutes.end());
    return minutes;
}

class BarProperty : public ::testing::TestWithParam<int> {
protected:
    void Check(bool withHolidays) {
        const int width = GetParam();
        HolidayTable holidays(kRows, false);
        const std::vector<Trading> days = TradingDays(withHolidays);
        for (unsigned seed : {1u, 2u, 3u}) {
            std::mt19937 random(seed * 7919u + static_cast<unsigned>(width));
            const auto minutes = RandomHistory(random);
            IntradayOwner owner;
            owner.UseRules(Sessions(true, {{Hm(9, 30), Hm(16, 0)}}),
                           withHolidays ? holidays.get() : nullptr);
            owner.m_origRequest.weight = static_cast<int16_t>(-width);
            owner.m_plainRequest.weight = -1;
            owner.m_bConvert = 1;
            std::uniform_int_distribution<int> packet(1, 400);
            for (size_t at = 0; at < minutes.size();) {
                const size_t count =
                    std::min(minutes.size() - at, static_cast<size_t>(packet(random)));
                std::vector<RTINTRADAY_PRICEREC> part(minutes.begin() + at,
                                                      minutes.begin() + at + count);
                owner.ReqTickCallbackHelper2(0, static_cast<int>(count), 0,
                                             RTREC_INTRADAY_PRICEREC, part.data());
                at += count;
            }
            // A bar sent again replaces the one sent before under its stamp.
            std::map<uint32_t, RTINTRADAY_PRICEREC> built;
            for (const auto& bar : owner.AllBars()) built[bar.time] = bar;
            const auto expected = Reference(minutes, days, width);
            ASSERT_EQ(expected.size(), built.size()) << "seed " << seed;
            for (const auto& [stamp, bar] : expected) {
                const auto found = built.find(stamp);
                ASSERT_NE(found, built.end()) << Text(stamp);
                EXPECT_EQ(0, std::memcmp(&bar, &found->second, sizeof(bar)))
                    << Text(stamp) << " seed " << seed << ": volume " << found->second.volume
                    << " for " << bar.volume;
            }
        }
    }
};

TEST_P(BarProperty, HistoryPacketsMakeTheSameBarsAsAPlainAggregation) { Check(false); }

// Holiday rows send the calendar down its general walk.
TEST_P(BarProperty, AcrossAHolidayAndAShortenedDay) { Check(true); }

INSTANTIATE_TEST_SUITE_P(Widths, BarProperty, ::testing::Values(2, 5, 7, 30, 60));

}  // namespace
