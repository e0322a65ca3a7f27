// Date: construction, values and Julian days, conversions between values and fields, the
// calendar's rules and the day names. The steps are in DateSteps.cpp.
#include <qvnrt/Date.h>

#include <cctype>
#include <cstring>
#include <ctime>

#include "calendar/DateStatics.h"
#include "calendar/ZoneConversion.h"

namespace {

using qvnrt::calendar::DateError;
using qvnrt::calendar::MomentCache;

constexpr uint32_t kSecondsPerDay = 86400;

// Looked up by prefix, and given back for day numbers 1 to 7.
constexpr const char* kDayNames[7] = {"MONDAY", "TUESDAY",  "WEDNESDAY", "THURSDAY",
                                      "FRIDAY", "SATURDAY", "SUNDAY"};
constexpr size_t kLongestDayName = 9;

// Day of the year of the first of each month, counted from 1, in a common year.
constexpr uint32_t kFirstOfMonth[12] = {1, 32, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335};
constexpr uint32_t kMonthLength[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};

uint32_t WeekdayOfJulian(uint32_t julian) {
    return ((julian + 1) % 7 + 6) % 7 + 1;
}

}  // namespace

// ---- Construction -----------------------------------------------------------------------

Date::Date(uint32_t value, uint16_t sequence) {
    ensureDateStatics();
    m_bValid = 1;
    m_value = julianToValue(value);
    m_timeZone = ZONE_GMT;
    m_sequence = sequence;
    clearCache();
}

Date::Date(const Date& other) {
    ensureDateStatics();
    *this = other;
}

Date& Date::operator=(const Date& other) = default;

void Date::clearCache() {
    m_cachedZone = 0;
    m_cachedYear = 0;
    m_cachedStdChange = 0;
    m_cachedDstChange = 0;
}

// ---- Values and Julian days -------------------------------------------------------------

uint32_t Date::julianToValue(uint32_t value) {
    if (value >= DATE_SECONDS_BASE || value == 0) return value;
    if (value < FIRST_JULIAN_DAY) return 1;
    return DATE_SECONDS_BASE + (value - FIRST_JULIAN_DAY) * kSecondsPerDay + kSecondsPerDay / 2;
}

uint32_t Date::julianFromDate(uint32_t month, uint32_t day, uint32_t year) {
    year = normaliseYear(year);
    if (month > 2) {
        month -= 3;
    } else {
        month += 9;
        year -= 1;
    }
    const uint32_t century = year / 100;
    const uint32_t yearOfCentury = year - 100 * century;
    return (146097u * century) / 4 + (1461u * yearOfCentury) / 4 + (153u * month + 2) / 5 + day +
           1721119u;
}

void Date::dateFromJulian(uint32_t julian, uint32_t& month, uint32_t& day, uint32_t& year) {
    uint32_t j = julian - 1721119u;
    uint32_t y = (4 * j - 1) / 146097;
    j = 4 * j - 1 - 146097 * y;
    uint32_t d = j / 4;
    j = (4 * d + 3) / 1461;
    d = 4 * d + 3 - 1461 * j;
    d = (d + 4) / 4;
    uint32_t m = (5 * d - 3) / 153;
    d = 5 * d - 3 - 153 * m;
    d = (d + 5) / 5;
    y = 100 * y + j;
    if (m < 10) {
        m += 3;
    } else {
        m -= 9;
        ++y;
    }
    month = m;
    day = d;
    year = y;
}

// ---- Making a value from fields ---------------------------------------------------------

void Date::setDate(uint32_t day, uint32_t month, uint32_t year) {
    m_bValid = 1;
    if (!validYear(year)) {
        qvnrt::calendar::raiseDateError(DateError::kInvalidYear);
        m_bValid = 0;
    } else if (!validDate(month, day, year)) {
        qvnrt::calendar::raiseDateError(DateError::kInvalidMonthDay);
        m_bValid = 0;
    }
    m_timeZone = ZONE_GMT;
    m_sequence = 0;
    m_value = m_bValid ? makeNoonValue(month, day, year) : 1;
}

void Date::setDateTime(uint32_t day, uint32_t month, uint32_t year, uint32_t hour, uint32_t minute,
                       uint32_t second, uint8_t zone) {
    zone = resolvedZone(zone);
    m_bValid = 1;
    m_value = makeValue(month, day, year, hour, minute, second, zone);
    m_sequence = 0;
    m_timeZone = zone;
}

uint32_t Date::makeValue(uint32_t month, uint32_t day, uint32_t year, uint32_t hour,
                         uint32_t minute, uint32_t second, uint8_t zone) const {
    MomentCache cache{m_cachedZone, m_cachedYear, m_cachedStdChange, m_cachedDstChange};
    return qvnrt::calendar::makeValue(month, day, year, hour, minute, second, resolvedZone(zone),
                                      &cache);
}

uint32_t Date::makeNoonValue(uint32_t month, uint32_t day, uint32_t year) const {
    return makeValue(month, day, year, 12, 0, 0, ZONE_GMT);
}

// ---- Taking a value apart ---------------------------------------------------------------

uint32_t Date::zonedValue(uint32_t value, uint8_t zone) const {
    MomentCache cache{m_cachedZone, m_cachedYear, m_cachedStdChange, m_cachedDstChange};
    return qvnrt::calendar::zonedValue(value, zone, &cache);
}

void Date::getMDYHMS(uint32_t& month, uint32_t& day, uint32_t& year, uint32_t& hour,
                     uint32_t& minute, uint32_t& second, uint8_t zone) const {
    if (m_value < DATE_SECONDS_BASE) {  // a Julian day: that day at noon, in no zone
        dateFromJulian(m_value, month, day, year);
        hour = 12;
        minute = 0;
        second = 0;
        return;
    }
    const uint32_t seconds = zonedValue(m_value, resolvedZone(zone)) - DATE_SECONDS_BASE;
    dateFromJulian(seconds / kSecondsPerDay + FIRST_JULIAN_DAY, month, day, year);
    const uint32_t ofDay = seconds % kSecondsPerDay;
    hour = ofDay / 3600;
    minute = ofDay % 3600 / 60;
    second = ofDay % 60;
}

void Date::getMDY(uint32_t& month, uint32_t& day, uint32_t& year, uint8_t zone) const {
    uint32_t hour, minute, second;
    getMDYHMS(month, day, year, hour, minute, second, zone);
}

uint32_t Date::getYear(uint8_t zone) const {
    uint32_t month, day, year;
    getMDY(month, day, year, zone);
    return year;
}

uint32_t Date::getMonth(uint8_t zone) const {
    uint32_t month, day, year;
    getMDY(month, day, year, zone);
    return month;
}

uint32_t Date::getDay(uint8_t zone) const {
    uint32_t month, day, year;
    getMDY(month, day, year, zone);
    return day;
}

uint32_t Date::getHour(uint8_t zone) const {
    uint32_t month, day, year, hour, minute, second;
    getMDYHMS(month, day, year, hour, minute, second, zone);
    return hour;
}

uint32_t Date::getMinute(uint8_t zone) const {
    uint32_t month, day, year, hour, minute, second;
    getMDYHMS(month, day, year, hour, minute, second, zone);
    return minute;
}

uint32_t Date::getSecond(uint8_t zone) const {
    uint32_t month, day, year, hour, minute, second;
    getMDYHMS(month, day, year, hour, minute, second, zone);
    return second;
}

uint32_t Date::dayOfWeek(uint8_t zone) const {
    if (m_value < DATE_SECONDS_BASE) return WeekdayOfJulian(m_value);
    const uint32_t seconds = zonedValue(m_value, resolvedZone(zone)) - DATE_SECONDS_BASE;
    return WeekdayOfJulian(seconds / kSecondsPerDay + FIRST_JULIAN_DAY);
}

uint32_t Date::dayOfYear(uint8_t zone) const {
    uint32_t month, day, year;
    getMDY(month, day, year, zone);
    if (month < 1 || month > 12) return 0;
    uint32_t ordinal = kFirstOfMonth[month - 1] - 1 + day - 1;
    if (month >= 3 && isLeapYear(year)) ++ordinal;
    return ordinal;
}

CVString& Date::format(const char* pattern, uint8_t zone) const {
    CVString& result = qvnrt::calendar::formatResult();
    uint32_t month, day, year, hour, minute, second;
    getMDYHMS(month, day, year, hour, minute, second, zone);
    struct tm parts;
    std::memset(&parts, 0, sizeof(parts));  // no daylight flag, no zone name
    parts.tm_sec = static_cast<int>(second);
    parts.tm_min = static_cast<int>(minute);
    parts.tm_hour = static_cast<int>(hour);
    parts.tm_mday = static_cast<int>(day);
    parts.tm_mon = static_cast<int>(month) - 1;
    parts.tm_year = static_cast<int>(year) - 1900;
    parts.tm_wday = static_cast<int>(dayOfWeek(zone) % 7);
    parts.tm_yday = static_cast<int>(dayOfYear(zone));
    char buffer[128];
    const size_t length = pattern ? std::strftime(buffer, sizeof(buffer), pattern, &parts) : 0;
    // Refilled in place, so that its storage is reused from call to call.
    result.m_str.Empty();
    if (length > 0) result.m_str += buffer;
    return result;
}

// ---- Order ------------------------------------------------------------------------------

bool Date::isAfter(const Date& other) const {
    return m_value > other.m_value || (m_value == other.m_value && m_sequence > other.m_sequence);
}

bool Date::isBefore(const Date& other) const {
    return m_value < other.m_value || (m_value == other.m_value && m_sequence < other.m_sequence);
}

// ---- Calendar rules ---------------------------------------------------------------------

uint32_t Date::normaliseYear(uint32_t year) {
    if (year < 10) return year + 2000;
    if (year < 100) return year + 1900;
    return year;
}

bool Date::validYear(uint32_t year) {
    return year <= 99 || (year >= 1900 && year <= 2035);
}

bool Date::validDate(uint32_t month, uint32_t day, uint32_t year) {
    return month >= 1 && month <= 12 && day >= 1 && day <= daysInMonth(month, year);
}

uint32_t Date::daysInMonth(uint32_t month, uint32_t year) {
    if (month < 1 || month > 12) return 0;
    if (month == 2 && isLeapYear(year)) return 29;
    return kMonthLength[month - 1];
}

bool Date::isLeapYear(uint32_t year) {
    year = normaliseYear(year);
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

// ---- Day names --------------------------------------------------------------------------

uint32_t Date::dayNumberFromName(const char* name) {
    ensureDateStatics();
    const size_t length = name ? ::strnlen(name, kLongestDayName + 1) : 0;
    if (length >= 3 && length <= kLongestDayName) {
        char upper[kLongestDayName + 1];
        for (size_t i = 0; i <= length; ++i) {
            upper[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(name[i])));
        }
        for (uint32_t day = 0; day < 7; ++day) {
            if (std::strncmp(upper, kDayNames[day], length) == 0) return day + 1;
        }
    }
    qvnrt::calendar::raiseDateError(DateError::kInvalidDayName);
    return 0;
}

const char* Date::dayNameFromNumber(uint32_t day) {
    return day >= 1 && day <= 7 ? kDayNames[day - 1] : nullptr;
}
