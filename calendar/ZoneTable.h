// The zone table: a standard and a daylight rule for every zone id, the history rows of the
// four zones whose rules changed over the years, and zone 0 read from the machine.
#pragma once

#include <cstdint>

namespace qvnrt::platform {
struct TimeZoneInformation;
}

namespace qvnrt::calendar {

// Picks one day of a year. month 0: the zone has no changes. day 0: `week` is a plain day
// of the month (month 2, week 23 is 23 February). day 1 to 7, Monday to Sunday: `week` 1 to
// 4 is that weekday's ordinal in the month, 5 its last occurrence.
struct ChangeRule {
    uint8_t month;
    uint8_t week;
    uint8_t day;

    bool operator==(const ChangeRule&) const = default;
};

// One season of a zone: GMT = wall clock + bias. The rule takes effect `change` seconds
// after 00:00 GMT of the day that `rule` picks.
struct ZoneRule {
    int32_t bias;
    int32_t change;
    ChangeRule rule;

    bool operator==(const ZoneRule&) const = default;
};

// The rule in force in that (normalised) year. Zone 0 is the machine's, loaded on first
// use; ids above 50 are row 18. Zone 23 has all-zero rules, but conversions never ask.
ZoneRule standardRule(uint8_t zone, uint32_t year);
ZoneRule daylightRule(uint8_t zone, uint32_t year);

// Reads the machine's zone through the platform, unless it was read since the last
// clearLocalZone().
void loadLocalZone();
void clearLocalZone();

// Windows' fields, biases in minutes, to the two rules. Each change is stated in the wall
// clock of the rule that it ends, which is why the two change formulas differ.
void rulesFromTimeZoneInformation(const platform::TimeZoneInformation& info, ZoneRule& standard,
                                  ZoneRule& daylight);

}  // namespace qvnrt::calendar
