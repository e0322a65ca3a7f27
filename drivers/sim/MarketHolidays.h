// Holiday calendars of the simulated markets, worked out by rule for a range of years.
#pragma once

#include <cstdint>
#include <vector>

namespace qvnsim {

enum class HolidayMarket { kUnitedStates, kLondon, kTokyo, kCurrency };

struct MarketHoliday {
    int64_t day;      // the trading day's date, days since 1970
    bool earlyClose;  // false: no trading at all that day
};

// Sorted by day. Early closes are the market's short days (the eve of a holiday); when and
// how early a schedule closes on them is the schedule's business.
std::vector<MarketHoliday> HolidaysOf(HolidayMarket market, int fromYear, int toYear);

int64_t EasterSunday(int year);

}  // namespace qvnsim
