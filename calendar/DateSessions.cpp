// Date: the helpers of the period walks that read the session and holiday tables. Which
// session is the crossover, which trading day a session belongs to, which session holds an
// instant, the holiday rows, the two edges of a session, and the counts of bars and holidays.
#include <qvnrt/Date.h>

#include <algorithm>

#include "calendar/DayMask.h"
#include "calendar/PeriodWalk.h"
#include "calendar/SessionTable.h"
#include "calendar/ZoneTable.h"

namespace {

using qvnrt::calendar::clockTime;
using qvnrt::calendar::dayAllowed;
using qvnrt::calendar::holidayOrdinal;
using qvnrt::calendar::holidayRows;
using qvnrt::calendar::hourOf;
using qvnrt::calendar::isSameDay;
using qvnrt::calendar::minuteOf;
using qvnrt::calendar::nextWeekday;
using qvnrt::calendar::sessionEndTime;
using qvnrt::calendar::sessionExists;
using qvnrt::calendar::sessionMask;
using qvnrt::calendar::sessionStartTime;
using qvnrt::calendar::stepCalendarDays;

// Rounded towards positive infinity, for either sign.
int64_t CeilDiv(int64_t numerator, int64_t denominator) {
    int64_t quotient = numerator / denominator;
    if (numerator % denominator != 0 && (numerator < 0) == (denominator < 0)) ++quotient;
    return quotient;
}

int ClampToInt(int64_t value) {
    return static_cast<int>(std::clamp<int64_t>(value, INT32_MIN, INT32_MAX));
}

}  // namespace

namespace qvnrt::calendar {

// ---- The session table --------------------------------------------------------------------

int crossoverSession(const SESSION_INFO* info, int& error) {
    error = 0;
    if (isSameDay(info)) return -1;
    for (int i = 0; i < 4; ++i) {
        if (!sessionExists(info, i)) continue;
        const int start = sessionStartTime(info, i);
        if (start >= sessionEndTime(info, i)) return i;  // it crosses midnight
        int before = -1;
        for (int k = (i + 3) % 4; k != i; k = (k + 3) % 4) {
            if (sessionExists(info, k)) {
                before = k;
                break;
            }
        }
        if (before < 0) return i;
        if (start == sessionStartTime(info, before)) {
            error = 6;  // two sessions start together: no order to walk by
            return -1;
        }
        // The session before this one in the table starts later in the day: it is the last
        // one of the evening.
        if (start < sessionStartTime(info, before)) return before;
    }
    error = 1;
    return -1;
}

bool usableCrossover(const SESSION_INFO* info, int& crossover) {
    int error = 0;
    crossover = crossoverSession(info, error);
    return isSameDay(info) || (error == 0 && crossover >= 0);
}

int tradeDayOf(int weekday, int session, int crossover, const SESSION_INFO* info, int hour,
               int minute) {
    if (isSameDay(info)) return weekday >= 8 ? 1 : weekday;
    const int start = sessionStartTime(info, session);
    const int end = sessionEndTime(info, session);
    if (session == crossover) {
        if (start < end) return nextWeekday(weekday);
        if (start == 0 && end == 0) return weekday;  // a whole calendar day
        // Crossing midnight: the evening part belongs to the next day.
        return start <= clockTime(hour, minute) ? nextWeekday(weekday) : weekday;
    }
    if (session > crossover) return weekday;
    return nextWeekday(weekday);  // an evening session before the crossover
}

int PeriodWalk::findSession(const SESSION_INFO* info, bool& inGap, uint8_t zone) const {
    uint32_t month, day, year, hour, minute, second;
    m_date.getMDYHMS(month, day, year, hour, minute, second, zone);
    const int t = clockTime(hour, minute);
    int candidate = -1;
    for (int i = 0; i < 4; ++i) {
        if (!sessionExists(info, i)) continue;
        const int start = sessionStartTime(info, i);
        const int end = sessionEndTime(info, i);
        if (start == end) return i;  // 24 hours
        if (start < end && start <= t && t < end) return i;
        if (start > end && (t >= start || t < end)) return i;
        if (!inGap) continue;
        int next = (i + 1) % 4;
        while (next != i && !sessionExists(info, next)) next = (next + 1) % 4;
        if (next == i) {
            candidate = i;
            continue;
        }
        // The gap after session i runs to the next session's start; a time on the far side
        // of that start belongs to another gap.
        const int nextStart = sessionStartTime(info, next);
        if (end < nextStart && t < end) continue;
        if ((end < nextStart || t < end) && t >= nextStart) continue;
        candidate = i;
    }
    if (!inGap) return -1;
    inGap = false;
    return candidate;
}

// ---- Holidays -----------------------------------------------------------------------------

bool sessionCounts(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                   int crossover, const SESSION_INFO* info, int session, int tradeDay,
                   const HOLIDAYS_INFO* holidays, int& index, const HOLIDAY_ROW*& row) {
    row = nullptr;
    if (!sessionExists(info, session) || !dayAllowed(sessionMask(info, session), tradeDay)) {
        return false;
    }
    return !(holidays && holidayCheck(month, day, year, hour, minute, crossover, info, session,
                                      holidays, index, row));
}

bool holidayCheck(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                  int crossover, const SESSION_INFO* info, int session,
                  const HOLIDAYS_INFO* holidays, int& index, const HOLIDAY_ROW*& row) {
    row = nullptr;
    if (!isSameDay(info)) {
        // Rows are dated by trading day: an evening session belongs to the next date.
        const int start = sessionStartTime(info, session);
        const bool evening = session < crossover ||
                             (session == crossover && (start < sessionEndTime(info, session) ||
                                                       start <= clockTime(hour, minute)));
        if (evening) stepCalendarDays(month, day, year, 1);
    }
    const int ordinal =
        holidayOrdinal(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day));
    const int rows = holidayRows(holidays);
    while (index < rows) {
        const HOLIDAY_ROW& candidate = holidays->rows[index];
        const int rowOrdinal = holidayOrdinal(candidate);
        if (rowOrdinal < ordinal) {
            ++index;
            continue;
        }
        if (rowOrdinal > ordinal) return false;
        if (candidate.session == 4) return true;  // all sessions; later sessions meet it too
        if (candidate.session > session) return false;
        if (candidate.session < session) {
            ++index;
            continue;
        }
        if (candidate.endTime == 0xFFFF) {
            ++index;
            return true;
        }
        row = &candidate;  // open, but ends early
        return false;
    }
    return false;
}

bool PeriodWalk::isFullHoliday(const HOLIDAYS_INFO* holidays, uint8_t zone) const {
    if (holidayRows(holidays) == 0) return false;
    uint32_t month, day, year;
    m_date.getMDY(month, day, year, zone);
    return fullHolidayOn(
        holidayOrdinal(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day)),
        holidays);
}

namespace {

// The ordinals of two Dates' days in the zone, earlier first.
void OrderedOrdinals(const Date& a, const Date& b, uint8_t zone, int& low, int& high) {
    uint32_t month, day, year;
    a.getMDY(month, day, year, zone);
    low = holidayOrdinal(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day));
    b.getMDY(month, day, year, zone);
    high = holidayOrdinal(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day));
    if (low > high) std::swap(low, high);
}

}  // namespace

int PeriodWalk::countFullHolidays(const Date& other, const HOLIDAYS_INFO* holidays,
                                  uint8_t zone) const {
    const int rows = holidayRows(holidays);
    if (rows == 0) return 0;
    int low, high;
    OrderedOrdinals(m_date, other, resolvedZone(zone), low, high);
    int count = 0;
    for (int k = firstRowFrom(holidays, low); k < rows; ++k) {
        const int ordinal = holidayOrdinal(holidays->rows[k]);
        if (ordinal > high) break;
        if (ordinal < low) continue;
        if (holidays->rows[k].session != 4) return -1;
        ++count;
    }
    return count;
}

bool PeriodWalk::holidayNear(const Date& other, const HOLIDAYS_INFO* holidays, uint8_t zone) const {
    const int rows = holidayRows(holidays);
    if (rows == 0) return false;
    zone = resolvedZone(zone);
    uint32_t lowMonth, lowDay, lowYear, highMonth, highDay, highYear;
    const bool thisFirst = m_date.m_value <= other.m_value;
    (thisFirst ? m_date : other).getMDY(lowMonth, lowDay, lowYear, zone);
    (thisFirst ? other : m_date).getMDY(highMonth, highDay, highYear, zone);
    stepCalendarDays(lowMonth, lowDay, lowYear, -1);
    stepCalendarDays(highMonth, highDay, highYear, 1);
    const int low = holidayOrdinal(static_cast<int>(lowYear), static_cast<int>(lowMonth),
                                   static_cast<int>(lowDay));
    const int high = holidayOrdinal(static_cast<int>(highYear), static_cast<int>(highMonth),
                                    static_cast<int>(highDay));
    const int k = firstRowFrom(holidays, low);
    return k < rows && holidayOrdinal(holidays->rows[k]) <= high;
}

bool PeriodWalk::zoneChangeNear(const Date& other, uint8_t zone) const {
    zone = resolvedZone(zone);
    uint32_t month, day, year, otherMonth, otherDay, otherYear;
    m_date.getMDY(month, day, year, zone);
    other.getMDY(otherMonth, otherDay, otherYear, zone);
    if (year != otherYear) return true;
    int low =
        holidayOrdinal(static_cast<int>(year), static_cast<int>(month), static_cast<int>(day));
    int high = holidayOrdinal(static_cast<int>(otherYear), static_cast<int>(otherMonth),
                              static_cast<int>(otherDay));
    if (low > high) std::swap(low, high);
    const ZoneRule standard = standardRule(zone, year);
    if (standard.rule.month == 0) return false;
    const ZoneRule daylight = daylightRule(zone, year);
    const int y = static_cast<int>(year);
    for (const int changeMonth : {int{standard.rule.month}, int{daylight.rule.month}}) {
        if (changeMonth == 1 || changeMonth == 12) return true;
        // The month before, with the length of the change month itself: kept as it always
        // was (it can name a day that does not exist, which only widens the window).
        const int before = holidayOrdinal(
            y, changeMonth - 1,
            static_cast<int>(Date::daysInMonth(static_cast<uint32_t>(changeMonth), year)));
        const int after = holidayOrdinal(y, changeMonth + 1, 1);
        if ((low <= before && high >= before) || (low <= after && high >= after) ||
            (low >= before && low <= after)) {
            return true;
        }
    }
    return false;
}

// ---- The edges of one session -------------------------------------------------------------

void PeriodWalk::sessionStart(uint32_t month, uint32_t day, uint32_t year, uint32_t hour,
                              uint32_t minute, const SESSION_INFO* info, int session, int crossover,
                              uint8_t zone) {
    const int start = sessionStartTime(info, session);
    m_date.m_value = m_date.makeValue(month, day, year, hourOf(start), minuteOf(start), 0, zone);
    if ((!isSameDay(info) && session != crossover) || start <= clockTime(hour, minute)) return;
    // The time lies before the start on that date: the session began the day before.
    stepCalendarDays(month, day, year, -1);
    m_date.m_value = m_date.makeValue(month, day, year, hourOf(start), minuteOf(start), 0, zone);
}

void PeriodWalk::sessionEnd(uint32_t month, uint32_t day, uint32_t year, const SESSION_INFO* info,
                            int session, const HOLIDAY_ROW* row, int crossover, bool sameTradeDay,
                            uint8_t zone) {
    const int start = sessionStartTime(info, session);
    const int end = sessionEndTime(info, session);
    const int finish = row ? static_cast<int16_t>(row->endTime) : end;
    m_date.m_value = m_date.makeValue(month, day, year, hourOf(finish), minuteOf(finish), 0, zone);
    bool nextDay;
    if (isSameDay(info)) {
        nextDay = start == 0 && finish == 0;  // 00:00 to 00:00 ends at the next midnight
    } else {
        nextDay = session == crossover && start >= end && !sameTradeDay && (!row || finish < start);
    }
    if (!nextDay) return;
    stepCalendarDays(month, day, year, 1);
    m_date.m_value = m_date.makeValue(month, day, year, hourOf(finish), minuteOf(finish), 0, zone);
}

// ---- Counting bars ------------------------------------------------------------------------

int barsBetween(uint32_t start, uint32_t end, int weight) {
    const int64_t minutes = static_cast<int32_t>(end - start) / 60;
    const int64_t perBar = weight == 0 ? 1 : -static_cast<int64_t>(weight);
    return ClampToInt(CeilDiv(minutes, perBar));
}

int barsPerWeek(const SESSION_INFO* info, int weight) {
    int crossover;
    if (!usableCrossover(info, crossover)) return 1;
    const int64_t perBar = weight == 0 ? 1 : -static_cast<int64_t>(weight);
    const bool sameDay = isSameDay(info);
    int session = 0;
    int weekday = sameDay ? 1 : 7;  // Monday's first session opens on Sunday evening
    int tradeDay = 1;
    int64_t bars = 0;
    // Seven trading days of at most four sessions; the bound only guards a broken table.
    for (int step = 0; step < 64; ++step) {
        if (sessionExists(info, session) && dayAllowed(sessionMask(info, session), tradeDay)) {
            const int start = sessionStartTime(info, session);
            const int end = sessionEndTime(info, session);
            int64_t minutes = 1440;
            if (start != end) {
                const int64_t hours =
                    static_cast<int64_t>(hourOf(end)) - hourOf(start) + (start >= end ? 24 : 0);
                minutes = hours * 60 + minuteOf(end) - static_cast<int64_t>(minuteOf(start));
            }
            bars += CeilDiv(minutes, perBar);
        }
        session = (session + 1) % 4;
        if (session == (crossover + 1) % 4) weekday = weekday >= 7 ? 1 : weekday + 1;
        const int start = sessionStartTime(info, session);
        tradeDay = tradeDayOf(weekday, session, crossover, info, static_cast<int>(hourOf(start)),
                              static_cast<int>(minuteOf(start)));
        if (session == 0 && tradeDay == 1) break;
    }
    return ClampToInt(bars);
}

}  // namespace qvnrt::calendar
