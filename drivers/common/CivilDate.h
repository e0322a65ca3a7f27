// Calendar arithmetic on day numbers (days since 1 January 1970), proleptic Gregorian.
#pragma once

#include <cstdint>
#include <ctime>

namespace QVN_DRIVER_NAMESPACE {

constexpr int64_t kSecondsPerDay = 86400;

struct CivilDate {
    int year;
    int month;  // 1 to 12
    int day;    // 1 to 31
};

constexpr int64_t DaysFromCivil(int year, int month, int day) {
    year -= month <= 2 ? 1 : 0;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

constexpr CivilDate CivilFromDays(int64_t days) {
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t mp = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * mp + 2) / 5 + 1);
    const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    const int year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
    return {year, month, day};
}

// 1 for Monday to 7 for Sunday; day 0 was a Thursday.
constexpr int Weekday(int64_t days) {
    const int64_t monday0 = (days + 3) % 7;
    return static_cast<int>((monday0 < 0 ? monday0 + 7 : monday0) + 1);
}

constexpr int64_t FloorDiv(int64_t value, int64_t divisor) {
    const int64_t quotient = value / divisor;
    return (value % divisor != 0 && (value < 0) != (divisor < 0)) ? quotient - 1 : quotient;
}

constexpr int64_t DayOf(int64_t seconds) {
    return FloorDiv(seconds, kSecondsPerDay);
}

constexpr int DaysInMonth(int year, int month) {
    constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : kDays[month - 1];
}

// The nth (1 to 4) weekday of a month, or its last one for n = 5.
constexpr int64_t NthWeekdayOfMonth(int year, int month, int weekday, int n) {
    if (n >= 5) {
        const int64_t last = DaysFromCivil(year, month, DaysInMonth(year, month));
        return last - ((Weekday(last) - weekday + 7) % 7);
    }
    const int64_t first = DaysFromCivil(year, month, 1);
    return first + ((weekday - Weekday(first) + 7) % 7) + 7 * (n - 1);
}

// Date values, as the library counts instants: seconds since 1900 plus 3000000.
constexpr uint32_t kEpoch1970 = 2211988800u;
constexpr uint32_t ToDateValue(int64_t unixSeconds) {
    return unixSeconds <= 0 ? 0u : static_cast<uint32_t>(unixSeconds + kEpoch1970);
}
constexpr int64_t FromDateValue(uint32_t date) {
    return date < kEpoch1970 ? 0 : static_cast<int64_t>(date) - kEpoch1970;
}

}  // namespace QVN_DRIVER_NAMESPACE
