// The simulation's exchange clocks agree with the library's calendar in either mode: every
// hour from 2003 to 2030 reads the same wall clock in zones 13, 18 and 22, with the modern
// calendar off (the zone table's rules) and on (today's rules), the switch coming from the
// registry store that both read.
#include <qvnrt/Date.h>

#include <string>
#include <tuple>

#include <gtest/gtest.h>

#include "CivilDate.h"
#include "ZoneClock.h"
#include "support/TempDir.h"

namespace {

class SimZoneClock : public ::testing::TestWithParam<std::tuple<bool, int>> {};

TEST_P(SimZoneClock, AgreesWithTheLibrary) {
    const auto [modern, zoneId] = GetParam();
    const auto zone = static_cast<uint8_t>(zoneId);
    qvnrt::test::IsolatedHome home;
    home.config().write("user.reg",
                        std::string("REGEDIT4\r\n\r\n[HKEY_CURRENT_USER\\Software\\Quorvane\\"
                                    "RealTime]\r\n\"Modern Calendar\"=dword:0000000") +
                            (modern ? "1" : "0") + "\r\n");
    setTimeZoneChangeFromQvn();  // the library reads the store again
    const qvnsim::ZoneClock clock(zone);
    int failures = 0;
    const int64_t first = qvnsim::DaysFromCivil(2003, 1, 1) * qvnsim::kSecondsPerDay;
    const int64_t last = qvnsim::DaysFromCivil(2030, 12, 31) * qvnsim::kSecondsPerDay;
    for (int64_t t = first; t <= last && failures < 5; t += 3600) {
        const int64_t local = clock.UtcToLocal(t);
        const qvnsim::CivilDate date = qvnsim::CivilFromDays(qvnsim::DayOf(local));
        const int hour = static_cast<int>((local - qvnsim::DayOf(local) * 86400) / 3600);
        uint32_t month, day, year, libraryHour, minute, second;
        Date(static_cast<uint32_t>(t) + EPOCH_1970)
            .getMDYHMS(month, day, year, libraryHour, minute, second, zone);
        if (int(year) != date.year || int(month) != date.month || int(day) != date.day ||
            int(libraryHour) != hour) {
            ++failures;
            ADD_FAILURE() << "zone " << zoneId << " at " << t << ": library " << year << "-"
                          << month << "-" << day << " " << libraryHour << "h, simulation "
                          << date.year << "-" << date.month << "-" << date.day << " " << hour
                          << "h";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Modes, SimZoneClock,
                         ::testing::Combine(::testing::Bool(), ::testing::Values(13, 18, 22)));

}  // namespace
