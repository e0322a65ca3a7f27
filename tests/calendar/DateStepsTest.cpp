// Calendar steps: months, years, weeks and trading days, the hour rule across daylight
// changes, the period dispatch and its wrap guard, and lastDayNamed.
#include <qvnrt/Date.h>

#include <random>
#include <set>

#include <gtest/gtest.h>

#include "calendar/CalendarTestSupport.h"

using qvnrt::test::Fields;
using qvnrt::test::FieldsOf;
using qvnrt::test::GmtValue;

namespace {

Date At(uint8_t zone, uint32_t year, uint32_t month, uint32_t day, uint32_t hour,
        uint32_t minute = 0) {
    Date date;
    date.setDateTime(day, month, year, hour, minute, 0, zone);
    return date;
}

}  // namespace

TEST(DateSteps, MonthsKeepTheDayWithinTheMonth) {
    Date date = At(18, 1999, 3, 31, 10);
    date.addMonths(-1);
    EXPECT_EQ((Fields{1999, 2, 28, 10, 0, 0}), FieldsOf(date, 18));
    date.addMonths(1);
    EXPECT_EQ((Fields{1999, 3, 28, 10, 0, 0}), FieldsOf(date, 18));  // the day stays reduced

    date = At(18, 2000, 1, 31, 10);
    date.nextMonth();
    EXPECT_EQ((Fields{2000, 2, 29, 10, 0, 0}), FieldsOf(date, 18));
    date.nextMonth();
    EXPECT_EQ((Fields{2000, 3, 29, 10, 0, 0}), FieldsOf(date, 18));

    date = At(18, 2003, 11, 15, 9, 30);
    date.addMonths(14);
    EXPECT_EQ((Fields{2005, 1, 15, 9, 30, 0}), FieldsOf(date, 18));
    date.addMonths(-25);
    EXPECT_EQ((Fields{2002, 12, 15, 9, 30, 0}), FieldsOf(date, 18));
    date.m_sequence = 3;
    date.addMonths(0);
    EXPECT_EQ(3, date.m_sequence);  // 0 does nothing
    date.previousMonth();
    EXPECT_EQ(0, date.m_sequence);
}

TEST(DateSteps, YearsMoveFebruary29ToThe28th) {
    Date date = At(33, 1996, 2, 29, 16);
    date.addYears(1);
    EXPECT_EQ((Fields{1997, 2, 28, 16, 0, 0}), FieldsOf(date, 33));
    date.subYears(5);
    EXPECT_EQ((Fields{1992, 2, 28, 16, 0, 0}), FieldsOf(date, 33));
    // A summer wall-clock time stays a summer wall-clock time.
    date = At(18, 2004, 7, 4, 9, 30);
    date.addYears(-10);
    EXPECT_EQ((Fields{1994, 7, 4, 9, 30, 0}), FieldsOf(date, 18));
}

TEST(DateSteps, WeeksKeepTheWallClockAcrossChanges) {
    Date date = At(18, 1995, 3, 30, 10);  // EST
    date.addWeeks(1);
    EXPECT_EQ((Fields{1995, 4, 6, 10, 0, 0}), FieldsOf(date, 18));  // EDT
    date.subWeeks(1);
    EXPECT_EQ((Fields{1995, 3, 30, 10, 0, 0}), FieldsOf(date, 18));
    // Midnight moved back over the day by the change to standard time, and 23:30 moved
    // forward over it by the change to daylight time.
    date = At(18, 2005, 10, 29, 0, 30);
    date.addWeeks(1);
    EXPECT_EQ((Fields{2005, 11, 5, 0, 30, 0}), FieldsOf(date, 18));
    date = At(18, 1995, 3, 26, 23, 30);
    date.addWeeks(1);
    EXPECT_EQ((Fields{1995, 4, 2, 23, 30, 0}), FieldsOf(date, 18));
    // GMT steps by exact weeks.
    date = Date(GmtValue(2005, 3, 30, 10));
    date.m_sequence = 2;
    date.addWeeks(-3, ZONE_GMT);
    EXPECT_EQ(GmtValue(2005, 3, 9, 10), date.m_value);
    EXPECT_EQ(0, date.m_sequence);
}

TEST(DateSteps, TradingDaysSkipTheDaysTheMaskForbids) {
    Date date = At(18, 1995, 3, 31, 10);  // a Friday, EST
    date.addTradingDays(1, 'D');
    EXPECT_EQ((Fields{1995, 4, 3, 10, 0, 0}), FieldsOf(date, 18));  // Monday, EDT
    date.subTradingDays(1, 'D');
    EXPECT_EQ((Fields{1995, 3, 31, 10, 0, 0}), FieldsOf(date, 18));
    // From midnight and from 23:xx, across the change to daylight time.
    date = At(18, 1995, 3, 31, 0);
    date.addTradingDays(1, 'D');
    EXPECT_EQ((Fields{1995, 4, 3, 0, 0, 0}), FieldsOf(date, 18));
    date = At(18, 1995, 3, 31, 23, 15);
    date.addTradingDays(2, 'D');
    EXPECT_EQ((Fields{1995, 4, 4, 23, 15, 0}), FieldsOf(date, 18));
    date.addTradingDays(4, 0x46);  // Monday to Saturday
    EXPECT_EQ((Fields{1995, 4, 8, 23, 15, 0}), FieldsOf(date, 18));
    EXPECT_TRUE(date.isTradingDay(0x46));
    EXPECT_FALSE(date.isTradingDay('D'));
    EXPECT_TRUE(date.isTradingDay(DAYS_ALL));

    // Whole weeks go first, so from a day that the mask forbids a multiple of the week's
    // trading days lands on the same weekday.
    date = At(18, 2005, 4, 9, 10);  // a Saturday
    date.addTradingDays(5, 'D');
    EXPECT_EQ((Fields{2005, 4, 16, 10, 0, 0}), FieldsOf(date, 18));
    date.addTradingDays(6, 'D');
    EXPECT_EQ((Fields{2005, 4, 25, 10, 0, 0}), FieldsOf(date, 18));

    const uint32_t before = date.m_value;
    date.addTradingDays(3, 0x38);  // allows no day at all
    EXPECT_EQ(before, date.m_value);
}

// From a trading day, the weeks-then-days reckoning is the plain day-by-day walk.
TEST(DateSteps, TradingDaysAgreeWithADayByDayWalk) {
    // Weekday sets of the masks, Monday first.
    struct Mask {
        uint8_t mask;
        std::set<int> days;
    } masks[] = {{'D', {1, 2, 3, 4, 5}},     {'M', {1, 2, 3, 4, 5}},
                 {0x46, {1, 2, 3, 4, 5, 6}}, {DAYS_ALL, {1, 2, 3, 4, 5, 6, 7}},
                 {0x84, {2, 3, 4, 5, 7}},    {0xFA, {1, 6, 7}}};
    std::mt19937 random(7);
    std::uniform_int_distribution<uint32_t> values(GmtValue(1960, 1, 1), GmtValue(2030, 1, 1));
    std::uniform_int_distribution<int> counts(-40, 40);
    for (const Mask& m : masks) {
        for (int i = 0; i < 400; ++i) {
            uint32_t start = values(random);
            while (!m.days.count(static_cast<int>(Date(start).dayOfWeek(ZONE_GMT)))) start += 86400;
            const int count = counts(random);
            int weekday = static_cast<int>(Date(start).dayOfWeek(ZONE_GMT));
            uint32_t expected = start;
            for (int left = count; left != 0;) {
                const int step = left > 0 ? 1 : -1;
                weekday = (weekday - 1 + step + 7) % 7 + 1;
                expected += step * 86400;
                if (m.days.count(weekday)) left -= step;
            }
            Date date(start);
            date.addTradingDays(count, m.mask, ZONE_GMT);
            ASSERT_EQ(expected, date.m_value) << "mask " << int(m.mask) << " count " << count;
        }
    }
}

TEST(DateSteps, PeriodCodesAndTheWrapGuard) {
    const Date start = At(13, 2004, 1, 30, 11);
    struct Case {
        char code;
        Fields after;
    } cases[] = {{'M', {2004, 3, 29, 11, 0, 0}},
                 {'W', {2004, 2, 13, 11, 0, 0}},
                 {'Y', {2006, 1, 30, 11, 0, 0}},
                 {'D', {2004, 2, 3, 11, 0, 0}},
                 {'I', {2004, 1, 30, 11, 0, 0}},
                 {'A', {2004, 1, 30, 11, 0, 0}},
                 {static_cast<char>(DAYS_ALL), {2004, 2, 1, 11, 0, 0}}};
    for (const Case& c : cases) {
        Date date(start);
        date.stepPeriods(2, c.code);
        EXPECT_EQ(c.after, FieldsOf(date, 13)) << c.code;
        date.unstepPeriods(2, c.code);
        if (c.code != 'M') {  // months keep the day that they reduced
            EXPECT_EQ(start.m_value, date.m_value) << c.code;
        }
    }

    // Stepping back below the bottom of the 32-bit range wraps, and that reads as 0.
    Date bottom;
    bottom.m_value = 40000;
    bottom.unstepPeriods(1, static_cast<char>(DAYS_ALL), ZONE_GMT);
    EXPECT_EQ(0u, bottom.m_value);
    bottom.m_value = 3 * 86400;
    bottom.unstepPeriods(1, 'W', 18);
    EXPECT_EQ(0u, bottom.m_value);
    bottom.m_value = DATE_SECONDS_BASE + 3600;  // 1 January 1900 steps back without wrapping
    bottom.unstepPeriods(1, static_cast<char>(DAYS_ALL), ZONE_GMT);
    EXPECT_EQ(DATE_SECONDS_BASE + 3600 - 86400, bottom.m_value);
    // A negative count steps forward, and a value below 2 never moves.
    Date ahead(DATE_SECONDS_BASE + 3600);
    ahead.unstepPeriods(-1, static_cast<char>(DAYS_ALL), ZONE_GMT);
    EXPECT_EQ(DATE_SECONDS_BASE + 3600 + 86400, ahead.m_value);
    Date none(0);
    none.unstepPeriods(1, 'W');
    none.stepPeriods(1, 'Y');
    EXPECT_EQ(0u, none.m_value);
}

TEST(DateSteps, LastDayNamed) {
    const Date sunday = At(18, 2005, 4, 3, 12);  // the day daylight time began
    Date same = sunday.lastDayNamed("SUNDAY");
    EXPECT_EQ(sunday.m_value, same.m_value);

    const Date wednesday = At(18, 2005, 4, 6, 9, 30);
    const Date saturday = wednesday.lastDayNamed("sat");
    EXPECT_EQ((Fields{2005, 4, 2, 9, 30, 0}), FieldsOf(saturday, 18));  // back over the change
    EXPECT_EQ(18, saturday.m_timeZone);
    EXPECT_EQ(1, saturday.m_bValid);
    EXPECT_EQ((Fields{2005, 3, 31, 9, 30, 0}), FieldsOf(wednesday.lastDayNamed("Thursday"), 18));
    EXPECT_EQ((Fields{2005, 4, 6, 9, 30, 0}), FieldsOf(wednesday, 18));  // unchanged

    const Date bad = wednesday.lastDayNamed("Mo");
    EXPECT_EQ(0, bad.m_bValid);
    EXPECT_EQ(1u, bad.m_value);
    EXPECT_STREQ("Invalid Day Name", Date::lastError());
}
