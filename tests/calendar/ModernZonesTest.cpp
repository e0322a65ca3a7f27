// The zone rows of the modern calendar against the C library under the region's TZ: for every
// hour from 1970 to 2035, the fields of a Date agree with localtime_r, and makeValue of the
// wall clock gives the instant back wherever that wall clock is unambiguous.
#include <qvnrt/Date.h>
#include <qvnrt/host.h>

#include <cstdlib>
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "calendar/ModernZones.h"

namespace {

// Years whose changes a row cannot state (a new standard offset, or two hours of summer
// time), in which the row keeps the table's rules.
bool Unstatable(uint8_t zone, int year) {
    return (zone == 2 && year == 1983) || (zone == 22 && year == 1971) ||
           (zone == 32 && year == 1988);
}

class ModernZoneRow : public ::testing::TestWithParam<int> {
  protected:
    void SetUp() override { qvnrt::SetModernCalendar(true); }
    void TearDown() override {
        qvnrt::SetModernCalendar(false);
        ::unsetenv("TZ");
        ::tzset();
    }
};

TEST_P(ModernZoneRow, AgreesWithTheTzDatabaseEveryHour) {
    const auto zone = static_cast<uint8_t>(GetParam());
    const char* region = qvnrt::calendar::modernZoneRegion(zone);
    ASSERT_NE(nullptr, region);
    ::setenv("TZ", region, 1);
    ::tzset();
    const time_t first = 0;                                   // 1970-01-01
    const time_t last = static_cast<time_t>(2082758400) - 1;  // 2035-12-31
    int failures = 0;
    auto offsetAt = [](time_t t) {
        tm fields{};
        ::localtime_r(&t, &fields);
        return fields.tm_gmtoff;
    };
    for (time_t t = first; t <= last && failures < 5; t += 3600) {
        tm want{};
        ::localtime_r(&t, &want);
        const Date date(static_cast<uint32_t>(t) + EPOCH_1970);
        uint32_t month, day, year, hour, minute, second;
        date.getMDYHMS(month, day, year, hour, minute, second, zone);
        const bool fieldsAgree = int(year) == want.tm_year + 1900 &&
                                 int(month) == want.tm_mon + 1 && int(day) == want.tm_mday &&
                                 int(hour) == want.tm_hour && int(minute) == want.tm_min;
        // A wall clock is unambiguous when the offset is the same an hour either side.
        const bool unambiguous =
            offsetAt(t - 3600) == want.tm_gmtoff && offsetAt(t + 3600) == want.tm_gmtoff;
        const uint32_t made = date.makeValue(want.tm_mon + 1, want.tm_mday, want.tm_year + 1900,
                                             want.tm_hour, want.tm_min, want.tm_sec, zone);
        tm gmt{};
        ::gmtime_r(&t, &gmt);
        // Conversions take a year's rules by the year of the GMT value as well.
        if (Unstatable(zone, want.tm_year + 1900) || Unstatable(zone, gmt.tm_year + 1900)) {
            continue;
        }
        if (!fieldsAgree || (unambiguous && made != date.m_value)) {
            ++failures;
            ADD_FAILURE() << region << " at " << t << ": " << year << "-" << month << "-" << day
                          << " " << hour << ":" << minute << ", tz database " << want.tm_year + 1900
                          << "-" << want.tm_mon + 1 << "-" << want.tm_mday << " " << want.tm_hour
                          << ":" << want.tm_min << "; made back "
                          << static_cast<int64_t>(made) - date.m_value << " s off";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, ModernZoneRow, ::testing::Values(2, 4, 13, 18, 22, 30, 32, 33));

}  // namespace
