// The zone table against the system's time zone database: instants taken apart by the
// library must read as the C library reads them with TZ set to the matching zone, and
// their wall-clock fields must make the same instant again. Expected values come from
// /usr/share/zoneinfo at run time.
#include <qvnrt/Date.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "calendar/CalendarTestSupport.h"

using qvnrt::test::Fields;
using qvnrt::test::FieldsOf;
using qvnrt::test::GmtValue;
using qvnrt::test::Local;
using qvnrt::test::LocalOf;
using qvnrt::test::ScopedEnv;

namespace {

time_t TimeOf(uint32_t value) {
    return static_cast<time_t>(value) - static_cast<time_t>(EPOCH_1970);
}

// Instants of one GMT year: each day at a varying second, and around every change that the
// database knows in that year, every ten minutes for a day either side plus the change's
// own second and its two neighbours.
std::vector<time_t> InstantsOf(int year) {
    const time_t start = TimeOf(GmtValue(year, 1, 1));
    const time_t end = TimeOf(GmtValue(year + 1, 1, 1));
    std::vector<time_t> instants;
    for (time_t t = start + 1234; t < end; t += 86400 + 3607) instants.push_back(t);
    for (time_t t = start; t + 3600 < end; t += 3600) {
        if (LocalOf(t).offset == LocalOf(t + 3600).offset) continue;
        const time_t high = qvnrt::test::OffsetChangeIn(t, t + 3600);
        for (time_t d = -26 * 3600; d <= 26 * 3600; d += 600) {
            if (high + d >= start && high + d < end) instants.push_back(high + d);
        }
        for (time_t d : {-1, 0, 1}) instants.push_back(high + d);
    }
    return instants;
}

struct Mismatches {
    int count = 0;
    std::ostringstream first;
    void Add(const std::string& what) {
        if (count++ < 12) first << "  " << what << "\n";
    }
};

// Compares the library's zone with the database over the years, both ways.
void CrossCheck(uint8_t zone, const char* tz, int firstYear, int lastYear, bool skip2000,
                Mismatches& mismatches, int& instantsChecked) {
    ScopedEnv env("TZ", tz);
    Date reused;
    for (int year = firstYear; year <= lastYear; ++year) {
        if (skip2000 && year == 2000) continue;
        for (time_t t : InstantsOf(year)) {
            const Local expected = LocalOf(t);
            if (skip2000 && expected.fields.year == 2000) continue;
            const uint32_t value = static_cast<uint32_t>(t) + EPOCH_1970;
            reused.m_value = value;
            const Fields actual = FieldsOf(reused, zone);
            ++instantsChecked;
            if (!(actual == expected.fields)) {
                mismatches.Add(std::string(tz) + " at " + std::to_string(t) + ": library " +
                               qvnrt::test::ToString(actual) + ", database " +
                               qvnrt::test::ToString(expected.fields));
                continue;
            }
            // A wall-clock time that the change back repeats is made in daylight time, the
            // first of the two instants that show it.
            const bool repeated = LocalOf(t - 3600).fields == expected.fields;
            const uint32_t first = repeated ? value - 3600 : value;
            const Fields& f = expected.fields;
            const uint32_t made =
                reused.makeValue(f.month, f.day, f.year, f.hour, f.minute, f.second, zone);
            if (made != first) {
                mismatches.Add(std::string(tz) + " making " + qvnrt::test::ToString(f) +
                               ": library " + std::to_string(made) + ", database " +
                               std::to_string(first));
            }
        }
    }
}

bool HaveZoneinfo() {
    return std::filesystem::exists("/usr/share/zoneinfo/America/New_York");
}

}  // namespace

TEST(TzDatabaseCrossCheck, UsZonesOfTheTableAgreeWithTheDatabase) {
    if (!HaveZoneinfo()) GTEST_SKIP() << "no /usr/share/zoneinfo";
    struct Case {
        uint8_t zone;
        const char* tz;
        int firstYear, lastYear;
    } cases[] = {{18, "America/New_York", 1967, 2006},
                 {13, "America/Chicago", 1987, 2006},
                 {30, "America/Denver", 1987, 2006},
                 {33, "America/Los_Angeles", 1987, 2006}};
    for (const Case& c : cases) {
        Mismatches mismatches;
        int checked = 0;
        CrossCheck(c.zone, c.tz, c.firstYear, c.lastYear, true, mismatches, checked);
        EXPECT_GT(checked, 300 * (c.lastYear - c.firstYear));
        EXPECT_EQ(0, mismatches.count) << "zone " << int(c.zone) << ", " << c.tz << ":\n"
                                       << mismatches.first.str();
    }
}

TEST(TzDatabaseCrossCheck, Year2000DiffersOnlyBetweenSeptember30AndTheRealChange) {
    if (!HaveZoneinfo()) GTEST_SKIP() << "no /usr/share/zoneinfo";
    ScopedEnv env("TZ", "America/New_York");
    const time_t quirkStart = TimeOf(GmtValue(2000, 9, 30, 6));
    const time_t realChange = TimeOf(GmtValue(2000, 10, 29, 6));
    int inWindow = 0;
    for (time_t t : InstantsOf(2000)) {
        const Fields actual = FieldsOf(Date(static_cast<uint32_t>(t) + EPOCH_1970), 18);
        const bool quirk = t >= quirkStart && t < realChange;
        // Inside the window the library is already on standard time, an hour behind.
        EXPECT_EQ(LocalOf(quirk ? t - 3600 : t).fields, actual) << t;
        inWindow += quirk ? 1 : 0;
    }
    EXPECT_GT(inWindow, 25);
}

TEST(TzDatabaseCrossCheck, MachineZoneFollowsTheDatabaseFooter) {
    if (!HaveZoneinfo()) GTEST_SKIP() << "no /usr/share/zoneinfo";
    // Zone 0 keeps one rule for every year, the current one, as the machine's setting did;
    // 2000 has the same quirk as the table (see Year2000DiffersOnly...).
    struct Case {
        const char* tz;
        int firstYear, lastYear;
    } cases[] = {{"America/New_York", 2007, 2035},
                 {"Europe/London", 1996, 2035},
                 {"Asia/Kolkata", 1946, 2035}};
    for (const Case& c : cases) {
        ScopedEnv env("TZ", c.tz);
        setTimeZoneChangeFromQvn();
        Mismatches mismatches;
        int checked = 0;
        CrossCheck(ZONE_LOCAL, c.tz, c.firstYear, c.lastYear, true, mismatches, checked);
        EXPECT_EQ(0, mismatches.count) << c.tz << ":\n" << mismatches.first.str();
    }
}
