// Date: the edges of a bar. From one session to the previous or next live one, the first and
// the last second of the bar that holds an instant, and the start of the next session.
#include <qvnrt/Date.h>

#include <algorithm>

#include "calendar/DateLog.h"
#include "calendar/DayMask.h"
#include "calendar/PeriodWalk.h"
#include "calendar/SessionTable.h"

namespace {

using qvnrt::calendar::dateLogEnabled;
using qvnrt::calendar::dayAllowed;
using qvnrt::calendar::firstRowFrom;
using qvnrt::calendar::holidayRows;
using qvnrt::calendar::hourOf;
using qvnrt::calendar::isSameDay;
using qvnrt::calendar::minuteOf;
using qvnrt::calendar::nextWeekday;
using qvnrt::calendar::previousWeekday;
using qvnrt::calendar::sessionExists;
using qvnrt::calendar::sessionMask;
using qvnrt::calendar::sessionStartTime;
using qvnrt::calendar::stepCalendarDays;
using qvnrt::calendar::writeDateLogFormat;

// Sessions tried in search of a live one before giving up. Each row closes at most one day,
// and a week without rows has a live session whenever any mask allows a day (a search that
// passes over every other calendar day, as the kept wraps below make it, still meets every
// weekday within two weeks), so only a table that allows no day at all runs into it.
int SessionSearchLimit(const HOLIDAYS_INFO* holidays) {
    return 4 * (16 + 2 * holidayRows(holidays));
}

// The first or last second of a bar from the start of its session: start + whole bars, in the
// signed arithmetic of the offsets. A weight of 0 divides by 1.
uint32_t BarEdge(uint32_t value, uint32_t start, int weight) {
    const int64_t width = static_cast<int64_t>(weight) * 60;
    const int64_t offset = static_cast<int32_t>(value - start);
    const int64_t whole = offset / (width == 0 ? 1 : width);
    return start + static_cast<uint32_t>(whole * width);
}

}  // namespace

namespace qvnrt::calendar {

// ---- From session to session ------------------------------------------------------------

bool PeriodWalk::previousSession(int& session, int crossover, const SESSION_INFO* info,
                                 const HOLIDAYS_INFO* holidays, bool skipFirst, uint8_t zone) {
    uint32_t month, day, year, hour, minute, second;
    m_date.getMDYHMS(month, day, year, hour, minute, second, zone);
    sessionStart(month, day, year, hour, minute, info, session, crossover, zone);
    m_date.getMDYHMS(month, day, year, hour, minute, second, zone);
    int weekday = static_cast<int>(m_date.dayOfWeek(zone));
    const bool sameDay = isSameDay(info);
    const HOLIDAY_ROW* row = nullptr;
    int tradeDay = 0;
    for (int step = 0;; ++step) {
        if (step > SessionSearchLimit(holidays)) return false;
        tradeDay = tradeDayOf(weekday, session, crossover, info, static_cast<int>(hour),
                              static_cast<int>(minute));
        bool live = false;
        row = nullptr;
        if (!skipFirst) {
            // Rows are met going back, so each test reads them afresh.
            int index = holidays ? firstRowFrom(holidays, month, day, year) : 0;
            live = sessionCounts(month, day, year, hour, minute, crossover, info, session, tradeDay,
                                 holidays, index, row);
        }
        skipFirst = false;
        if (live) break;
        session = (session + 3) % 4;
        // Kept: stepping down to session 3 moves to the day before for a not same-day
        // security as well, so such a walk passes over a calendar day whenever it goes
        // round the table through closed sessions.
        if ((!sameDay && session == crossover) || session == 3) {
            weekday = previousWeekday(weekday);
            stepCalendarDays(month, day, year, -1);
        }
        const int start = sessionStartTime(info, session);
        hour = hourOf(start);
        minute = minuteOf(start);
    }
    sessionEnd(month, day, year, info, session, row, crossover, tradeDay == weekday, zone);
    m_date.m_value -= 1;
    return true;
}

bool PeriodWalk::nextSession(int& session, int crossover, const SESSION_INFO* info,
                             const HOLIDAYS_INFO* holidays, int& index, uint8_t zone,
                             const HOLIDAY_ROW** foundRow) {
    uint32_t month, day, year, hour, minute, second;
    m_date.getMDYHMS(month, day, year, hour, minute, second, zone);
    sessionStart(month, day, year, hour, minute, info, session, crossover, zone);
    m_date.getMDYHMS(month, day, year, hour, minute, second, zone);
    int weekday = static_cast<int>(m_date.dayOfWeek(zone));
    const bool sameDay = isSameDay(info);
    const HOLIDAY_ROW* row = nullptr;
    if (holidays) index = std::max(index, firstRowFrom(holidays, month, day, year));
    for (int step = 0;; ++step) {
        if (step > SessionSearchLimit(holidays)) return false;
        session = (session + 1) % 4;
        // Kept: a wrap to session 0 moves to the next day for a not same-day security as
        // well, on top of the move at the session after the crossover.
        if ((!sameDay && session == (crossover + 1) % 4) || session == 0) {
            weekday = nextWeekday(weekday);
            stepCalendarDays(month, day, year, 1);
        }
        const int start = sessionStartTime(info, session);
        hour = hourOf(start);
        minute = minuteOf(start);
        const int tradeDay = tradeDayOf(weekday, session, crossover, info, static_cast<int>(hour),
                                        static_cast<int>(minute));
        if (sessionCounts(month, day, year, hour, minute, crossover, info, session, tradeDay,
                          holidays, index, row)) {
            break;
        }
    }
    sessionStart(month, day, year, hour, minute, info, session, crossover, zone);
    if (foundRow) *foundRow = row;
    return true;
}

// ---- The edges of a bar -----------------------------------------------------------------

// Steps 1 to 4 of both edges: the session that holds the instant by the clock, the
// crossover, the instant's fields, and whether the session is live: on a trading day that no
// holiday closes, and, on a shortened day, before the new end. Writes the opening log line.
bool PeriodWalk::placeInPeriod(const char* edge, int weight, const SESSION_INFO* info,
                               const HOLIDAYS_INFO* holidays, uint8_t zone, PeriodPlace& place) {
    if (dateLogEnabled()) writeDateLogFormat("%s newBarWeight %d\r\n", edge, weight);
    place.live = true;
    place.session = findSession(info, place.live, zone);
    if (place.session < 0) return false;
    if (!usableCrossover(info, place.crossover)) return false;
    m_date.getMDYHMS(place.month, place.day, place.year, place.hour, place.minute, place.second,
                     zone);
    place.weekday = static_cast<int>(m_date.dayOfWeek(zone));
    place.skipFirst = false;
    place.row = nullptr;
    if (!place.live) return true;
    place.skipFirst = true;
    const int tradeDay = tradeDayOf(place.weekday, place.session, place.crossover, info,
                                    static_cast<int>(place.hour), static_cast<int>(place.minute));
    int index = holidays ? firstRowFrom(holidays, place.month, place.day, place.year) : 0;
    place.live =
        sessionCounts(place.month, place.day, place.year, place.hour, place.minute, place.crossover,
                      info, place.session, tradeDay, holidays, index, place.row);
    if (place.live && place.row) {
        // Shortened: the time may lie after the new end, in the gap that follows it.
        SESSION_INFO shortened = *info;
        shortened.sEndTime[place.session] = static_cast<int16_t>(place.row->endTime);
        place.session = findSession(&shortened, place.live, zone);
        if (place.session < 0) return false;
        if (!place.live) place.skipFirst = false;
    }
    return true;
}

bool PeriodWalk::firstSecondOfPeriod(int weight, const SESSION_INFO* info,
                                     const HOLIDAYS_INFO* holidays, uint8_t zone) {
    if (m_date.m_value < 2) return false;
    zone = resolvedZone(zone);
    PeriodPlace place;
    if (!placeInPeriod("setToFirstSecondOfPeriod", weight, info, holidays, zone, place)) {
        return false;
    }
    if (!place.live) {
        const uint32_t before = m_date.m_value;
        if (!previousSession(place.session, place.crossover, info, holidays, place.skipFirst,
                             zone)) {
            m_date.m_value = before;  // no live session anywhere: left as it was
            return false;
        }
        m_date.getMDYHMS(place.month, place.day, place.year, place.hour, place.minute, place.second,
                         zone);
    }
    Date start(m_date);
    PeriodWalk(start).sessionStart(place.month, place.day, place.year, place.hour, place.minute,
                                   info, place.session, place.crossover, zone);
    m_date.m_value = BarEdge(m_date.m_value, start.m_value, weight);
    if (dateLogEnabled()) writeDateLogFormat("finishing setToFirstSecondOfPeriod\r\n");
    return true;
}

bool PeriodWalk::lastSecondOfPeriod(int weight, const SESSION_INFO* info,
                                    const HOLIDAYS_INFO* holidays, uint8_t zone) {
    if (m_date.m_value < 2) return false;
    zone = resolvedZone(zone);
    PeriodPlace place;
    if (!placeInPeriod("setToLastSecondOfPeriod", weight, info, holidays, zone, place)) {
        return false;
    }
    if (!place.live) {
        int index = 0;
        const uint32_t before = m_date.m_value;
        if (!nextSession(place.session, place.crossover, info, holidays, index, zone, &place.row)) {
            m_date.m_value = before;
            return false;
        }
        m_date.getMDYHMS(place.month, place.day, place.year, place.hour, place.minute, place.second,
                         zone);
        place.weekday = static_cast<int>(m_date.dayOfWeek(zone));
    }
    const int tradeDay = tradeDayOf(place.weekday, place.session, place.crossover, info,
                                    static_cast<int>(place.hour), static_cast<int>(place.minute));
    Date start(m_date);
    PeriodWalk(start).sessionStart(place.month, place.day, place.year, place.hour, place.minute,
                                   info, place.session, place.crossover, zone);
    Date end(m_date);
    PeriodWalk(end).sessionEnd(place.month, place.day, place.year, info, place.session, place.row,
                               place.crossover, tradeDay == place.weekday, zone);
    const uint32_t width = static_cast<uint32_t>(static_cast<int64_t>(weight) * 60);
    m_date.m_value = BarEdge(m_date.m_value, start.m_value, weight) - width - 1;
    // A session's last bar may be short: it ends with the session.
    if (m_date.m_value >= end.m_value) m_date.m_value = end.m_value - 1;
    if (dateLogEnabled()) writeDateLogFormat("finishing setToLastSecondOfPeriod\r\n");
    return true;
}

void PeriodWalk::nextSessionStart(const SESSION_INFO* info, const HOLIDAYS_INFO* holidays,
                                  uint8_t zone) {
    if (m_date.m_value < 2) return;
    zone = resolvedZone(zone);
    bool inGap = true;
    int current = findSession(info, inGap, zone);
    if (current < 0) return;
    int crossover;
    if (!usableCrossover(info, crossover)) return;
    const uint32_t before = m_date.m_value;
    int index = 0;
    if (!nextSession(current, crossover, info, holidays, index, zone)) m_date.m_value = before;
}

}  // namespace qvnrt::calendar

// ---- Public -------------------------------------------------------------------------------

using qvnrt::calendar::PeriodWalk;

void Date::setToFirstSecondOfPeriod(int newBarWeight, SESSION_INFO* session,
                                    HOLIDAYS_INFO* holidays, uint8_t zone) {
    if (!session) return;
    const uint32_t before = m_value;
    PeriodWalk(*this).firstSecondOfPeriod(newBarWeight, session, holidays, zone);
    if (m_value != before) m_sequence = 0;
}

void Date::setToLastSecondOfPeriod(int newBarWeight, SESSION_INFO* session, HOLIDAYS_INFO* holidays,
                                   uint8_t zone) {
    if (!session) return;
    const uint32_t before = m_value;
    PeriodWalk(*this).lastSecondOfPeriod(newBarWeight, session, holidays, zone);
    if (m_value != before) m_sequence = 0;
}

void Date::toNextSessionStart(SESSION_INFO* session, HOLIDAYS_INFO* holidays, uint8_t zone) {
    if (!session) return;
    const uint32_t before = m_value;
    PeriodWalk(*this).nextSessionStart(session, holidays, zone);
    if (m_value != before) m_sequence = 0;
}
