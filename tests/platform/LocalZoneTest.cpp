// The machine's zone: POSIX rules and TZif files turned into Windows' fields, and those
// fields into the calendar's zone-0 rules.
#include "platform/LocalZone.h"

#include <filesystem>

#include <gtest/gtest.h>

#include "calendar/CalendarTestSupport.h"
#include "calendar/ZoneTable.h"
#include "support/TempDir.h"

namespace qvnrt::calendar {
void PrintTo(const ZoneRule& r, std::ostream* os) {
    *os << "{" << r.bias << ", " << r.change << ", {" << int(r.rule.month) << ", "
        << int(r.rule.week) << ", " << int(r.rule.day) << "}}";
}
}  // namespace qvnrt::calendar

using qvnrt::calendar::ZoneRule;
using qvnrt::platform::TimeZoneInformation;
using qvnrt::platform::ZoneChangeDate;
using qvnrt::test::ScopedEnv;
using qvnrt::test::TempDir;

namespace {

TimeZoneInformation Parse(const std::string& rule) {
    TimeZoneInformation info;
    info.Bias = 12345;  // must be overwritten
    EXPECT_TRUE(qvnrt::platform::TimeZoneFromPosixRule(rule, info)) << rule;
    return info;
}

void ExpectRules(const TimeZoneInformation& info, const ZoneRule& standard,
                 const ZoneRule& daylight) {
    ZoneRule s{}, d{};
    qvnrt::calendar::rulesFromTimeZoneInformation(info, s, d);
    EXPECT_EQ(standard, s);
    EXPECT_EQ(daylight, d);
}

// A TZif file with no transitions: one header and block of each version, then the footer.
std::string MinimalTzif(char version, const std::string& footer) {
    std::string block;
    block += std::string("TZif") + version + std::string(15, '\0');
    const unsigned char counts[24] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                                      0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 4};  // 1 type, 4 chars
    block.append(reinterpret_cast<const char*>(counts), sizeof(counts));
    block += std::string("\0\0\0\0\0\0", 6) + "UTC";
    block += '\0';
    std::string file = block;
    if (version >= '2') file += block + "\n" + footer + "\n";
    return file;
}

const char kNewYorkFile[] = "/usr/share/zoneinfo/America/New_York";

}  // namespace

TEST(LocalZone, PosixRuleGivesWindowsFieldsAndTheirRules) {
    const TimeZoneInformation eastern = Parse("EST5EDT,M3.2.0,M11.1.0");
    EXPECT_EQ(300, eastern.Bias);
    EXPECT_EQ(0, eastern.StandardBias);
    EXPECT_EQ(-60, eastern.DaylightBias);
    EXPECT_EQ((ZoneChangeDate{0, 11, 0, 1, 2, 0, 0}), eastern.StandardDate);
    EXPECT_EQ((ZoneChangeDate{0, 3, 0, 2, 2, 0, 0}), eastern.DaylightDate);
    // Standard: bias (300 + 0) x 60; change = that + (2 x 60 + DaylightBias + 0) x 60, i.e.
    // 02:00 EDT. Daylight: bias (300 - 60) x 60; change (2 x 60 + Bias + 0) x 60, 02:00 EST.
    ExpectRules(eastern, {18000, 18000 + (120 - 60) * 60, {11, 1, 7}},
                {14400, (120 + 300) * 60, {3, 2, 7}});

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

TEST(LocalZone, FormsWindowsCannotStateExactly) {
    // Jn is a fixed day of a common year: an absolute date, day of the month in wDay.
    const TimeZoneInformation julian = Parse("XXX3YYY,J60/1:30,J300");
    EXPECT_EQ((ZoneChangeDate{1, 3, 0, 1, 1, 30, 0}), julian.DaylightDate);
    EXPECT_EQ((ZoneChangeDate{1, 10, 0, 27, 2, 0, 0}), julian.StandardDate);
    ExpectRules(julian, {10800, 10800 + (120 - 60) * 60, {10, 27, 0}},
                {7200, (60 + 180 + 30) * 60, {3, 1, 0}});
    // n counts from 0: day 59 is J60.
    const TimeZoneInformation zeroBased = Parse("XXX3YYY,59/1:30,299");
    EXPECT_EQ(julian.DaylightDate, zeroBased.DaylightDate);
    EXPECT_EQ(julian.StandardDate, zeroBased.StandardDate);
    // Times outside one day, and seconds, are carried as signed parts that add up.
    const TimeZoneInformation greenland = Parse("<-02>2<-01>,M3.5.0/-1,M10.5.0/0:00:30");
    EXPECT_EQ((ZoneChangeDate{0, 3, 0, 5, -1, 0, 0}), greenland.DaylightDate);
    EXPECT_EQ((ZoneChangeDate{0, 10, 0, 5, 0, 0, 30}), greenland.StandardDate);
    const TimeZoneInformation late = Parse("IST-2IDT,M3.4.4/26,M10.5.0");
    EXPECT_EQ(26, late.DaylightDate.wHour);
    // A daylight name without rules takes the C library's default rules.
    const TimeZoneInformation bare = Parse("EST5EDT");
    EXPECT_EQ((ZoneChangeDate{0, 3, 0, 2, 2, 0, 0}), bare.DaylightDate);
    EXPECT_EQ((ZoneChangeDate{0, 11, 0, 1, 2, 0, 0}), bare.StandardDate);
    // An explicit daylight offset.
    EXPECT_EQ(-30, Parse("<+1030>-10:30<+11>-11,M10.1.0,M4.1.0").DaylightBias);
}

TEST(LocalZone, MalformedRulesLeaveTheFieldsAlone) {
    for (const char* bad :
         {"", "E5", "EST", "5EST", "EST5EDT,M13.1.0,M11.1.0", "EST5EDT,M3.2.0",
          "EST5EDT,M3.6.0,M11.1.0", "EST5EDT,M3.2.7,M11.1.0", "EST25", "EST5EDT,J0,J365",
          "EST5EDT,366,1", "<AB>5", "EST5EDT,M3.2.0,M11.1.0x", "America/New_York"}) {
        TimeZoneInformation info;
        info.Bias = 77;
        EXPECT_FALSE(qvnrt::platform::TimeZoneFromPosixRule(bad, info)) << bad;
        EXPECT_EQ(77, info.Bias) << bad;
    }
}

TEST(LocalZone, TzifFilesAreReadFromTheirFooter) {
    TempDir dir;
    dir.write("tokyo", MinimalTzif('2', "JST-9"));
    dir.write("v3", MinimalTzif('3', "CET-1CEST,M3.5.0,M10.5.0/3"));
    dir.write("v1", MinimalTzif('\0', ""));
    dir.write("no-rule", MinimalTzif('2', ""));
    dir.write("cut", MinimalTzif('2', "JST-9").substr(0, 80));
    dir.write("text", "JST-9\n");

    TimeZoneInformation info;
    ASSERT_TRUE(qvnrt::platform::TimeZoneFromTzifFile(dir.file("tokyo"), info));
    EXPECT_EQ(-540, info.Bias);
    EXPECT_EQ(0, info.StandardDate.wMonth);
    ASSERT_TRUE(qvnrt::platform::TimeZoneFromTzifFile(dir.file("v3"), info));
    EXPECT_EQ(-60, info.Bias);
    for (const char* bad : {"v1", "no-rule", "cut", "text", "missing"}) {
        info.Bias = 77;
        EXPECT_FALSE(qvnrt::platform::TimeZoneFromTzifFile(dir.file(bad), info)) << bad;
        EXPECT_EQ(77, info.Bias);
    }

    if (!std::filesystem::exists(kNewYorkFile)) GTEST_SKIP() << "no zoneinfo";
    std::filesystem::copy_file(kNewYorkFile, dir.file("localtime"));
    ASSERT_TRUE(qvnrt::platform::TimeZoneFromTzifFile(dir.file("localtime"), info));
    ExpectRules(info, {18000, 21600, {11, 1, 7}}, {14400, 25200, {3, 2, 7}});
}

TEST(LocalZone, SourcesInOrder) {
    TempDir dir;
    dir.write("tokyo", MinimalTzif('2', "JST-9"));
    EXPECT_EQ("/etc/localtime", qvnrt::platform::SetLocalZoneFile(dir.file("tokyo")));
    auto biasWith = [](std::optional<std::string> tz) {
        ScopedEnv env("TZ", tz);
        return qvnrt::platform::GetTimeZoneInformation().Bias;
    };
    EXPECT_EQ(-540, biasWith(std::nullopt));  // the file
    EXPECT_EQ(0, biasWith(""));               // GMT, as the C library reads it
    EXPECT_EQ(300, biasWith("EST5EDT,M3.2.0,M11.1.0"));
    EXPECT_EQ(-540, biasWith(":" + dir.file("tokyo")));
    EXPECT_EQ(0, biasWith("Nowhere/Atlantis"));
    {
        ScopedEnv tzdir("TZDIR", dir.path());
        EXPECT_EQ(-540, biasWith("tokyo"));
    }
    qvnrt::platform::SetLocalZoneFile(dir.file("missing"));
    EXPECT_EQ(0, biasWith(std::nullopt));
    EXPECT_EQ(dir.file("missing"), qvnrt::platform::SetLocalZoneFile(""));
}

TEST(LocalZone, ZoneZeroTakesTheFileWhenTzIsUnset) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/America/Chicago")) GTEST_SKIP();
    TempDir dir;
    std::filesystem::copy_file("/usr/share/zoneinfo/America/Chicago", dir.file("localtime"));
    qvnrt::platform::SetLocalZoneFile(dir.file("localtime"));
    ScopedEnv tz("TZ", std::nullopt);
    const Date july(qvnrt::test::GmtValue(2012, 7, 1, 12));
    EXPECT_EQ(7u, july.getHour(ZONE_LOCAL));  // CDT
    EXPECT_EQ(6u, Date(qvnrt::test::GmtValue(2012, 12, 1, 12)).getHour(ZONE_LOCAL));
    qvnrt::platform::SetLocalZoneFile("");
}
