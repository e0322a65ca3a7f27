#include "calendar/ZoneConversion.h"

#include "calendar/DateStatics.h"

#include <algorithm>

#include <qvnrt/Date.h>

namespace qvnrt::calendar {
namespace {

constexpr uint32_t kSecondsPerDay = 86400;
constexpr uint32_t kDaysBeforeMonth[13] = {0,   0,   31,  59,  90,  120, 151,
                                           181, 212, 243, 273, 304, 334};
constexpr uint32_t kCommonMonthLength[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

// Without leap years: the daylight rules treat February as 28 days.
uint32_t CommonMonthLength(uint32_t month) {
    return month <= 12 ? kCommonMonthLength[month] : 0;
}

// Signed, so that "the month before the standard month" of January is 0 and matches nothing.
int Season(int64_t month, int64_t day, int64_t standardMonth, int64_t daylightMonth,
           int64_t monthLength) {
    const int64_t s = standardMonth;
    const int64_t d = daylightMonth;
    const int64_t last = monthLength;
    if (s == 0) return 0;
    if (s <= d) {  // daylight time spans the turn of the year
        if (month < s - 1 || month > d + 1) return 1;
        if (month == s - 1 && day < last) return 1;
        if (month == d + 1 && day != 1) return 1;
        if (month > s + 1 && month < d - 1) return 0;
        if (month == s + 1 && day != 1) return 0;
        if (month != d - 1 || day >= last) return -1;
        return 0;
    }
    if (month < d - 1 || month > s + 1) return 0;
    if (month == d - 1 && day < last) return 0;
    if (month == s + 1 && day != 1) return 0;
    if (month > d + 1 && month < s - 1) return 1;
    if (month == d + 1 && day != 1) return 1;
    if (month != s - 1 || day >= last) return -1;
    return 1;
}

uint32_t Bias(const ZoneRule& rule) {
    return static_cast<uint32_t>(rule.bias);
}

// Which change a day near one is near, its moment, and whether that change leads into
// standard time. The flag is "the standard month is later than the daylight month" near
// the change to standard time, and its inverse near the change to daylight time; it is
// exact for zones whose daylight time lies inside one year. Kept as it is for the others
// (the southern rows), where it reads the season the wrong way round near a change.
struct NearChange {
    uint32_t moment;
    bool standardAfter;
};

NearChange NearChangeOf(uint32_t month, uint32_t year, uint8_t zone, const ZoneRule& standard,
                        const ZoneRule& daylight, MomentCache* cache) {
    uint32_t standardChange = 0;
    uint32_t daylightChange = 0;
    uint32_t* standardSlot = &standardChange;
    uint32_t* daylightSlot = &daylightChange;
    if (cache) {
        if (cache->zone != zone || cache->year != year) {
            cache->standardChange = 0;
            cache->daylightChange = 0;
        }
        standardSlot = &cache->standardChange;
        daylightSlot = &cache->daylightChange;
        cache->zone = zone;
        cache->year = year;
    }
    const bool standardLater = standard.rule.month > daylight.rule.month;
    // Compared as a byte, as the months were: only S - 1, S and S + 1 are near S.
    if (static_cast<uint8_t>(month - standard.rule.month + 1) > 2) {
        if (*daylightSlot == 0) *daylightSlot = changeMoment(year, daylight);
        return {*daylightSlot, !standardLater};
    }
    if (*standardSlot == 0) *standardSlot = changeMoment(year, standard);
    return {*standardSlot, standardLater};
}

}  // namespace

int seasonOf(uint32_t month, uint32_t day, uint32_t year, uint8_t zone) {
    return Season(month, day, standardRule(zone, year).rule.month,
                  daylightRule(zone, year).rule.month, CommonMonthLength(month));
}

uint32_t changeMoment(uint32_t year, const ZoneRule& zoneRule) {
    const ChangeRule& rule = zoneRule.rule;
    const uint32_t month = rule.month <= 12 ? rule.month : 0;
    const uint32_t years = year - 1900;
    uint32_t days = kDaysBeforeMonth[month] + years * 365 + (std::max(years, 1u) - 1) / 4;
    // Kept: tested on the count of years, not the calendar year (see the header), unless the
    // modern calendar is on.
    const bool leap = modernCalendar() ? Date::isLeapYear(year)
                                       : (years % 4 == 0 && years % 100 != 0) || years % 400 == 0;
    if (month >= 3 && leap) ++days;
    if (rule.day == 0) {
        days += static_cast<uint32_t>(rule.week) - 1;  // a plain day of the month
    } else {
        const uint32_t julian = days + FIRST_JULIAN_DAY;
        const uint32_t weekday = ((julian + 1) % 7 + 6) % 7 + 1;
        uint32_t readMonth, readDay, readYear;
        Date::dateFromJulian(julian, readMonth, readDay, readYear);
        const uint32_t toWeekday = (rule.day + 7 - weekday) % 7;
        if (rule.week >= 1 && rule.week <= 4) {
            days += toWeekday + (rule.week - 1) * 7u;
        } else if (rule.week == 5) {
            // The last such weekday within the month read back; when none fits (the first
            // of the month read back as the last of the month before) the day stays.
            const uint32_t monthLength = CommonMonthLength(readMonth);
            uint32_t dayOfMonth = readDay + toWeekday;
            if (dayOfMonth <= monthLength) {
                while (dayOfMonth + 7 <= monthLength) dayOfMonth += 7;
                days += dayOfMonth - readDay;
            }
        }
    }
    return days * kSecondsPerDay + static_cast<uint32_t>(zoneRule.change) + DATE_SECONDS_BASE;
}

uint32_t makeValue(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                   uint32_t second, uint8_t zone, MomentCache* cache) {
    year = Date::normaliseYear(year);
    const uint32_t julian = Date::julianFromDate(month, day, year);
    if (julian < FIRST_JULIAN_DAY) return 1;
    const uint32_t wall = DATE_SECONDS_BASE + (julian - FIRST_JULIAN_DAY) * kSecondsPerDay +
                          hour * 3600u + minute * 60u + second;
    if (zone == ZONE_GMT) return wall;
    const ZoneRule standard = standardRule(zone, year);
    const ZoneRule daylight = daylightRule(zone, year);
    switch (
        Season(month, day, standard.rule.month, daylight.rule.month, CommonMonthLength(month))) {
        case 0:
            return wall + Bias(standard);
        case 1:
            return wall + Bias(daylight);
        default:
            break;
    }
    const NearChange near = NearChangeOf(month, year, zone, standard, daylight, cache);
    const uint32_t smallerBias = Bias(standard.bias < daylight.bias ? standard : daylight);
    const bool before = wall + smallerBias < near.moment;
    return wall + Bias(before == near.standardAfter ? daylight : standard);
}

uint32_t zonedValue(uint32_t value, uint8_t zone, MomentCache* cache) {
    if (zone == ZONE_GMT) return value;
    uint32_t month, day, year;
    Date::dateFromJulian((value - DATE_SECONDS_BASE) / kSecondsPerDay + FIRST_JULIAN_DAY, month,
                         day, year);
    const ZoneRule standard = standardRule(zone, year);
    const ZoneRule daylight = daylightRule(zone, year);
    switch (
        Season(month, day, standard.rule.month, daylight.rule.month, CommonMonthLength(month))) {
        case 0:
            return value - Bias(standard);
        case 1:
            return value - Bias(daylight);
        default:
            break;
    }
    const NearChange near = NearChangeOf(month, year, zone, standard, daylight, cache);
    const bool before = value < near.moment;
    return value - Bias(before == near.standardAfter ? daylight : standard);
}

}  // namespace qvnrt::calendar
