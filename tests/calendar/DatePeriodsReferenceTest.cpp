// addPeriods and subPeriods against a reference walk over every bar of a 9:30 to 16:00 Monday
// to Friday session in zone 18, built day by day in PeriodTestSupport.h, for random counts up
// to 50,000 from random bars between 1988 and 2034 (a third of them in the days around the
// daylight changes). Where the calendar's own algorithm, as it is kept, lands elsewhere than the
// bar-by-bar walk, the test states where it lands and exactly when the two differ.
#include <qvnrt/Date.h>

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "calendar/PeriodTestSupport.h"

using qvnrt::test::At;
using qvnrt::test::BarList;
using qvnrt::test::CivilFromDays;
using qvnrt::test::DaysFromCivil;
using qvnrt::test::Hm;
using qvnrt::test::HolidayRow;
using qvnrt::test::HolidayTable;
using qvnrt::test::kEastern;
using qvnrt::test::Sessions;
using qvnrt::test::Text;
using qvnrt::test::WeekdayOfCivil;

namespace {

constexpr int kFromYear = 1988;
constexpr int kToYear = 2034;
constexpr int kCases = 400;
constexpr int kMaxCount = 50000;

// New Year, Independence Day, Christmas and three random days a year closed; with
// `shortened`, 24 December and 26 November end at 13:00 and a random day has no session 0.
std::vector<HolidayRow> Holidays(bool shortened) {
    std::mt19937 random(20240611);
    std::vector<HolidayRow> rows;
    auto add = [&](HolidayRow row) {
        for (const HolidayRow& other : rows) {
            if (other.year == row.year && other.month == row.month && other.day == row.day) return;
        }
        rows.push_back(row);
    };
    for (int year = kFromYear; year <= kToYear; ++year) {
        for (auto [month, day] : {std::pair{1, 1}, {7, 4}, {12, 25}})
            add({year, month, day, 4, 0xFFFF});
        for (int k = 0; k < 3; ++k) {
            add({year, static_cast<int>(1 + random() % 12), static_cast<int>(1 + random() % 28), 4,
                 0xFFFF});
        }
        if (!shortened) continue;
        add({year, 12, 24, 0, static_cast<uint16_t>(Hm(13, 0))});
        add({year, 11, 26, 0, static_cast<uint16_t>(Hm(13, 0))});
        add({year, static_cast<int>(1 + random() % 12), static_cast<int>(1 + random() % 28), 0,
             0xFFFF});
    }
    return rows;
}

struct Case {
    long from;  // bar index
    int count;
};

// Starts far enough from both ends of the list for the count; every third one on a day of
// the week before a daylight change, with a count of a few days of bars.
std::vector<Case> Cases(const BarList& bars, bool backward, int weight) {
    std::mt19937 random(static_cast<unsigned>(7919 * -weight + backward));
    const long perDay = bars.days()[0].bars;
    std::vector<Case> cases;
    for (int k = 0; k < kCases; ++k) {
        if (k % 3 == 0) {
            const int year = 1990 + static_cast<int>(random() % 40);
            const bool april = random() % 2;
            long change = DaysFromCivil(year, april ? 4 : 10, april ? 1 : 31);  // first/last Sunday
            while (WeekdayOfCivil(change) != 7) change += april ? 1 : -1;
            int y, m, d;
            CivilFromDays(change - 1 - static_cast<long>(random() % 6), y, m, d);
            const int count = 1 + static_cast<int>(random() % (3 * perDay));
            long from =
                bars.firstAtOrAfter(At(y, m, d, 9, 30)) + static_cast<long>(random() % perDay);
            if (backward) from += count;  // so that the walk back crosses the change
            cases.push_back({from, count});
            continue;
        }
        const int count = 1 + static_cast<int>(random() % kMaxCount);
        const long span = bars.size() - count;
        cases.push_back({(backward ? count : 0) + static_cast<long>(random() % span), count});
    }
    return cases;
}

// Compares the library with `expected` on every case; also counts the cases in which
// `expected` differs from the bar-by-bar walk, which must be exactly those that `differs`
// names.
template <typename Expected, typename Differs>
void Check(SESSION_INFO& session, HOLIDAYS_INFO* holidays, const BarList& bars, bool backward,
           int weight, Expected expected, Differs differs) {
    int failures = 0;
    for (const Case& c : Cases(bars, backward, weight)) {
        Date date(bars.at(c.from));
        date.m_timeZone = kEastern;
        if (backward) {
            date.subPeriods(c.count, 'I', weight, &session, holidays, kEastern);
        } else {
            date.addPeriods(c.count, 'I', weight, &session, holidays, kEastern);
        }
        const uint32_t stepped = bars.at(backward ? c.from - c.count : c.from + c.count);
        const uint32_t want = expected(c);
        const bool wrong = date.m_value != want || (want != stepped) != differs(c);
        if (wrong && ++failures <= 5) {
            ADD_FAILURE() << (backward ? "sub " : "add ") << c.count << " x " << weight << " from "
                          << Text(bars.at(c.from)) << ": got " << Text(date.m_value)
                          << ", expected " << Text(want) << ", bar by bar " << Text(stepped);
        }
    }
    EXPECT_EQ(0, failures);
}

class PeriodReference : public ::testing::TestWithParam<int> {
  protected:
    SESSION_INFO m_session = Sessions(true, {{Hm(9, 30), Hm(16, 0)}});
};

INSTANTIATE_TEST_SUITE_P(Weights, PeriodReference, ::testing::Values(-1, -5, -7, -30, -60));

TEST_P(PeriodReference, FastWalkWithoutHolidaysStepsBarByBar) {
    const int weight = GetParam();
    const BarList bars(Hm(9, 30), Hm(16, 0), {}, weight, kFromYear, kToYear);
    for (const bool backward : {false, true}) {
        Check(
            m_session, nullptr, bars, backward, weight,
            [&](const Case& c) { return bars.at(backward ? c.from - c.count : c.from + c.count); },
            [](const Case&) { return false; });
    }
}

// Monday to Friday steps over civil days, as addTradingDays takes them.
long StepWeekdays(long civil, long count) {
    const long step = count > 0 ? 1 : -1;
    while (count != 0) {
        civil += step;
        if (WeekdayOfCivil(civil) <= 5) count -= step;
    }
    return civil;
}

// Rows dated between the two days, both included, whatever day of the week they fall on.
long RowsBetween(const std::vector<HolidayRow>& rows, long a, long b) {
    long count = 0;
    for (const HolidayRow& row : rows) {
        const long day = DaysFromCivil(row.year, row.month, row.day);
        count += day >= std::min(a, b) && day <= std::max(a, b);
    }
    return count;
}

uint32_t NineThirty(long civil) {
    int y, m, d;
    CivilFromDays(civil, y, m, d);
    return At(y, m, d, 9, 30);
}

// With a table of full holidays the fast walk skips whole days, then steps on by the count of
// holiday rows among them (rows that fall on a weekend count too) until that count stops
// growing. Kept: the remainder is not reduced by the skipped days, so as soon as a walk goes
// a whole day of bars beyond the next trading day, it lands that whole remainder of bars
// after the first second of the day it reached, outside the session.
TEST_P(PeriodReference, FastWalkWithFullHolidays) {
    const int weight = GetParam();
    HolidayTable table(Holidays(false), true);
    const auto& rows = table.rows();
    const BarList bars(Hm(9, 30), Hm(16, 0), rows, weight, kFromYear, kToYear);
    const long perDay = bars.days()[0].bars;
    for (const bool backward : {false, true}) {
        // Bars left once the walk has reached the first bar of the next (forward) or of this
        // (backward) trading day.
        auto rest = [&](const Case& c) {
            const long inDay = c.from - bars.firstBarOf(bars.dayOf(c.from));
            return backward ? c.count - inDay : c.count - (perDay - 1 - inDay) - 1;
        };
        Check(
            m_session, table.get(), bars, backward, weight,
            [&](const Case& c) {
                const long left = rest(c);
                const size_t day = bars.dayOf(c.from);
                if (left < (backward ? 1 : 0) || left < perDay) {
                    return bars.at(backward ? c.from - c.count : c.from + c.count);
                }
                const long from = bars.days()[backward ? day : day + 1].civil;
                long to = StepWeekdays(from, backward ? -(left / perDay) : left / perDay);
                for (long before = 0, now = RowsBetween(rows, from, to); now != 0 && now != before;
                     before = now, now = RowsBetween(rows, from, to)) {
                    to = StepWeekdays(to, backward ? before - now : now - before);
                }
                if (!backward) return NineThirty(to) + static_cast<uint32_t>(left) * bars.bar();
                do {
                    to = StepWeekdays(to, -1);
                } while (RowsBetween(rows, to, to) != 0);
                return NineThirty(to) + static_cast<uint32_t>(perDay - left) * bars.bar();
            },
            [&](const Case& c) { return rest(c) >= perDay; });
    }
}

// A shortened day disables the fast walk. Forward, the general walk goes session by session
// to the end of the week, week by week for up to 260 weeks of bars, and beyond that skips the
// whole weeks at once as if they had no holidays: it lands elsewhere exactly when a holiday
// row falls on a weekday of the skipped weeks.
TEST_P(PeriodReference, GeneralWalkForward) {
    const int weight = GetParam();
    HolidayTable table(Holidays(true), false);
    const BarList bars(Hm(9, 30), Hm(16, 0), table.rows(), weight, kFromYear, kToYear);
    const long perWeek = 5 * bars.days()[0].bars;
    struct Skip {
        long from, to;    // Sundays: the end of the start's week, and where the skip lands
        long afterWeeks;  // bars left after it, or -1 for no skip
    };
    auto skipOf = [&](const Case& c) {
        const auto& day = bars.days()[bars.dayOf(c.from)];
        const long sunday = day.civil - WeekdayOfCivil(day.civil) + 7;
        const long left = c.count - (bars.firstAtOrAfter(NineThirty(sunday)) - c.from);
        if (left <= 260 * perWeek) return Skip{sunday, sunday, -1};
        return Skip{sunday, sunday + 7 * (left / perWeek), left % perWeek};
    };
    Check(
        m_session, table.get(), bars, false, weight,
        [&](const Case& c) {
            const Skip skip = skipOf(c);
            if (skip.afterWeeks < 0) return bars.at(c.from + c.count);
            // Then one week walk from that Sunday, which stops at the next one when the week,
            // with its holidays, has fewer bars than are left.
            const long start = bars.firstAtOrAfter(NineThirty(skip.to));
            return bars.at(
                std::min(start + skip.afterWeeks, bars.firstAtOrAfter(NineThirty(skip.to + 7))));
        },
        [&](const Case& c) {
            const Skip skip = skipOf(c);
            for (const HolidayRow& row : table.rows()) {
                const long day = DaysFromCivil(row.year, row.month, row.day);
                if (day > skip.from && day < skip.to && WeekdayOfCivil(day) <= 5) return true;
            }
            return false;
        });
}

// Backward, the mirror: session by session to the start of the week, week by week for up to
// 260 weeks of bars, and beyond that the whole weeks at once. After such a skip the walk goes
// back through one more week; a count that the skip used up exactly lands on the first bar at
// or after the week's start, and one that the week before cannot hold lands on the last bar
// before that week.
TEST_P(PeriodReference, GeneralWalkBackward) {
    const int weight = GetParam();
    HolidayTable table(Holidays(true), false);
    const BarList bars(Hm(9, 30), Hm(16, 0), table.rows(), weight, kFromYear, kToYear);
    const long perWeek = 5 * bars.days()[0].bars;
    struct Skip {
        long from, to;    // Sundays: the start of the start's week, and where the skip lands
        long afterWeeks;  // bars left after it, or -1 for no skip
    };
    auto skipOf = [&](const Case& c) {
        const auto& day = bars.days()[bars.dayOf(c.from)];
        const long sunday = day.civil - WeekdayOfCivil(day.civil) % 7;
        const long left = c.count - (c.from - bars.firstAtOrAfter(NineThirty(sunday)));
        if (left <= 260 * perWeek) return Skip{sunday, sunday, -1};
        return Skip{sunday, sunday - 7 * (left / perWeek), left % perWeek};
    };
    Check(
        m_session, table.get(), bars, true, weight,
        [&](const Case& c) {
            const Skip skip = skipOf(c);
            if (skip.afterWeeks < 0) return bars.at(c.from - c.count);
            const long start = bars.firstAtOrAfter(NineThirty(skip.to));
            const long weekBefore = bars.firstAtOrAfter(NineThirty(skip.to - 7));
            return bars.at(std::max(start - skip.afterWeeks, weekBefore - 1));
        },
        [&](const Case& c) {
            const Skip skip = skipOf(c);
            for (const HolidayRow& row : table.rows()) {
                const long day = DaysFromCivil(row.year, row.month, row.day);
                if (day >= skip.to && day < skip.from && WeekdayOfCivil(day) <= 5) return true;
            }
            return false;
        });
}

}  // namespace
