// One trading schedule: its session rules and holidays in the library's wire form, and the
// same rules turned into instants, so that the simulated market trades exactly when the
// library's calendar says it does.
#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include <qvnrt/driver.h>

#include "ZoneClock.h"

namespace qvnsim {

// Hour in the high byte, minute in the low byte, as the session record holds times.
constexpr int16_t HourMinute(int hour, int minute) {
    return static_cast<int16_t>(hour << 8 | minute);
}

// Day masks of the library: "D" (0x44) is Monday to Friday.
constexpr uint8_t kMondayToFriday = 0x44;
bool DayMaskAllows(uint8_t mask, int weekday);

struct SessionRule {
    int16_t start;
    int16_t end;  // the session ends before this minute; equal to start: 24 hours
    uint8_t days;
};

struct Span {
    int64_t start;  // UTC seconds, first second of the session
    int64_t end;    // first second after it
    int session;
};

class TradingCalendar {
public:
    TradingCalendar(uint8_t zone, bool firstSessionSameDay, std::vector<SessionRule> sessions,
                    std::vector<HOLIDAY_ROW> holidays);

    const SESSION_INFO& Rules() const { return m_rules; }
    // A whole HOLIDAYS_INFO record: 4 + 10 x rows bytes.
    const std::vector<uint8_t>& HolidayRecord() const { return m_holidayRecord; }
    const ZoneClock& Zone() const { return m_zone; }
    int SessionsPerDay() const;

    // The sessions of one trading day (days since 1970), oldest first; empty when the day
    // does not trade. A session that begins on the evening before belongs to the next day.
    std::vector<Span> Sessions(int64_t tradingDay) const;

    // The latest trading day whose first session has begun by `utc`.
    std::optional<int64_t> CurrentDay(int64_t utc) const;
    std::optional<int64_t> PreviousTradingDay(int64_t tradingDay) const;
    // The index of the session that holds `utc`, or -1.
    int SessionAt(int64_t utc) const;

private:
    int Crossover() const;
    const HOLIDAY_ROW* FindHoliday(int64_t day, int session) const;
    std::vector<Span> ComputeSessions(int64_t tradingDay) const;

    ZoneClock m_zone;
    SESSION_INFO m_rules;
    std::vector<HOLIDAY_ROW> m_holidays;
    std::vector<uint8_t> m_holidayRecord;
    mutable std::unordered_map<int64_t, std::vector<Span>> m_sessionCache;
};

}  // namespace qvnsim
