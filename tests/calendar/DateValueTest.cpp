// Values, Julian days, fields in GMT, validation, order, format and day names.
#include <qvnrt/Date.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "calendar/CalendarTestSupport.h"

using qvnrt::test::FieldsOf;
using qvnrt::test::GmtValue;

TEST(DateValue, ConstructionFromValuesAndJulianDays) {
    const Date noon1970(2440588, 7);
    EXPECT_EQ(GmtValue(1970, 1, 1, 12), noon1970.m_value);
    EXPECT_EQ(1, noon1970.m_bValid);
    EXPECT_EQ(ZONE_GMT, noon1970.m_timeZone);
    EXPECT_EQ(7, noon1970.m_sequence);

    EXPECT_EQ(3043200u, Date(FIRST_JULIAN_DAY).m_value);  // 1 January 1900 at noon
    EXPECT_EQ(0u, Date(0).m_value);
    EXPECT_EQ(1u, Date(2).m_value);
    EXPECT_EQ(1u, Date(FIRST_JULIAN_DAY - 1).m_value);
    EXPECT_EQ(DATE_SECONDS_BASE, Date(DATE_SECONDS_BASE).m_value);
    EXPECT_EQ(0xFFFFFFFFu, Date(0xFFFFFFFFu).m_value);
    EXPECT_EQ(GmtValue(1970, 1, 1), EPOCH_1970);  // a time_t plus EPOCH_1970 is a Date value
}

TEST(DateValue, JulianDaysRoundTripEveryDayOfTheRange) {
    EXPECT_EQ(2451545u, Date::julianFromDate(1, 1, 2000));  // the astronomers' J2000 day
    uint32_t expected = FIRST_JULIAN_DAY;
    for (uint32_t year = 1900; year <= 2035; ++year) {
        for (uint32_t month = 1; month <= 12; ++month) {
            for (uint32_t day = 1; day <= Date::daysInMonth(month, year); ++day, ++expected) {
                ASSERT_EQ(expected, Date::julianFromDate(month, day, year))
                    << year << "-" << month << "-" << day;
                uint32_t m, d, y;
                Date::dateFromJulian(expected, m, d, y);
                ASSERT_EQ(month, m);
                ASSERT_EQ(day, d);
                ASSERT_EQ(year, y);
            }
        }
    }
    EXPECT_EQ(Date::julianFromDate(3, 1, 2000), Date::julianFromDate(3, 1, 0));  // normalised
}

TEST(DateValue, JulianDayValuesReadAsNoon) {
    Date date;
    // A Julian day met by the accessors is that day at noon, in any zone.
    date.m_value = 2440588;
    EXPECT_EQ((qvnrt::test::Fields{1970, 1, 1, 12, 0, 0}), FieldsOf(date, 18));
    EXPECT_EQ(4u, date.dayOfWeek(18));  // a Thursday
}

TEST(DateValue, SetDateValidatesAndReportsTheLastError) {
    Date date;
    date.setDate(1, 1, 1900);
    EXPECT_EQ(1, date.m_bValid);
    EXPECT_EQ(3043200u, date.m_value);

    date.m_sequence = 5;
    date.m_timeZone = 18;
    date.setDate(29, 2, 1996);
    EXPECT_EQ(1, date.m_bValid);
    EXPECT_EQ(GmtValue(1996, 2, 29, 12), date.m_value);
    EXPECT_EQ(ZONE_GMT, date.m_timeZone);
    EXPECT_EQ(0, date.m_sequence);

    struct Bad {
        uint32_t day, month, year;
        const char* error;
    } bad[] = {{1, 1, 1899, "Invalid Year"},       {1, 1, 2036, "Invalid Year"},
               {1, 1, 100, "Invalid Year"},        {29, 2, 1900, "Invalid Month/Day"},
               {29, 2, 1997, "Invalid Month/Day"}, {31, 4, 2001, "Invalid Month/Day"},
               {0, 5, 2001, "Invalid Month/Day"},  {1, 13, 2001, "Invalid Month/Day"},
               {1, 0, 2001, "Invalid Month/Day"}};
    for (const Bad& b : bad) {
        date.setDate(b.day, b.month, b.year);
        EXPECT_EQ(0, date.m_bValid) << b.day << "/" << b.month << "/" << b.year;
        EXPECT_EQ(1u, date.m_value);
        EXPECT_STREQ(b.error, Date::lastError());
    }
    // Later arithmetic on the invalid Date does nothing.
    date.addWeeks(3, 18);
    date.nextMonth(18);
    date.addTradingDays(4, 'D', 18);
    EXPECT_EQ(1u, date.m_value);

    // Two-digit years.
    date.setDate(1, 1, 0);
    EXPECT_EQ(GmtValue(2000, 1, 1, 12), date.m_value);
    date.setDate(1, 1, 10);
    EXPECT_EQ(GmtValue(1910, 1, 1, 12), date.m_value);
    date.setDate(1, 1, 99);
    EXPECT_EQ(GmtValue(1999, 1, 1, 12), date.m_value);
    date.setDate(29, 2, 0);  // 2000 is leap
    EXPECT_EQ(1, date.m_bValid);
}

// The edges that setDate and the Julian round trip do not reach.
TEST(DateValue, CalendarRulesAtTheirEdges) {
    EXPECT_EQ(2009u, Date::normaliseYear(9));
    EXPECT_EQ(100u, Date::normaliseYear(100));
    EXPECT_TRUE(Date::validYear(2035));
    EXPECT_FALSE(Date::isLeapYear(2100));
    EXPECT_EQ(0u, Date::daysInMonth(13, 2003));
}

TEST(DateValue, OrderUsesTheSequenceWithinOneSecond) {
    const Date early(DATE_SECONDS_BASE + 10, 9);
    const Date late(DATE_SECONDS_BASE + 11, 0);
    const Date lateSecond(DATE_SECONDS_BASE + 11, 1);
    EXPECT_TRUE(late.isAfter(early) && early.isBefore(late));
    EXPECT_TRUE(lateSecond.isAfter(late) && late < lateSecond);
    EXPECT_FALSE(late.isAfter(Date(late)));
    EXPECT_FALSE(late.isBefore(Date(late)));
}

TEST(DateValue, WeekdayAndDayOfYear) {
    EXPECT_EQ(1u, Date(FIRST_JULIAN_DAY).dayOfWeek(ZONE_GMT));          // 1 January 1900, a Monday
    EXPECT_EQ(7u, Date(GmtValue(2006, 1, 1, 12)).dayOfWeek(ZONE_GMT));  // a Sunday
    // 03:00 GMT on Sunday 1 January 2006 is still Saturday evening in New York.
    EXPECT_EQ(6u, Date(GmtValue(2006, 1, 1, 3)).dayOfWeek(18));

    EXPECT_EQ(0u, Date(GmtValue(2004, 1, 1, 12)).dayOfYear(ZONE_GMT));
    EXPECT_EQ(60u, Date(GmtValue(2004, 3, 1, 12)).dayOfYear(ZONE_GMT));
    EXPECT_EQ(59u, Date(GmtValue(2003, 3, 1, 12)).dayOfYear(ZONE_GMT));
    EXPECT_EQ(365u, Date(GmtValue(2004, 12, 31, 12)).dayOfYear(ZONE_GMT));
    EXPECT_EQ(364u, Date(GmtValue(2003, 12, 31, 12)).dayOfYear(ZONE_GMT));
}

TEST(DateValue, FormatFillsOneSharedResult) {
    const Date epoch(EPOCH_1970);
    CVString& first = epoch.format("%c", ZONE_GMT);
    EXPECT_STREQ("Thu Jan  1 00:00:00 1970", first);
    // In New York that instant was the evening before.
    EXPECT_STREQ("1969-12-31 19:00:00 Wed day 365",
                 epoch.format("%Y-%m-%d %H:%M:%S %a day %j", 18));
    CVString& second = Date(GmtValue(2001, 2, 3)).format("%d/%m/%Y", ZONE_GMT);
    EXPECT_EQ(&first, &second);
    EXPECT_STREQ("03/02/2001", first);

    // 128 bytes hold 127 characters and the terminator.
    const std::string fits(127, 'x');
    EXPECT_STREQ(fits.c_str(), epoch.format(fits.c_str(), ZONE_GMT));
    EXPECT_STREQ("", epoch.format((fits + "x").c_str(), ZONE_GMT));
    EXPECT_STREQ("", epoch.format(nullptr, ZONE_GMT));
}

TEST(DateValue, DayNames) {
    for (const char* monday : {"Mon", "MON", "monday", "MONDAY", "mOnDa"}) {
        EXPECT_EQ(1u, Date::dayNumberFromName(monday)) << monday;
    }
    EXPECT_EQ(4u, Date::dayNumberFromName("Thursday"));  // a full name longer than "monday"
    for (uint32_t day = 1; day <= 7; ++day) {
        EXPECT_EQ(day, Date::dayNumberFromName(Date::dayNameFromNumber(day)));
    }
    EXPECT_EQ(nullptr, Date::dayNameFromNumber(0));
    EXPECT_EQ(nullptr, Date::dayNameFromNumber(8));

    for (const char* bad : {"Mo", "MONDAYS", "", "xyz", "wednesdays", "T"}) {
        Date::dayNumberFromName("Friday");
        EXPECT_EQ(0u, Date::dayNumberFromName(bad)) << bad;
        EXPECT_STREQ("Invalid Day Name", Date::lastError()) << bad;
    }
    EXPECT_EQ(0u, Date::dayNumberFromName(nullptr));
}
