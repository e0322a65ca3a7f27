// The opt-in modern calendar: off, the zone table and the daylight reckoning of 2000 stay as
// they always were (no leap day, so the US zones go back to standard time on 30 September);
// on, the mapped rows follow the tz database and the leap years the Gregorian calendar. The
// switch comes from the registry store or from SetModernCalendar.
#include <qvnrt/Date.h>
#include <qvnrt/host.h>

#include <cstdlib>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace {

constexpr uint8_t kEastern = 18;

// Hours that zone 18 is behind GMT at noon on that date.
int HoursBehind(uint32_t month, uint32_t day, uint32_t year) {
    const Date maker;
    const uint32_t local = maker.makeValue(month, day, year, 12, 0, 0, kEastern);
    const uint32_t gmt = maker.makeValue(month, day, year, 12, 0, 0, ZONE_GMT);
    return static_cast<int>(local - gmt) / 3600;
}

struct Season {
    uint32_t month, day, year;
    int faithful, modern;  // hours behind GMT in each mode
};

class ModernCalendar : public ::testing::TestWithParam<Season> {
  protected:
    ~ModernCalendar() override { qvnrt::SetModernCalendar(false); }
};

TEST_P(ModernCalendar, DaylightReckoningFollowsTheMode) {
    const Season& season = GetParam();
    qvnrt::SetModernCalendar(false);
    EXPECT_EQ(season.faithful, HoursBehind(season.month, season.day, season.year));
    qvnrt::SetModernCalendar(true);
    EXPECT_EQ(season.modern, HoursBehind(season.month, season.day, season.year));
}

INSTANTIATE_TEST_SUITE_P(
    Dates, ModernCalendar,
    ::testing::Values(Season{10, 15, 2000, 5, 4},  // the kept reckoning ends 2000's summer early
                      Season{10, 30, 2000, 5, 5}, Season{7, 1, 2000, 4, 4},
                      Season{10, 15, 1999, 4, 4}, Season{10, 15, 2001, 4, 4},
                      // Since 2007 summer time starts on the second Sunday of March.
                      Season{3, 20, 2010, 5, 4}, Season{11, 3, 2012, 5, 4}));

TEST(ModernCalendarSwitch, WithoutTheTzDatabaseTheZoneRowsStay) {
    qvnrt::test::TempDir empty;
    ::setenv("TZDIR", empty.path().c_str(), 1);
    qvnrt::SetModernCalendar(true);
    EXPECT_EQ(5, HoursBehind(3, 20, 2010));
    EXPECT_EQ(4, HoursBehind(10, 15, 2000));  // the leap years are still reckoned anew
    qvnrt::SetModernCalendar(false);
    ::unsetenv("TZDIR");
}

TEST(ModernCalendarSwitch, RegistryValueIsReadAgainOnAZoneChange) {
    qvnrt::test::IsolatedHome home;
    for (const uint32_t value : {1u, 0u}) {
        home.config().write("user.reg",
                            "REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\r\n"
                            "\"Modern Calendar\"=dword:0000000" +
                                std::to_string(value) + "\r\n");
        setTimeZoneChangeFromQvn();
        EXPECT_EQ(value == 1 ? 4 : 5, HoursBehind(10, 15, 2000)) << "Modern Calendar " << value;
    }
}

}  // namespace
