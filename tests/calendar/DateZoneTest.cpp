// Conversions in the zones of the table: GMT, the fallback row, history rows, the change
// days, the cached change moments, and zone 0.
#include <qvnrt/Date.h>

#include <random>

#include <gtest/gtest.h>

#include "calendar/CalendarTestSupport.h"

using qvnrt::test::Fields;
using qvnrt::test::FieldsOf;
using qvnrt::test::GmtValue;
using qvnrt::test::ScopedEnv;

namespace {

Fields GmtFields(uint32_t value) {
    return qvnrt::test::GmtFieldsOf(static_cast<time_t>(value) - static_cast<time_t>(EPOCH_1970));
}

// Hours between GMT and the zone's wall clock at that instant.
int HoursBehindGmt(uint32_t value, uint8_t zone) {
    Date date(value);
    return static_cast<int>(value -
                            date.makeValue(date.getMonth(zone), date.getDay(zone),
                                           date.getYear(zone), date.getHour(zone), 0, 0, ZONE_GMT) -
                            date.getMinute(zone) * 60 - date.getSecond(zone)) /
           3600;
}

}  // namespace

TEST(DateZone, GmtIsNeverConverted) {
    Date date;
    for (uint32_t value :
         {DATE_SECONDS_BASE, GmtValue(1974, 1, 6, 7), GmtValue(2000, 10, 1, 3), 0xFFFFFFFFu}) {
        date.m_value = value;
        EXPECT_EQ(GmtFields(value), FieldsOf(date, ZONE_GMT));
        const Fields f = GmtFields(value);
        EXPECT_EQ(value,
                  date.makeValue(f.month, f.day, f.year, f.hour, f.minute, f.second, ZONE_GMT));
    }
    EXPECT_EQ(1u, date.makeValue(12, 31, 1899, 23, 59, 59, ZONE_GMT));
}

TEST(DateZone, IdsAbove50ReckonAsRow18AndStayStored) {
    Date date;
    date.setDateTime(1, 7, 2004, 9, 30, 0, 51);
    EXPECT_EQ(51, date.m_timeZone);
    EXPECT_EQ(GmtValue(2004, 7, 1, 13, 30), date.m_value);  // 9:30 EDT
    for (uint32_t value = GmtValue(2004, 1, 1); value < GmtValue(2005, 1, 1);
         value += 3 * 3600 + 7) {
        date.m_value = value;
        const Fields eastern = FieldsOf(Date(value), 18);
        ASSERT_EQ(eastern, FieldsOf(date, 51));
        ASSERT_EQ(eastern, FieldsOf(date, 254));
        ASSERT_EQ(eastern, FieldsOf(date, ZONE_DEFAULT));  // the Date's own zone, 51
    }
    // 255 as the zone of setDateTime keeps the Date's own.
    date.setDateTime(1, 1, 2004, 12, 0, 0, ZONE_DEFAULT);
    EXPECT_EQ(51, date.m_timeZone);
    EXPECT_EQ(GmtValue(2004, 1, 1, 17), date.m_value);
}

TEST(DateZone, HistoryRowsServeTheirYears) {
    // 1974: daylight time from 6 January, 02:00 EST.
    EXPECT_EQ((Fields{1974, 1, 6, 1, 59, 59}), FieldsOf(Date(GmtValue(1974, 1, 6, 6, 59, 59)), 18));
    EXPECT_EQ((Fields{1974, 1, 6, 3, 0, 0}), FieldsOf(Date(GmtValue(1974, 1, 6, 7)), 18));
    // 1920 had daylight time from the last Sunday of March; 1919 and before have neither
    // daylight time nor a bias in the table's oldest row, and that is kept.
    EXPECT_EQ(4, HoursBehindGmt(GmtValue(1920, 7, 1, 12), 18));
    EXPECT_EQ(5, HoursBehindGmt(GmtValue(1920, 12, 1, 12), 18));
    EXPECT_EQ(0, HoursBehindGmt(GmtValue(1919, 7, 1, 12), 18));
    // The newest row still serves 1986; the table's own rule 1987 on.
    EXPECT_EQ(5, HoursBehindGmt(GmtValue(1986, 4, 6, 12), 18));
    EXPECT_EQ(4, HoursBehindGmt(GmtValue(1987, 4, 6, 12), 18));
}

TEST(DateZone, WallClockTimesOnTheChangeDays) {
    const Date date;
    // 3 April 2005: 02:00 EST became 03:00 EDT (07:00 GMT).
    EXPECT_EQ(GmtValue(2005, 4, 3, 6, 59, 59), date.makeValue(4, 3, 2005, 1, 59, 59, 18));
    EXPECT_EQ(GmtValue(2005, 4, 3, 7), date.makeValue(4, 3, 2005, 3, 0, 0, 18));
    EXPECT_EQ(GmtValue(2005, 4, 3, 7, 30), date.makeValue(4, 3, 2005, 2, 30, 0, 18));  // skipped
    // 30 October 2005: 02:00 EDT became 01:00 EST (06:00 GMT); the repeated hour is taken
    // in daylight time.
    EXPECT_EQ(GmtValue(2005, 10, 30, 5, 30), date.makeValue(10, 30, 2005, 1, 30, 0, 18));
    EXPECT_EQ(GmtValue(2005, 10, 30, 7), date.makeValue(10, 30, 2005, 2, 0, 0, 18));
}

TEST(DateZone, SouthernRowsReadTheChangeMonthsAsWritten) {
    // Row 31: standard from the third Sunday of March, daylight from the first Sunday of
    // October, twelve and thirteen hours ahead of GMT. Away from the changes:
    EXPECT_EQ(-13, HoursBehindGmt(GmtValue(2005, 1, 15, 12), 31));
    EXPECT_EQ(-12, HoursBehindGmt(GmtValue(2005, 6, 15, 12), 31));
    // Kept: in the days around a change the near-change flag, "the standard month is later
    // than the daylight month", reads the seasons of these rows the other way round.
    EXPECT_EQ(-12, HoursBehindGmt(GmtValue(2005, 3, 5, 12), 31));
    EXPECT_EQ(-13, HoursBehindGmt(GmtValue(2005, 3, 25, 12), 31));
}

TEST(DateZone, CachedChangeMomentsNeverLeakBetweenZonesOrYears) {
    ScopedEnv tz("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    std::mt19937 random(12345);
    std::uniform_int_distribution<uint32_t> values(GmtValue(1950, 1, 1), GmtValue(2035, 12, 1));
    std::uniform_int_distribution<int> zones(0, 60);
    std::uniform_int_distribution<uint32_t> changeMonths(0, 5), days(1, 28), years(1950, 2035);
    const uint32_t kChangeMonths[] = {2, 3, 4, 9, 10, 11};
    Date reused;
    for (int i = 0; i < 20000; ++i) {
        // Every other instant lies in a month of changes: that is where the cache is read.
        uint32_t value = values(random);
        if (i % 2) {
            value = GmtValue(static_cast<int>(years(random)), kChangeMonths[changeMonths(random)],
                             days(random), i % 24, i % 60);
        }
        const uint8_t zone = static_cast<uint8_t>(zones(random));
        reused.m_value = value;
        const Fields fresh = FieldsOf(Date(value), zone);
        ASSERT_EQ(fresh, FieldsOf(reused, zone)) << "zone " << int(zone) << " value " << value;
        ASSERT_EQ(Date().makeValue(fresh.month, fresh.day, fresh.year, fresh.hour, fresh.minute,
                                   fresh.second, zone),
                  reused.makeValue(fresh.month, fresh.day, fresh.year, fresh.hour, fresh.minute,
                                   fresh.second, zone));
    }
}

TEST(DateZone, MachineZoneIsReadOnceUntilTheHostSaysItChanged) {
    ScopedEnv tz("TZ", "EST5EDT,M3.2.0,M11.1.0");
    const Date summer(GmtValue(2010, 7, 1, 12));
    EXPECT_EQ(8u, summer.getHour(ZONE_LOCAL));
    EXPECT_EQ(1u, Date(GmtValue(2010, 3, 14, 6, 59, 59)).getHour(ZONE_LOCAL));
    EXPECT_EQ(3u, Date(GmtValue(2010, 3, 14, 7)).getHour(ZONE_LOCAL));

    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    EXPECT_EQ(8u, summer.getHour(ZONE_LOCAL));
    testing::internal::CaptureStderr();
    setTimeZoneChangeFromQvn();
    EXPECT_NE(std::string::npos,
              testing::internal::GetCapturedStderr().find("Clearing flag in QvnRT"));
    EXPECT_EQ(14u, summer.getHour(ZONE_LOCAL));
    // The machine's rule now matches row 34 of the table, instant for instant.
    for (uint32_t value = GmtValue(2005, 1, 1); value < GmtValue(2006, 1, 1); value += 1800) {
        ASSERT_EQ(FieldsOf(Date(value), 34), FieldsOf(Date(value), ZONE_LOCAL));
    }
}
