// The simulated securities and exchanges, and the trading schedule of each.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "TradingCalendar.h"

namespace qvnsim {

// Asset types as the simulation reports them in field 3. The display-style slots of the
// library read 1, 2, 5, 7, 8 and 9 this way.
enum AssetType : int {
    kStock = 1,
    kIndex = 2,
    kBond = 5,
    kFuture = 7,
    kCurrency = 8,
    kOption = 9,
};

// Bits of the universe setting.
enum AssetClassBit : unsigned {
    kStocksBit = 1u << 0,
    kIndicesBit = 1u << 1,
    kBondsBit = 1u << 2,
    kFuturesBit = 1u << 3,
    kCurrenciesBit = 1u << 4,
    kOptionsBit = 1u << 5,
    kAllClasses = (1u << 6) - 1,
};
unsigned ClassBitOf(int assetType);

enum class Schedule {
    kUsEquity,          // 9:30 to 16:00, US Eastern
    kLondon,            // 8:00 to 16:30, London
    kTokyo,             // 9:00 to 11:30 and 12:30 to 15:00, Tokyo
    kUsBonds,           // 8:00 to 17:00, US Eastern
    kFuturesOvernight,  // 17:00 to 16:00 the next day, US Central
    kFuturesGrain,      // 19:00 to 7:45 the next day, then 8:30 to 13:20, US Central
    kCurrency,          // round the clock from Sunday 17:00 to Friday 17:00, US Eastern
    kCount,
};

struct Exchange {
    int number;
    const char* shortName;
    const char* longName;
    const char* suffix;
    uint8_t zone;
    int openHour, openMinute, closeHour, closeMinute;
    const char* currency;
    int delayMinutes;
};

struct Security {
    std::string symbol;
    std::string name;
    int assetType = kStock;
    int exchange = 1;
    Schedule schedule = Schedule::kUsEquity;
    double basePrice = 0;  // at the anchor day
    double dailyVol = 0;   // standard deviation of a day's log change
    double tickSize = 0.01;
    int displayStyle = 3;  // the library's display style codes
    int decimals = 2;
    int volumeUnit = 100;  // 0: the security does not trade volume (an index)
    int maxTicksPerMinute = 4;
    int quietPercent = 5;  // chance that a minute passes without a trade
    double eps = 0;
    double dividend = 0;
    int currency = 1;  // 1 USD, 2 GBP, 3 JPY
    int multiplier = 1;
    // Derivatives.
    int underlying = -1;  // index of the underlying security, for options
    std::string underlyingSymbol;
    std::string contractText;
    char optionKind = 0;  // 'C' or 'P'
    double strike = 0;
    double impliedVol = 0;
    int64_t expiryDay = 0;  // days since 1970, 0 for none
    // Names the security's random streams, so that a smaller universe keeps the prices.
    uint64_t key = 0;
    bool visible = true;
};

class Universe {
public:
    // The anchor day fixes the option expiries and the years of the holiday tables.
    Universe(int64_t anchorDay, unsigned visibleClasses);

    const std::vector<Security>& Securities() const { return m_securities; }
    const std::vector<Exchange>& Exchanges() const { return m_exchanges; }
    // A visible security, by symbol, without regard to case; null when unknown.
    const Security* Find(std::string_view symbol) const;
    int IndexOf(const Security& security) const;
    const Exchange* FindExchange(long number) const;
    const Exchange& ExchangeOf(const Security& security) const;
    const TradingCalendar& CalendarOf(const Security& security) const;
    int DelaySeconds(const Security& security) const;

private:
    void AddOptions(const std::string& underlying, double strikeStep, double impliedVol,
                    int64_t anchorDay);

    std::vector<Exchange> m_exchanges;
    std::vector<Security> m_securities;
    std::array<std::unique_ptr<TradingCalendar>, static_cast<size_t>(Schedule::kCount)> m_calendars;
};

}  // namespace qvnsim
