// The history the conversion benchmarks read: every minute of a 9:30 to 16:00 New York
// session on every weekday from Monday 2 January 2012, with prices and volumes from a fixed
// formula that bench/compare_pandas.py repeats.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include <qvnrt/Date.h>
#include <qvnrt/driver.h>

namespace qvnrt::bench {

constexpr uint8_t kNewYork = 18;

inline SESSION_INFO NineThirtyToFour() {
    SESSION_INFO rules;
    std::memset(&rules, 0, sizeof(rules));
    rules.size = 38;
    rules.bSession[0] = 1;
    rules.tradeDays[0] = 'D';
    rules.sStartTime[0] = 9 << 8 | 30;
    rules.sEndTime[0] = 16 << 8;
    rules.chTimeZone = kNewYork;
    rules.bIsFirstSessionSameDay = 1;
    rules.bSingleSessionStandard = 1;
    rules.dailyPeriod = 'D';
    return rules;
}

// The time_t of the first second of every session minute, oldest first, `count` of them.
inline std::vector<uint32_t> SessionMinutes(int count) {
    std::vector<uint32_t> minutes;
    minutes.reserve(static_cast<size_t>(count));
    uint32_t julian = Date::julianFromDate(1, 2, 2012);
    Date date;
    while (static_cast<int>(minutes.size()) < count) {
        uint32_t month, day, year;
        Date::dateFromJulian(julian++, month, day, year);
        if (Date(Date().makeNoonValue(month, day, year)).dayOfWeek(23) > 5) continue;
        const uint32_t open = date.makeValue(month, day, year, 9, 30, 0, kNewYork) - EPOCH_1970;
        for (uint32_t m = 0; m < 390 && static_cast<int>(minutes.size()) < count; ++m) {
            minutes.push_back(open + 60 * m);
        }
    }
    return minutes;
}

// i is the minute's place from the oldest.
inline float PriceAt(int i) { return 100.0f + static_cast<float>((i * 37) % 101) * 0.25f; }
inline int32_t VolumeAt(int i) { return 1 + i % 97; }

// One-minute bars, newest first as history comes.
inline std::vector<RTINTRADAY_PRICEREC> HistoryMinutes(int count) {
    const std::vector<uint32_t> minutes = SessionMinutes(count);
    std::vector<RTINTRADAY_PRICEREC> bars(minutes.size());
    for (int i = 0; i < count; ++i) {
        const float price = PriceAt(i);
        bars[static_cast<size_t>(count - 1 - i)] = {minutes[static_cast<size_t>(i)], VolumeAt(i),
                                                    price, price + 0.25f, price + 0.5f,
                                                    price - 0.25f};
    }
    return bars;
}

// Ticks, three a minute, newest first.
inline std::vector<TICKREC> HistoryTicks(int count) {
    const std::vector<uint32_t> minutes = SessionMinutes(count / 3 + 1);
    std::vector<TICKREC> ticks(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        TICKREC tick;
        tick.time = minutes[static_cast<size_t>(i / 3)] + 20u * static_cast<uint32_t>(i % 3);
        tick.volume = VolumeAt(i);
        tick.price = PriceAt(i);
        tick.flag = 0;
        ticks[static_cast<size_t>(count - 1 - i)] = tick;
    }
    return ticks;
}

}  // namespace qvnrt::bench
