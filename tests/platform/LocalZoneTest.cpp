// The machine's zone: POSIX rules and TZif files turned into Windows' fields, and where the
// zone is read from.
#include "platform/LocalZone.h"

#include <string>

#include <gtest/gtest.h>

#include "support/ScopedEnv.h"
#include "support/TempDir.h"

namespace qvnrt::platform {
void PrintTo(const ZoneChangeDate& d, std::ostream* os) {
    *os << "{" << d.wYear << ", " << d.wMonth << ", " << d.wDayOfWeek << ", " << d.wDay << ", "
        << d.wHour << ", " << d.wMinute << ", " << d.wSecond << "}";
}
}  // namespace qvnrt::platform

namespace {

using qvnrt::platform::TimeZoneInformation;
using qvnrt::platform::ZoneChangeDate;
using qvnrt::test::ScopedEnv;
using qvnrt::test::TempDir;

struct ParsedRule {
    const char* rule;
    int bias;
    int daylightBias;
    ZoneChangeDate standard;
    ZoneChangeDate daylight;
};

class PosixRule : public testing::TestWithParam<ParsedRule> {};

TEST_P(PosixRule, GivesWindowsFields) {
    const ParsedRule& expected = GetParam();
    TimeZoneInformation info;
    info.Bias = 12345;  // must be overwritten
    ASSERT_TRUE(qvnrt::platform::TimeZoneFromPosixRule(expected.rule, info));
    EXPECT_EQ(expected.bias, info.Bias);
    EXPECT_EQ(0, info.StandardBias);
    EXPECT_EQ(expected.daylightBias, info.DaylightBias);
    EXPECT_EQ(expected.standard, info.StandardDate);
    EXPECT_EQ(expected.daylight, info.DaylightDate);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, PosixRule,
    testing::Values(
        ParsedRule{"EST5EDT,M3.2.0,M11.1.0", 300, -60, {0, 11, 0, 1, 2, 0, 0}, {0, 3, 0, 2, 2, 0, 0}},
        // A daylight name without rules takes the C library's default rules.
        ParsedRule{"EST5EDT", 300, -60, {0, 11, 0, 1, 2, 0, 0}, {0, 3, 0, 2, 2, 0, 0}},
        ParsedRule{"JST-9", -540, 0, {}, {}},
        ParsedRule{"<+0530>-5:30", -330, 0, {}, {}},
        // An explicit daylight offset.
        ParsedRule{"<+1030>-10:30<+11>-11,M10.1.0,M4.1.0", -630, -30, {0, 4, 0, 1, 2, 0, 0},
                   {0, 10, 0, 1, 2, 0, 0}},
        // Jn is a fixed day of a common year: an absolute date, day of the month in wDay;
        // n counts from 0, so day 59 is J60.
        ParsedRule{"XXX3YYY,J60/1:30,J300", 180, -60, {1, 10, 0, 27, 2, 0, 0}, {1, 3, 0, 1, 1, 30, 0}},
        ParsedRule{"XXX3YYY,59/1:30,299", 180, -60, {1, 10, 0, 27, 2, 0, 0}, {1, 3, 0, 1, 1, 30, 0}},
        // Times outside one day, and seconds, are carried as signed parts that add up.
        ParsedRule{"<-02>2<-01>,M3.5.0/-1,M10.5.0/0:00:30", 120, -60, {0, 10, 0, 5, 0, 0, 30},
                   {0, 3, 0, 5, -1, 0, 0}},
        ParsedRule{"IST-2IDT,M3.4.4/26,M10.5.0", -120, -60, {0, 10, 0, 5, 2, 0, 0},
                   {0, 3, 4, 4, 26, 0, 0}}));

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

}  // namespace
