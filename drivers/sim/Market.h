// The simulated market: every trade of every security, as a pure function of the seed.
//
// Daily closes follow a random walk over calendar days from the anchor day, where each
// security starts at its base price. Inside a trading day the minute prices run as a
// Brownian bridge from the day's open to its close, and each minute holds a few trades.
// Options are priced from their underlying's minutes. Everything is recomputed on demand
// from counter-based random numbers, so history, live data and quotes always agree, and
// no answer depends on what was asked before.
//
// Trades exist from 60 days before the anchor day on. Older days have daily bars only,
// drawn from the walk, which keeps years of end-of-day history cheap.
#pragma once

#include <cstdint>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "Universe.h"

namespace qvnsim {

struct Trade {
    int64_t time;  // UTC seconds
    float price;
    int32_t volume;
};

struct DayTape {
    int64_t day = 0;
    float openReference = 0;    // the price the day starts from
    std::vector<Trade> trades;  // oldest first
};

struct DailyBar {
    int64_t day = 0;
    bool traded = false;
    float open = 0, high = 0, low = 0, close = 0;
    int64_t volume = 0;
    int32_t trades = 0;
    int64_t lastTime = 0;
    double turnover = 0;  // sum of price x volume
};

// One security's market at one instant.
struct Snapshot {
    int64_t time = 0;
    int64_t day = 0;   // the trading day
    int session = -1;  // the session that holds `time`, -1 while closed
    float last = 0;
    int32_t lastSize = 0;
    int64_t lastTime = 0;
    int tickDirection = 0;  // +1 up, -1 down, 0 unchanged
    float open = 0, high = 0, low = 0;
    int64_t volume = 0;
    int32_t trades = 0;
    float vwap = 0;
    float prevClose = 0;
    int64_t prevVolume = 0;
    float yearHigh = 0, yearLow = 0;
    float bid = 0, ask = 0;
    int bidSize = 0, askSize = 0;
    int64_t quoteTime = 0;
    int32_t openInterest = 0;
};

class Market {
public:
    static constexpr int64_t kIntradayDays = 60;

    Market(const Universe& universe, uint64_t seed, int64_t anchorDay);

    const Universe& universe() const { return m_universe; }

    std::shared_ptr<const DayTape> Tape(const Security& security, int64_t day);
    // The whole trading day; a day that does not trade has `traded` false.
    DailyBar Daily(const Security& security, int64_t day);
    // The trading day as it stood at `until`.
    DailyBar DailyUntil(const Security& security, int64_t day, int64_t until);
    Snapshot At(const Security& security, int64_t when);
    // Trades with from <= time <= to, oldest first.
    std::vector<Trade> Trades(const Security& security, int64_t from, int64_t to);
    // Trading days begun by `until`, newest first, none before `fromDay`, at most `limit`.
    std::vector<int64_t> TradingDays(const Security& security, int64_t fromDay, int64_t until,
                                     size_t limit);
    float RoundToTick(const Security& security, double price) const;

private:
    struct Walk {
        std::vector<double> forward;   // days anchor, anchor + 1, ...
        std::vector<double> backward;  // days anchor - 1, anchor - 2, ...
    };

    bool HasTrades(int64_t day) const { return day >= m_anchorDay - kIntradayDays; }
    double LogClose(const Security& security, int64_t day);
    double OpenLog(const Security& security, int64_t day);
    DailyBar DailyFromWalk(const Security& security, int64_t day);
    double WalkStep(const Security& security, int64_t day) const;
    std::vector<double> MinutePath(const Security& security, int64_t day,
                                   const std::vector<int64_t>& minutes, double& openLog);
    DayTape BuildTape(const Security& security, int64_t day);
    double OptionPrice(const Security& option, double underlying, int64_t when) const;
    void YearRange(const Security& security, int64_t day, float& high, float& low);

    const Universe& m_universe;
    uint64_t m_seed;
    int64_t m_anchorDay;
    std::unordered_map<uint64_t, Walk> m_walks;
    // Tapes, least recently used first.
    std::list<std::pair<std::pair<int, int64_t>, std::shared_ptr<const DayTape>>> m_tapes;
    std::map<std::pair<int, int64_t>, DailyBar> m_dailies;
    std::map<std::pair<int, int64_t>, std::pair<float, float>> m_yearRanges;
    std::unordered_map<int, Snapshot> m_snapshots;
};

}  // namespace qvnsim
