// The zone rows of the modern calendar against the C library under the region's TZ: for every
// hour from 1970 to 2035 and every second around each change, the fields of a Date agree with
// localtime_r, and makeValue of the wall clock gives the instant back wherever that wall clock
// is unambiguous.
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

// Whether the Date's fields at `t` in the zone, and the value made back from the C library's
// wall clock when it is unambiguous (the same offset an hour either side), agree with it.
// Years that the row cannot state are passed over, by their local and their GMT year, since
// conversions take a year's rules by either.
bool Agrees(time_t t, uint8_t zone, std::string& why) {
    auto offsetAt = [](time_t when) {
        tm fields{};
        ::localtime_r(&when, &fields);
        return fields.tm_gmtoff;
    };
    tm want{}, gmt{};
    ::localtime_r(&t, &want);
    ::gmtime_r(&t, &gmt);
    if (Unstatable(zone, want.tm_year + 1900) || Unstatable(zone, gmt.tm_year + 1900)) {
        return true;
    }
    const Date date(static_cast<uint32_t>(t) + EPOCH_1970);
    uint32_t month, day, year, hour, minute, second;
    date.getMDYHMS(month, day, year, hour, minute, second, zone);
    const bool fieldsAgree = int(year) == want.tm_year + 1900 && int(month) == want.tm_mon + 1 &&
                             int(day) == want.tm_mday && int(hour) == want.tm_hour &&
                             int(minute) == want.tm_min && int(second) == want.tm_sec;
    const bool unambiguous =
        offsetAt(t - 3600) == want.tm_gmtoff && offsetAt(t + 3600) == want.tm_gmtoff;
    const uint32_t made = date.makeValue(want.tm_mon + 1, want.tm_mday, want.tm_year + 1900,
                                         want.tm_hour, want.tm_min, want.tm_sec, zone);
    if (fieldsAgree && (!unambiguous || made == date.m_value)) return true;
    why = std::to_string(t) + ": " + std::to_string(year) + "-" + std::to_string(month) + "-" +
          std::to_string(day) + " " + std::to_string(hour) + ":" + std::to_string(minute) +
          ", tz database " + std::to_string(want.tm_year + 1900) + "-" +
          std::to_string(want.tm_mon + 1) + "-" + std::to_string(want.tm_mday) + " " +
          std::to_string(want.tm_hour) + ":" + std::to_string(want.tm_min) + "; made back " +
          std::to_string(static_cast<int64_t>(made) - date.m_value) + " s off";
    return false;
}

// Every hour from 1970 to 2035, and every second of the two minutes around each change.
TEST_P(ModernZoneRow, AgreesWithTheTzDatabase) {
    const auto zone = static_cast<uint8_t>(GetParam());
    const char* region = qvnrt::calendar::modernZoneRegion(zone);
    ASSERT_NE(nullptr, region);
    ::setenv("TZ", region, 1);
    ::tzset();
    const time_t first = 0;                                   // 1970-01-01
    const time_t last = static_cast<time_t>(2082758400) - 1;  // 2035-12-31
    int failures = 0;
    std::string why;
    auto check = [&](time_t t) {
        if (!Agrees(t, zone, why) && ++failures <= 5) ADD_FAILURE() << region << " at " << why;
    };
    long previousOffset = 0;
    for (time_t t = first; t <= last && failures < 5; t += 3600) {
        tm fields{};
        ::localtime_r(&t, &fields);
        if (t != first && fields.tm_gmtoff != previousOffset) {
            // The first second of the new offset, then two minutes either side of it.
            time_t low = t - 3600, high = t;
            while (high - low > 1) {
                const time_t middle = low + (high - low) / 2;
                tm at{};
                ::localtime_r(&middle, &at);
                (at.tm_gmtoff == fields.tm_gmtoff ? high : low) = middle;
            }
            for (time_t second = high - 120; second <= high + 120; ++second) check(second);
        }
        previousOffset = fields.tm_gmtoff;
        check(t);
    }
    EXPECT_EQ(0, failures);
}

INSTANTIATE_TEST_SUITE_P(Rows, ModernZoneRow, ::testing::Values(2, 4, 13, 18, 22, 30, 32, 33));

}  // namespace
