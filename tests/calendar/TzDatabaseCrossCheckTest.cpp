// The calendar's zones against the system's time zone database: instants taken apart by the
// library must read as the C library reads them with TZ set to the matching region, and their
// wall-clock fields must make the same instant again. The zone table is checked over the years
// its rules are the region's, the modern calendar's rows from 1970 to 2035, and zone 0 over
// the years of the machine's current rule. Expected values come from /usr/share/zoneinfo.
#include <qvnrt/Date.h>
#include <qvnrt/host.h>

#include <filesystem>
#include <ostream>
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
using qvnrt::test::ToString;

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

struct ZoneCase {
    const char* name;
    uint8_t zone;
    const char* tz;
    int firstYear, lastYear;
    bool modern;
};

void PrintTo(const ZoneCase& c, std::ostream* os) {
    *os << c.name;
}

// Years passed over, by their GMT and their local year, since conversions take a year's rules
// by either. The kept rules read 2000 as a common year (see Year2000DiffersOnly... below); a
// modern row keeps the table's rules in a year whose changes it cannot state (a new standard
// offset, or two hours of summer time).
bool Skipped(const ZoneCase& c, int year) {
    if (!c.modern) return year == 2000;
    return (c.zone == 2 && year == 1983) || (c.zone == 22 && year == 1971) ||
           (c.zone == 32 && year == 1988);
}

class ZoneAgainstDatabase : public ::testing::TestWithParam<ZoneCase> {
  protected:
    void SetUp() override {
        if (!std::filesystem::exists("/usr/share/zoneinfo/America/New_York")) {
            GTEST_SKIP() << "no /usr/share/zoneinfo";
        }
        qvnrt::SetModernCalendar(GetParam().modern);
    }
    void TearDown() override { qvnrt::SetModernCalendar(false); }
};

TEST_P(ZoneAgainstDatabase, FieldsAndMadeValuesAgree) {
    const ZoneCase& c = GetParam();
    ScopedEnv env("TZ", c.tz);
    if (c.zone == ZONE_LOCAL) setTimeZoneChangeFromQvn();
    Date reused;
    int checked = 0;
    int failures = 0;
    auto fail = [&](time_t t, const std::string& what) {
        if (++failures <= 12) ADD_FAILURE() << c.tz << " at " << t << ": " << what;
    };
    for (int year = c.firstYear; year <= c.lastYear && failures < 12; ++year) {
        if (Skipped(c, year)) continue;
        for (time_t t : InstantsOf(year)) {
            const Local expected = LocalOf(t);
            const Fields& f = expected.fields;
            if (Skipped(c, static_cast<int>(f.year))) continue;
            const uint32_t value = static_cast<uint32_t>(t) + EPOCH_1970;
            reused.m_value = value;
            const Fields actual = FieldsOf(reused, c.zone);
            ++checked;
            if (!(actual == f)) {
                fail(t, "library " + ToString(actual) + ", database " + ToString(f));
                continue;
            }
            // A wall-clock time that the change back repeats is made in daylight time, the
            // first of the two instants that show it.
            const uint32_t first = LocalOf(t - 3600).fields == f ? value - 3600 : value;
            const uint32_t made =
                reused.makeValue(f.month, f.day, f.year, f.hour, f.minute, f.second, c.zone);
            if (made != first) {
                fail(t, "making " + ToString(f) + " gave " + std::to_string(made) +
                            ", database " + std::to_string(first));
            }
        }
    }
    EXPECT_EQ(0, failures);
    EXPECT_GT(checked, 300 * (c.lastYear - c.firstYear));
}

INSTANTIATE_TEST_SUITE_P(
    Zones, ZoneAgainstDatabase,
    ::testing::Values(
        // The table's own US rows, over the years their rules were the law.
        ZoneCase{"Table18", 18, "America/New_York", 1967, 2006, false},
        ZoneCase{"Table13", 13, "America/Chicago", 1987, 2006, false},
        ZoneCase{"Table30", 30, "America/Denver", 1987, 2006, false},
        ZoneCase{"Table33", 33, "America/Los_Angeles", 1987, 2006, false},
        // Zone 0 keeps one rule for every year, the current one, as the machine's setting did.
        ZoneCase{"MachineNewYork", ZONE_LOCAL, "America/New_York", 2007, 2035, false},
        ZoneCase{"MachineLondon", ZONE_LOCAL, "Europe/London", 1996, 2035, false},
        ZoneCase{"MachineKolkata", ZONE_LOCAL, "Asia/Kolkata", 1946, 2035, false},
        // The modern calendar's rows follow the database.
        ZoneCase{"Modern2", 2, "America/Anchorage", 1970, 2035, true},
        ZoneCase{"Modern4", 4, "America/Halifax", 1970, 2035, true},
        ZoneCase{"Modern13", 13, "America/Chicago", 1970, 2035, true},
        ZoneCase{"Modern18", 18, "America/New_York", 1970, 2035, true},
        ZoneCase{"Modern22", 22, "Europe/London", 1970, 2035, true},
        ZoneCase{"Modern30", 30, "America/Denver", 1970, 2035, true},
        ZoneCase{"Modern32", 32, "America/St_Johns", 1970, 2035, true},
        ZoneCase{"Modern33", 33, "America/Los_Angeles", 1970, 2035, true}),
    [](const ::testing::TestParamInfo<ZoneCase>& info) { return std::string(info.param.name); });

TEST(TzDatabaseCrossCheck, Year2000DiffersOnlyBetweenSeptember30AndTheRealChange) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/America/New_York")) {
        GTEST_SKIP() << "no /usr/share/zoneinfo";
    }
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

}  // namespace
