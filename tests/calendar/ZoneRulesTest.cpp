// The machine's zone as the calendar reads it: Windows' fields turned into zone-0 rules.
#include <filesystem>

#include <gtest/gtest.h>

#include "calendar/CalendarTestSupport.h"
#include "calendar/ZoneTable.h"
#include "platform/LocalZone.h"
#include "support/TempDir.h"

namespace qvnrt::calendar {
void PrintTo(const ZoneRule& r, std::ostream* os) {
    *os << "{" << r.bias << ", " << r.change << ", {" << int(r.rule.month) << ", "
        << int(r.rule.week) << ", " << int(r.rule.day) << "}}";
}
}  // namespace qvnrt::calendar

namespace {

using qvnrt::calendar::ZoneRule;
using qvnrt::platform::TimeZoneInformation;

void ExpectRules(const TimeZoneInformation& info, const ZoneRule& standard,
                 const ZoneRule& daylight) {
    ZoneRule s{}, d{};
    qvnrt::calendar::rulesFromTimeZoneInformation(info, s, d);
    EXPECT_EQ(standard, s);
    EXPECT_EQ(daylight, d);
}

TimeZoneInformation Parse(const char* rule) {
    TimeZoneInformation info;
    EXPECT_TRUE(qvnrt::platform::TimeZoneFromPosixRule(rule, info)) << rule;
    return info;
}

TEST(ZoneRules, FromWindowsFields) {
    // Standard: bias (300 + 0) x 60; change = that + (2 x 60 + DaylightBias + 0) x 60, i.e.
    // 02:00 EDT. Daylight: bias (300 - 60) x 60; change (2 x 60 + Bias + 0) x 60, 02:00 EST.
    ExpectRules(Parse("EST5EDT,M3.2.0,M11.1.0"), {18000, 18000 + (120 - 60) * 60, {11, 1, 7}},
                {14400, (120 + 300) * 60, {3, 2, 7}});
    // An absolute date keeps its day of the month, with no weekday.
    ExpectRules(Parse("XXX3YYY,J60/1:30,J300"), {10800, 10800 + (120 - 60) * 60, {10, 27, 0}},
                {7200, (60 + 180 + 30) * 60, {3, 1, 0}});

    // Rules that the table holds come out as its rows: central Europe is row 34, the US
    // rule of 1987 to 2006 row 18, Japan row 45, India row 25.
    ExpectRules(Parse("CET-1CEST,M3.5.0,M10.5.0/3"), qvnrt::calendar::standardRule(34, 2005),
                qvnrt::calendar::daylightRule(34, 2005));
    ExpectRules(Parse("EST5EDT,M4.1.0,M10.5.0"), qvnrt::calendar::standardRule(18, 2005),
                qvnrt::calendar::daylightRule(18, 2005));
    // A zone without daylight time has no change month; its daylight rule repeats the
    // standard bias where the table's rows hold 0, which no conversion reads.
    ExpectRules(Parse("JST-9"), qvnrt::calendar::standardRule(45, 2005), {-32400, 0, {0, 0, 0}});
    ExpectRules(Parse("<+0530>-5:30"), qvnrt::calendar::standardRule(25, 2005),
                {-19800, 0, {0, 0, 0}});
}

TEST(ZoneRules, ZoneZeroTakesTheMachinesFileWhenTzIsUnset) {
    const char* const chicago = "/usr/share/zoneinfo/America/Chicago";
    if (!std::filesystem::exists(chicago)) GTEST_SKIP() << "no zoneinfo";
    qvnrt::test::TempDir dir;
    std::filesystem::copy_file(chicago, dir.file("localtime"));
    TimeZoneInformation info;
    ASSERT_TRUE(qvnrt::platform::TimeZoneFromTzifFile(dir.file("localtime"), info));
    ExpectRules(info, {21600, 25200, {11, 1, 7}}, {18000, 28800, {3, 2, 7}});

    qvnrt::platform::SetLocalZoneFile(dir.file("localtime"));
    qvnrt::test::ScopedEnv tz("TZ", std::nullopt);
    EXPECT_EQ(7u, Date(qvnrt::test::GmtValue(2012, 7, 1, 12)).getHour(ZONE_LOCAL));  // CDT
    EXPECT_EQ(6u, Date(qvnrt::test::GmtValue(2012, 12, 1, 12)).getHour(ZONE_LOCAL));
    qvnrt::platform::SetLocalZoneFile("");
}

}  // namespace
