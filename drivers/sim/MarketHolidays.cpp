#include "MarketHolidays.h"

#include <algorithm>

#include "CivilDate.h"

namespace qvnsim {

namespace {

constexpr int kMonday = 1;
constexpr int kThursday = 4;
constexpr int kSaturday = 6;
constexpr int kSunday = 7;

bool IsWeekend(int64_t day) {
    return Weekday(day) >= kSaturday;
}

// A fixed-date holiday that falls on a weekend is kept on the nearest weekday.
int64_t ObservedNearest(int64_t day) {
    if (Weekday(day) == kSaturday) return day - 1;
    if (Weekday(day) == kSunday) return day + 1;
    return day;
}

// A fixed-date holiday that falls on a weekend moves to the following weekday.
int64_t ObservedNext(int64_t day) {
    while (IsWeekend(day)) ++day;
    return day;
}

void AddFull(std::vector<MarketHoliday>& out, int64_t day) {
    if (!IsWeekend(day)) out.push_back({day, false});
}

void AddEarly(std::vector<MarketHoliday>& out, int64_t day) {
    if (IsWeekend(day)) return;
    for (const MarketHoliday& h : out) {
        if (h.day == day) return;
    }
    out.push_back({day, true});
}

void UnitedStates(std::vector<MarketHoliday>& out, int year) {
    // New Year's Day on a Saturday is not made up on the Friday before.
    const int64_t newYear = DaysFromCivil(year, 1, 1);
    if (Weekday(newYear) != kSaturday) AddFull(out, ObservedNearest(newYear));
    AddFull(out, NthWeekdayOfMonth(year, 1, kMonday, 3));
    AddFull(out, NthWeekdayOfMonth(year, 2, kMonday, 3));
    AddFull(out, EasterSunday(year) - 2);
    AddFull(out, NthWeekdayOfMonth(year, 5, kMonday, 5));
    if (year >= 2022) AddFull(out, ObservedNearest(DaysFromCivil(year, 6, 19)));
    const int64_t independence = ObservedNearest(DaysFromCivil(year, 7, 4));
    AddFull(out, independence);
    AddFull(out, NthWeekdayOfMonth(year, 9, kMonday, 1));
    const int64_t thanksgiving = NthWeekdayOfMonth(year, 11, kThursday, 4);
    AddFull(out, thanksgiving);
    AddFull(out, ObservedNearest(DaysFromCivil(year, 12, 25)));
    if (independence == DaysFromCivil(year, 7, 4)) AddEarly(out, independence - 1);
    AddEarly(out, thanksgiving + 1);
    AddEarly(out, DaysFromCivil(year, 12, 24));
}

void London(std::vector<MarketHoliday>& out, int year) {
    AddFull(out, ObservedNext(DaysFromCivil(year, 1, 1)));
    AddFull(out, EasterSunday(year) - 2);
    AddFull(out, EasterSunday(year) + 1);
    AddFull(out, NthWeekdayOfMonth(year, 5, kMonday, 1));
    AddFull(out, NthWeekdayOfMonth(year, 5, kMonday, 5));
    AddFull(out, NthWeekdayOfMonth(year, 8, kMonday, 5));
    const int64_t christmas = ObservedNext(DaysFromCivil(year, 12, 25));
    AddFull(out, christmas);
    AddFull(out, ObservedNext(std::max(christmas + 1, DaysFromCivil(year, 12, 26))));
    AddEarly(out, DaysFromCivil(year, 12, 24));
    AddEarly(out, DaysFromCivil(year, 12, 31));
}

void Tokyo(std::vector<MarketHoliday>& out, int year) {
    for (int day = 1; day <= 3; ++day) AddFull(out, DaysFromCivil(year, 1, day));
    AddFull(out, NthWeekdayOfMonth(year, 1, kMonday, 2));
    AddFull(out, NthWeekdayOfMonth(year, 7, kMonday, 3));
    AddFull(out, NthWeekdayOfMonth(year, 9, kMonday, 3));
    AddFull(out, NthWeekdayOfMonth(year, 10, kMonday, 2));
    constexpr int kFixed[][2] = {{2, 11}, {2, 23}, {3, 20}, {4, 29}, {5, 3},  {5, 4},
                                 {5, 5},  {8, 11}, {9, 23}, {11, 3}, {11, 23}};
    for (const auto& md : kFixed) {
        const int64_t day = DaysFromCivil(year, md[0], md[1]);
        // A holiday on a Sunday gives the Monday off (kept simple: no chains of them).
        AddFull(out, Weekday(day) == kSunday ? day + 1 : day);
    }
    AddFull(out, DaysFromCivil(year, 12, 31));
}

void Currency(std::vector<MarketHoliday>& out, int year) {
    AddFull(out, DaysFromCivil(year, 1, 1));
    AddFull(out, DaysFromCivil(year, 12, 25));
}

}  // namespace

int64_t EasterSunday(int year) {
    // The anonymous Gregorian computus.
    const int a = year % 19;
    const int b = year / 100;
    const int c = year % 100;
    const int d = b / 4;
    const int e = b % 4;
    const int f = (b + 8) / 25;
    const int g = (b - f + 1) / 3;
    const int h = (19 * a + b - d - g + 15) % 30;
    const int i = c / 4;
    const int k = c % 4;
    const int l = (32 + 2 * e + 2 * i - h - k) % 7;
    const int m = (a + 11 * h + 22 * l) / 451;
    const int month = (h + l - 7 * m + 114) / 31;
    const int day = (h + l - 7 * m + 114) % 31 + 1;
    return DaysFromCivil(year, month, day);
}

std::vector<MarketHoliday> HolidaysOf(HolidayMarket market, int fromYear, int toYear) {
    std::vector<MarketHoliday> out;
    for (int year = fromYear; year <= toYear; ++year) {
        std::vector<MarketHoliday> yearly;
        switch (market) {
            case HolidayMarket::kUnitedStates:
                UnitedStates(yearly, year);
                break;
            case HolidayMarket::kLondon:
                London(yearly, year);
                break;
            case HolidayMarket::kTokyo:
                Tokyo(yearly, year);
                break;
            case HolidayMarket::kCurrency:
                Currency(yearly, year);
                break;
        }
        out.insert(out.end(), yearly.begin(), yearly.end());
    }
    std::sort(out.begin(), out.end(), [](const MarketHoliday& a, const MarketHoliday& b) {
        return a.day < b.day || (a.day == b.day && !a.earlyClose && b.earlyClose);
    });
    // One row a day: a full closing wins over a short day on the same date.
    out.erase(
        std::unique(out.begin(), out.end(),
                    [](const MarketHoliday& a, const MarketHoliday& b) { return a.day == b.day; }),
        out.end());
    return out;
}

}  // namespace qvnsim
