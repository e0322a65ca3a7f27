// The general walk of securities with several sessions, or whose trading day opens the evening
// before, against an enumeration of their session minutes and bars written here from the
// session times alone. Two weeks of zone 18 hold a full holiday, a shortened day and the
// change to daylight time: the one-minute in-session test must hold at every minute of them,
// and one bar on or back must land on the neighbouring bar from every bar.
#include <qvnrt/Date.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "calendar/PeriodTestSupport.h"

using qvnrt::test::At;
using qvnrt::test::CivilFromDays;
using qvnrt::test::DaysFromCivil;
using qvnrt::test::Hm;
using qvnrt::test::HolidayTable;
using qvnrt::test::Sessions;
using qvnrt::test::Text;
using qvnrt::test::Walker;
using qvnrt::test::WeekdayOfCivil;

namespace {

struct SessionTimes {
    int16_t start, end;
    bool evening;  // begins on the calendar day before its trading day
};

struct Security {
    const char* name;
    std::vector<SessionTimes> sessions;
    int16_t shortenedEnd;  // the last session's end on the shortened day
};

void PrintTo(const Security& security, std::ostream* out) {
    *out << security.name;
}

const Security kSecurities[] = {
    {"TwoSessions", {{Hm(9, 30), Hm(12, 0), false}, {Hm(13, 0), Hm(16, 0), false}}, Hm(14, 30)},
    {"FourSessions",
     {{Hm(8, 0), Hm(10, 0), false},
      {Hm(10, 30), Hm(12, 0), false},
      {Hm(13, 0), Hm(15, 0), false},
      {Hm(15, 30), Hm(17, 0), false}},
     Hm(16, 0)},
    {"Overnight", {{Hm(18, 0), Hm(16, 0), true}}, Hm(13, 0)},
    {"EveningAndDay", {{Hm(18, 0), Hm(2, 0), true}, {Hm(8, 0), Hm(16, 0), false}}, Hm(12, 0)},
};

// Monday 27 March 2006 and the thirteen days after it; zone 18 changes to daylight time on
// Sunday 2 April.
long Day(long offset) {
    return DaysFromCivil(2006, 3, 27) + offset;
}
constexpr long kDays = 14;
const long kHoliday = Day(4);    // Friday 31 March: every session closed
const long kShortened = Day(9);  // Wednesday 5 April: the last session ends early

uint32_t Local(long day, int16_t time) {
    int y, m, d;
    CivilFromDays(day, y, m, d);
    return At(y, m, d, time >> 8, time & 0xFF);
}

SESSION_INFO SessionRules(const Security& security) {
    SESSION_INFO info = Sessions(!security.sessions.front().evening, {});
    for (size_t i = 0; i < security.sessions.size(); ++i) {
        info.bSession[i] = 1;
        info.tradeDays[i] = 'D';
        info.sStartTime[i] = security.sessions[i].start;
        info.sEndTime[i] = security.sessions[i].end;
    }
    return info;
}

HolidayTable Holidays(const Security& security) {
    int y, m, d, sy, sm, sd;
    CivilFromDays(kHoliday, y, m, d);
    CivilFromDays(kShortened, sy, sm, sd);
    const int last = static_cast<int>(security.sessions.size()) - 1;
    return HolidayTable(
        {{y, m, d, 4, 0xFFFF}, {sy, sm, sd, last, static_cast<uint16_t>(security.shortenedEnd)}},
        false);
}

// The starts of the session minutes (width 1) or bars of the trading days from a week before
// the two weeks to a week after them, in order. Trading days are Monday to Friday; an
// evening session belongs to the next day's.
std::vector<uint32_t> Starts(const Security& security, int minutesPerBar) {
    std::vector<uint32_t> starts;
    for (long day = Day(-7); day < Day(kDays + 7); ++day) {
        if (WeekdayOfCivil(day) > 5 || day == kHoliday) continue;
        for (size_t i = 0; i < security.sessions.size(); ++i) {
            const SessionTimes& session = security.sessions[i];
            const bool shortened = day == kShortened && i + 1 == security.sessions.size();
            const int16_t end = shortened ? security.shortenedEnd : session.end;
            const long startDay = session.evening ? day - 1 : day;
            const uint32_t first = Local(startDay, session.start);
            const uint32_t stop = Local(end <= session.start ? startDay + 1 : startDay, end);
            for (uint32_t at = first; at < stop; at += 60u * minutesPerBar) starts.push_back(at);
        }
    }
    return starts;
}

// The rules of one security, made once per test.
struct Rules {
    explicit Rules(const Security& security)
        : info(SessionRules(security)), holidays(Holidays(security)) {}
    Walker walker(int weight) { return {info, weight, holidays.get()}; }
    SESSION_INFO info;
    HolidayTable holidays;
};

class MinuteTest : public ::testing::TestWithParam<Security> {};

// From a live minute, one on is the next live minute and one back returns; from a closed
// minute, one back does not return. (Where one on goes from a closed minute is left to the
// session searches, which keep their own landings.)
TEST_P(MinuteTest, HoldsExactlyAtLiveMinutes) {
    const std::vector<uint32_t> live = Starts(GetParam(), 1);
    Rules rules(GetParam());
    Walker minutes = rules.walker(-1);
    int failures = 0;
    for (uint32_t minute = Local(Day(0), 0); minute < Local(Day(kDays), 0); minute += 60) {
        const auto at = std::lower_bound(live.begin(), live.end(), minute);
        const bool isLive = *at == minute;
        uint32_t next = 0;
        const bool answered = minutes.inSession(minute, &next);
        if ((answered != isLive || (isLive && next != at[1])) && ++failures <= 5) {
            ADD_FAILURE() << Text(minute) << (isLive ? " live" : " closed") << ": one on "
                          << Text(next) << (isLive ? ", expected " + Text(at[1]) : "");
        }
    }
    EXPECT_EQ(0, failures);
}

INSTANTIATE_TEST_SUITE_P(Securities, MinuteTest, ::testing::ValuesIn(kSecurities),
                         [](const auto& info) { return std::string(info.param.name); });

class BarStepTest : public ::testing::TestWithParam<std::tuple<Security, int>> {};

TEST_P(BarStepTest, OneBarOnAndBackLandsOnTheNeighbouringBar) {
    const auto& [security, weight] = GetParam();
    const std::vector<uint32_t> bars = Starts(security, -weight);
    Rules rules(security);
    Walker walk = rules.walker(weight);
    int failures = 0;
    for (size_t j = 1; j + 1 < bars.size(); ++j) {
        if (bars[j] < Local(Day(0), 0) || bars[j] >= Local(Day(kDays), 0)) continue;
        const uint32_t on = walk.add(bars[j], 1), back = walk.sub(bars[j], 1);
        if ((on != bars[j + 1] || back != bars[j - 1]) && ++failures <= 5) {
            ADD_FAILURE() << Text(bars[j]) << ": on " << Text(on) << " (expected "
                          << Text(bars[j + 1]) << "), back " << Text(back) << " (expected "
                          << Text(bars[j - 1]) << ")";
        }
    }
    EXPECT_EQ(0, failures);
}

INSTANTIATE_TEST_SUITE_P(Securities, BarStepTest,
                         ::testing::Combine(::testing::ValuesIn(kSecurities),
                                            ::testing::Values(-1, -5, -7, -60)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) + "_" +
                                    std::to_string(-std::get<1>(info.param));
                         });

}  // namespace
