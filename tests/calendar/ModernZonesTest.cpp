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

#include "calendar/CalendarTestSupport.h"
#include "calendar/ModernZones.h"

using qvnrt::test::Fields;
using qvnrt::test::FieldsOf;
using qvnrt::test::Local;
using qvnrt::test::LocalOf;
using qvnrt::test::ToString;

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
    const Local want = LocalOf(t);
    if (Unstatable(zone, static_cast<int>(want.fields.year)) ||
        Unstatable(zone, static_cast<int>(qvnrt::test::GmtFieldsOf(t).year))) {
        return true;
    }
    const Date date(static_cast<uint32_t>(t) + EPOCH_1970);
    const Fields got = FieldsOf(date, zone);
    const bool unambiguous =
        LocalOf(t - 3600).offset == want.offset && LocalOf(t + 3600).offset == want.offset;
    const Fields& f = want.fields;
    const uint32_t made = date.makeValue(f.month, f.day, f.year, f.hour, f.minute, f.second, zone);
    if (got == f && (!unambiguous || made == date.m_value)) return true;
    why = std::to_string(t) + ": " + ToString(got) + ", tz database " + ToString(f) +
          "; made back " + std::to_string(static_cast<int64_t>(made) - date.m_value) + " s off";
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
    for (time_t t = first; t <= last && failures < 5; t += 3600) {
        if (t != first && LocalOf(t).offset != LocalOf(t - 3600).offset) {
            const time_t change = qvnrt::test::OffsetChangeIn(t - 3600, t);
            for (time_t second = change - 120; second <= change + 120; ++second) check(second);
        }
        check(t);
    }
    EXPECT_EQ(0, failures);
}

INSTANTIATE_TEST_SUITE_P(Rows, ModernZoneRow, ::testing::Values(2, 4, 13, 18, 22, 30, 32, 33));

}  // namespace
