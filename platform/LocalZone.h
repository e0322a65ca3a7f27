// The machine's time zone, in the form the calendar builds its zone-0 rules from.
//
// The calendar was written against Windows' TIME_ZONE_INFORMATION: a bias in minutes
// (GMT = local time + bias), an extra bias for each season, and for each season the date
// of the change into it, as month, week of the month (1 to 4, 5 for the last), weekday
// (0 Sunday) and wall-clock time. Linux states the same thing as a POSIX TZ rule such as
// "EST5EDT,M3.2.0,M11.1.0", found in $TZ or at the end of a TZif file (version 2 or later);
// this file turns the rule into those fields.
//
// Where the zone comes from, first found:
//   1. $TZ set and empty: GMT, as the C library does.
//   2. $TZ set: a TZif file of that name (a leading ':' is dropped; a relative name lies in
//      $TZDIR, else /usr/share/zoneinfo), else the value itself as a POSIX rule.
//   3. The TZif file /etc/localtime (replaceable with SetLocalZoneFile, for tests).
// Anything that cannot be read or parsed gives GMT without daylight time, as the C
// library falls back to UTC.
//
// POSIX forms that the Windows fields cannot state exactly:
//   - "Jn" (day 1 to 365, February 29 never counted) is a fixed month and day every year;
//     it becomes an absolute date (wYear nonzero, wDay the day of the month). Exact.
//   - "n" (day 0 to 365, February 29 counted) becomes the absolute date of day n + 1 of a
//     common year: exact except after February in leap years, where it is one day late.
//   - A daylight name with no rules takes the C library's default, "M3.2.0,M11.1.0".
//   - Offsets and times are kept to the minute; seconds of an offset are dropped. Change
//     times outside 0:00 to 23:59 (RFC 8536 allows -167 to 167 hours) are kept as signed
//     hours, which the calendar's formulas add up like any other.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

namespace qvnrt::platform {

// SYSTEMTIME as TIME_ZONE_INFORMATION used it. wMonth 0: no change. wYear nonzero: an
// absolute date, wDay being the day of the month; otherwise wDay is the week (5 = last)
// and wDayOfWeek the weekday, 0 for Sunday. Signed, so that times outside one day fit.
struct ZoneChangeDate {
    int wYear = 0;
    int wMonth = 0;
    int wDayOfWeek = 0;
    int wDay = 0;
    int wHour = 0;
    int wMinute = 0;
    int wSecond = 0;

    bool operator==(const ZoneChangeDate&) const = default;
};

// The fields of TIME_ZONE_INFORMATION that the calendar reads. Biases in minutes; GMT =
// local standard time + Bias + StandardBias = local daylight time + Bias + DaylightBias.
struct TimeZoneInformation {
    int Bias = 0;
    int StandardBias = 0;
    int DaylightBias = 0;
    ZoneChangeDate StandardDate;  // the change to standard time (the end of daylight time)
    ZoneChangeDate DaylightDate;  // the change to daylight time
};

// The machine's zone, from the sources above; GMT when none can be read.
TimeZoneInformation GetTimeZoneInformation();

// A POSIX TZ rule ("EST5EDT,M3.2.0,M11.1.0", "<+0530>-5:30", "CET-1CEST,M3.5.0,M10.5.0/3").
// False, with `info` untouched, when the text is not a complete rule.
bool TimeZoneFromPosixRule(const std::string& rule, TimeZoneInformation& info);

// The rule at the end of a TZif file of version 2 or later. False, with `info` untouched,
// when the file cannot be read, is of version 1, is damaged, or ends without a rule.
bool TimeZoneFromTzifFile(const std::string& path, TimeZoneInformation& info);

// One change of a zone's clock: at `at` (seconds since 1970, GMT) the offset east of GMT
// goes from `offsetBefore` to `offsetAfter` seconds, into daylight time or out of it.
struct ZoneTransition {
    int64_t at;
    int32_t offsetBefore;
    int32_t offsetAfter;
    bool daylightAfter;
};

// A zone of the tz database by name ("America/New_York", looked up in $TZDIR, else
// /usr/share/zoneinfo): its transitions in time order and the POSIX rule that follows the
// last of them. False when the file is missing, of version 1, or damaged.
bool ReadZoneHistory(const std::string& name, std::vector<ZoneTransition>& transitions,
                     TimeZoneInformation& rule);

// The TZif file read when $TZ is not set; "/etc/localtime" unless replaced. An empty path
// restores the default. Returns the previous path.
std::string SetLocalZoneFile(const std::string& path);

// Makes the C library read the zone again (tzset), after the host said that it changed.
void ReloadLocalZone();

// Hour, minute and second of `when` in the machine's local time, through the C library.
void LocalTimeOfDay(time_t when, int& hour, int& minute, int& second);

}  // namespace qvnrt::platform
