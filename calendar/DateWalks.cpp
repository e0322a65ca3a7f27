// Date: the walks by bars. The fast walk for one plain session a day, which skips whole days;
// the general walk for any sessions, which skips whole weeks and goes session by session
// only near holidays and daylight changes; and the two week walkers that do the careful part.
// Nothing here allocates.
#include <qvnrt/Date.h>

#include "calendar/DayMask.h"
#include "calendar/PeriodWalk.h"
#include "calendar/SessionTable.h"
#include "calendar/ZoneTable.h"

namespace {

using qvnrt::calendar::barSeconds;
using qvnrt::calendar::clockTime;
using qvnrt::calendar::dayAllowed;
using qvnrt::calendar::daysPerWeek;
using qvnrt::calendar::fullHolidayOn;
using qvnrt::calendar::holidayOrdinal;
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
using qvnrt::calendar::weekdayOf;

// A week is at most eight calendar days of four sessions from any starting session; the
// bound only guards a broken table.
constexpr int kWeekSteps = 64;
// Five years: up to this many weeks of bars the general walk goes week by week, looking out
// for holidays and daylight changes; beyond it, it skips the whole weeks at once.
constexpr int64_t kCarefulWeeks = 260;

// The weeks that the careful loop may take: each one either uses a week of bars or walks one
// near a holiday row or a daylight change. The bound only guards tables whose weeks hold no
// live session where barsPerWeek counts some.
int64_t CarefulWeekLimit(const HOLIDAYS_INFO* holidays) {
    return 2 * kCarefulWeeks + 2 * holidayRows(holidays) + 16;
}

// count bars of `bar` seconds, wrapping as the value does (in unsigned arithmetic, where
// wrapping is defined: neither comes checked from the application).
uint32_t Seconds(int64_t count, int64_t bar) {
    return static_cast<uint32_t>(static_cast<uint64_t>(count) * static_cast<uint64_t>(bar));
}

}  // namespace

namespace qvnrt::calendar {

// ---- Fast walk ------------------------------------------------------------------------------

void PeriodWalk::fastWalk(int count, int weight, WallTime start, WallTime last,
                          const HOLIDAYS_INFO* holidays, uint8_t mask, uint8_t zone) {
    if (weight >= 0 || count == 0 || m_date.m_value < 2) return;
    // A Julian day has no time of day to walk from; a mask without days has no day to land
    // on, and its steps would not end.
    if (m_date.m_value < DATE_SECONDS_BASE || daysPerWeek(mask) == 0) return;
    const int64_t bar64 = barSeconds(weight);
    const uint32_t bar = static_cast<uint32_t>(bar64);
    if (bar == 0) return;
    const uint32_t startHour = static_cast<uint32_t>(start.hour);
    const uint32_t startMinute = static_cast<uint32_t>(start.minute);
    const uint32_t lastHour = static_cast<uint32_t>(last.hour);
    const uint32_t lastMinute = static_cast<uint32_t>(last.minute);
    auto isOpenDay = [&](uint32_t month, uint32_t day, uint32_t year) {
        return dayAllowed(mask, static_cast<uint32_t>(weekdayOf(month, day, year))) &&
               !fullHolidayOn(holidayOrdinal(static_cast<int>(year), static_cast<int>(month),
                                             static_cast<int>(day)),
                              holidays);
    };
    uint32_t month, day, year;

    // Snap to the first second of the bar that holds the value, or of the last bar before it.
    const uint32_t old = m_date.m_value;
    Date probe(m_date);
    while (!probe.isTradingDay(mask, zone) || PeriodWalk(probe).isFullHoliday(holidays, zone)) {
        probe.addTradingDays(-1, mask, zone);
    }
    (probe.m_value != m_date.m_value ? probe : m_date).getMDY(month, day, year, zone);
    uint32_t first = m_date.makeValue(month, day, year, startHour, startMinute, 0, zone);
    uint32_t lastSecond = m_date.makeValue(month, day, year, lastHour, lastMinute, 59, zone);
    if (m_date.m_value > lastSecond) m_date.m_value = lastSecond;
    if (m_date.m_value < first) {
        do {
            stepCalendarDays(month, day, year, -1);
        } while (!isOpenDay(month, day, year));
        first = m_date.makeValue(month, day, year, startHour, startMinute, 0, zone);
        lastSecond = m_date.makeValue(month, day, year, lastHour, lastMinute, 59, zone);
        m_date.m_value = lastSecond;
    }
    if (m_date.m_value > lastSecond) m_date.m_value = lastSecond;
    m_date.m_value -= (m_date.m_value - first) % bar;
    if (old < m_date.m_value) m_date.m_value = old;

    // Within the day.
    const bool forward = count > 0;
    int64_t remaining = forward ? count : -static_cast<int64_t>(count);
    m_date.getMDY(month, day, year, zone);
    first = m_date.makeValue(month, day, year, startHour, startMinute, 0, zone);
    const uint32_t end = m_date.makeValue(month, day, year, lastHour, lastMinute, 59, zone) + 1;
    const int64_t perDay = (static_cast<int64_t>(end - first) + bar64 - 1) / bar64;
    const int64_t left = forward ? static_cast<int32_t>(end - m_date.m_value - 1) / bar64
                                 : static_cast<int32_t>(m_date.m_value - first) / bar64;
    if (remaining <= left) {
        m_date.m_value += forward ? Seconds(remaining, bar64) : 0u - Seconds(remaining, bar64);
        return;
    }
    int64_t rest = remaining - left;
    m_date.m_value = first;
    if (forward) {
        do {
            m_date.addTradingDays(1, mask, zone);
        } while (isFullHoliday(holidays, zone));
        if (--rest == 0) return;  // this day's first bar
    }

    // Whole days.
    const int64_t wholeDays = perDay > 0 ? rest / perDay : 0;
    if (wholeDays >= 1) {
        // Day steps keep the wall clock, which is only right when no daylight change falls
        // inside the session: the change happens at T local, and the session must start two
        // hours after it. Kept: the second test reads the standard rule again where the
        // daylight rule was meant, so it repeats the first.
        const ZoneRule rule = standardRule(zone, m_date.getYear(zone));
        bool safe = true;
        if (rule.rule.month != 0) {
            const int64_t change = (static_cast<int64_t>(rule.change) - rule.bias) / 60;
            const int64_t second = (static_cast<int64_t>(rule.change) - rule.bias) / 60;
            const int64_t sessionStart = static_cast<int64_t>(startHour) * 60 + startMinute;
            safe = sessionStart > change + 120 && sessionStart > second;
        }
        if (!safe) {
            SESSION_INFO plain{};
            plain.size = 38;
            plain.bSession[0] = 1;
            plain.tradeDays[0] = mask;
            plain.dailyPeriod = mask;
            plain.sStartTime[0] = static_cast<int16_t>(startHour << 8 | startMinute);
            // The session's own end: `last` is its last minute.
            uint32_t endHour = lastHour;
            uint32_t endMinute = lastMinute + 1;
            if (endMinute == 60) {
                endMinute = 0;
                endHour = endHour + 1 == 24 ? 0 : endHour + 1;
            }
            plain.sEndTime[0] = static_cast<int16_t>(endHour << 8 | endMinute);
            plain.chTimeZone = zone;
            plain.bIsFirstSessionSameDay = 1;
            plain.bSingleSessionStandard = 1;
            generalWalk(forward ? rest : -rest, weight, &plain, holidays, zone);
            return;
        }
        const int days = static_cast<int>(forward ? wholeDays : -wholeDays);
        if (holidayRows(holidays) == 0) {
            m_date.addTradingDays(days, mask, zone);
            rest -= wholeDays * perDay;
        } else {
            // Step the days, then as many more as full holidays fell among them, until the
            // count of holidays stops growing.
            Date probeDays(m_date);
            probeDays.addTradingDays(days, mask, zone);
            int previous = 0;
            int holidaysBetween = countFullHolidays(probeDays, holidays, zone);
            while (holidaysBetween != 0 && holidaysBetween != -1 && holidaysBetween != previous) {
                probeDays.addTradingDays(
                    forward ? holidaysBetween - previous : previous - holidaysBetween, mask, zone);
                previous = holidaysBetween;
                holidaysBetween = countFullHolidays(probeDays, holidays, zone);
            }
            if (holidaysBetween == -1) return;  // a row that is not a full holiday: stop here
            m_date.m_value = probeDays.m_value;
            // Kept: the remainder is not reduced by the days stepped in this branch, and the
            // tail below uses all of it.
        }
    }

    // The tail.
    if (forward) {
        m_date.m_value += Seconds(rest, bar64);
    } else if (rest > 0) {
        do {
            m_date.addTradingDays(-1, mask, zone);
        } while (isFullHoliday(holidays, zone));
        m_date.getMDY(month, day, year, zone);
        first = m_date.makeValue(month, day, year, startHour, startMinute, 0, zone);
        rest = perDay - rest;
        m_date.m_value = first + Seconds(rest, bar64);
    }
}

// ---- General walk ---------------------------------------------------------------------------

void PeriodWalk::generalWalk(int64_t count, int weight, const SESSION_INFO* info,
                             const HOLIDAYS_INFO* holidays, uint8_t zone) {
    if (m_date.m_value <= 1 || weight >= 0 || count == 0) return;
    if (count < 0) {
        generalWalkBackward(-count, weight, info, holidays, zone);
        return;
    }
    if (m_date.m_value < DATE_SECONDS_BASE) return;
    int crossover;
    if (!usableCrossover(info, crossover)) return;
    // A table on which no bar can lie in any week: there is nowhere to go.
    const int64_t perWeek = barsPerWeek(info, weight);
    if (perWeek <= 0) return;
    firstSecondOfPeriod(weight, info, holidays, zone);
    const bool walking = weekWalkForward(count, weight, info, holidays, zone);
    bool onWeekStart = false;
    if (walking && count > 0) {
        if (perWeek * kCarefulWeeks >= count) {
            Date ahead(m_date);
            ahead.addWeeks(1, zone);
            for (int64_t week = 0; count > 0 && week < CarefulWeekLimit(holidays); ++week) {
                if (!holidayNear(ahead, holidays, zone) && !zoneChangeNear(ahead, zone) &&
                    perWeek <= count) {
                    count -= perWeek;
                    m_date.m_value = ahead.m_value;
                    onWeekStart = true;
                } else if (!weekWalkForward(count, weight, info, holidays, zone)) {
                    break;
                } else {
                    onWeekStart = false;
                }
                ahead.addWeeks(1, zone);
            }
        } else {
            const int64_t weeks = count / perWeek;
            m_date.addWeeks(static_cast<int>(weeks), zone);
            count -= weeks * perWeek;
            onWeekStart = count == 0;
            if (count > 0) weekWalkForward(count, weight, info, holidays, zone);
        }
    }
    // Whole weeks may use up the count on a week's end, which need not be live: the answer
    // is the first live bar from there on.
    if (onWeekStart) weekWalkForward(count, weight, info, holidays, zone);
    // A landing in a gap or on a closed day moves on to the next live bar.
    const uint32_t landed = m_date.m_value;
    firstSecondOfPeriod(weight, info, holidays, zone);
    if (m_date.m_value != landed) {
        m_date.m_value = landed;
        lastSecondOfPeriod(weight, info, holidays, zone);
        firstSecondOfPeriod(weight, info, holidays, zone);
    }
}

void PeriodWalk::generalWalkBackward(int64_t count, int weight, const SESSION_INFO* info,
                                     const HOLIDAYS_INFO* holidays, uint8_t zone) {
    if (m_date.m_value <= 1 || weight >= 0 || count <= 0) return;
    if (m_date.m_value < DATE_SECONDS_BASE) return;
    int crossover;
    if (!usableCrossover(info, crossover)) return;
    // A table on which no bar can lie in any week: there is nowhere to go.
    const int64_t perWeek = barsPerWeek(info, weight);
    if (perWeek <= 0) return;
    firstSecondOfPeriod(weight, info, holidays, zone);
    const bool walking = weekWalkBackward(count, weight, info, holidays, zone);
    bool onWeekStart = false;
    if (walking && count > 0) {
        if (perWeek * kCarefulWeeks >= count) {
            Date behind(m_date);
            behind.addWeeks(-1, zone);
            for (int64_t week = 0; count > 0 && week < CarefulWeekLimit(holidays); ++week) {
                if (!PeriodWalk(behind).holidayNear(m_date, holidays, zone) &&
                    !PeriodWalk(behind).zoneChangeNear(m_date, zone) && perWeek <= count) {
                    count -= perWeek;
                    m_date.m_value = behind.m_value;
                    onWeekStart = true;
                } else if (!weekWalkBackward(count, weight, info, holidays, zone)) {
                    break;
                } else {
                    onWeekStart = false;
                }
                behind.addWeeks(-1, zone);
            }
        } else {
            const int64_t weeks = count / perWeek;
            m_date.addWeeks(-static_cast<int>(weeks), zone);
            count -= weeks * perWeek;
            onWeekStart = count == 0;
            if (count > 0) weekWalkBackward(count, weight, info, holidays, zone);
        }
    }
    // Whole weeks that use up the count exactly end on the earlier week's start: the bars
    // counted were those from there on, so the answer is the first live bar from there.
    if (onWeekStart) weekWalkForward(count, weight, info, holidays, zone);
    // Unlike the forward end, a landing in a gap goes back to the last bar before it: the
    // two ends differ on purpose.
    const uint32_t landed = m_date.m_value;
    lastSecondOfPeriod(weight, info, holidays, zone);
    firstSecondOfPeriod(weight, info, holidays, zone);
    if (m_date.m_value != landed) {
        m_date.m_value = landed;
        firstSecondOfPeriod(weight, info, holidays, zone);
    }
}

// ---- Week walkers ---------------------------------------------------------------------------

bool PeriodWalk::weekWalkForward(int64_t& count, int weight, const SESSION_INFO* info,
                                 const HOLIDAYS_INFO* holidays, uint8_t zone) {
    bool inGap = false;
    int session = findSession(info, inGap, zone);
    if (session < 0) return false;
    int crossover;
    if (!usableCrossover(info, crossover)) return false;
    const bool sameDay = isSameDay(info);
    const int64_t bar = barSeconds(weight);

    // The end of the trading week: session 0 of the next Sunday's trading day, which opens on
    // Saturday evening when the security is not same-day.
    const int firstStart = sessionStartTime(info, 0);
    uint32_t month, day, year, hour, minute, second;
    m_date.lastDayNamed(sameDay ? "SUNDAY" : "SATURDAY", zone).getMDY(month, day, year, zone);
    stepCalendarDays(month, day, year, 7);
    uint32_t anchor =
        m_date.makeValue(month, day, year, hourOf(firstStart), minuteOf(firstStart), 0, zone);
    if (anchor <= m_date.m_value) {
        stepCalendarDays(month, day, year, 7);
        anchor =
            m_date.makeValue(month, day, year, hourOf(firstStart), minuteOf(firstStart), 0, zone);
    }

    m_date.getMDYHMS(month, day, year, hour, minute, second, zone);
    int weekday = static_cast<int>(m_date.dayOfWeek(zone));
    int tradeDay = tradeDayOf(weekday, session, crossover, info, static_cast<int>(hour),
                              static_cast<int>(minute));
    bool first = true;
    int index = holidays ? firstRowFrom(holidays, month, day, year) : 0;
    for (int step = 0; step < kWeekSteps; ++step) {
        const HOLIDAY_ROW* row = nullptr;
        if (sessionCounts(month, day, year, hour, minute, crossover, info, session, tradeDay,
                          holidays, index, row)) {
            uint32_t from = m_date.m_value;
            if (!first) {
                Date start(m_date);
                PeriodWalk(start).sessionStart(month, day, year, hour, minute, info, session,
                                               crossover, zone);
                from = start.m_value;
            }
            Date end(m_date);
            PeriodWalk(end).sessionEnd(month, day, year, info, session, row, crossover,
                                       tradeDay == weekday, zone);
            const int bars = barsBetween(from, end.m_value, weight);
            if (bars > count) {
                m_date.m_value = from + Seconds(count, bar);
                count = 0;
                return true;
            }
            count -= bars;
        }
        session = (session + 1) % 4;
        // Past the crossover the calendar day turns, except on the first step out of a
        // session that began the evening before and whose trading day is already this date.
        // For a same-day security this is the step from session 3 to session 0, and it
        // always turns the date.
        if (session == (crossover + 1) % 4 && !(first && !sameDay && tradeDay == weekday)) {
            stepCalendarDays(month, day, year, 1);
            weekday = nextWeekday(weekday);
        }
        const int start = sessionStartTime(info, session);
        hour = hourOf(start);
        minute = minuteOf(start);
        tradeDay = tradeDayOf(weekday, session, crossover, info, static_cast<int>(hour),
                              static_cast<int>(minute));
        first = false;
        // With no bar left to count, the walk goes on to the first live session, which may
        // lie beyond the week's end: the anchor may be closed, and the search from there
        // would pass over an evening.
        if (session == 0 && tradeDay == 7 && count > 0) {
            m_date.m_value = anchor;
            return true;
        }
    }
    return false;
}

bool PeriodWalk::weekWalkBackward(int64_t& count, int weight, const SESSION_INFO* info,
                                  const HOLIDAYS_INFO* holidays, uint8_t zone) {
    bool inGap = false;
    int session = findSession(info, inGap, zone);
    if (session < 0) return false;
    int crossover;
    if (!usableCrossover(info, crossover)) return false;
    const bool sameDay = isSameDay(info);
    const int64_t bar = barSeconds(weight);

    // The start of this trading week.
    const int firstStart = sessionStartTime(info, 0);
    uint32_t month, day, year, hour, minute, second;
    m_date.lastDayNamed(sameDay ? "SUNDAY" : "SATURDAY", zone).getMDY(month, day, year, zone);
    uint32_t anchor =
        m_date.makeValue(month, day, year, hourOf(firstStart), minuteOf(firstStart), 0, zone);
    if (anchor >= m_date.m_value) {
        stepCalendarDays(month, day, year, -7);
        anchor =
            m_date.makeValue(month, day, year, hourOf(firstStart), minuteOf(firstStart), 0, zone);
    }

    m_date.getMDYHMS(month, day, year, hour, minute, second, zone);
    int weekday = static_cast<int>(m_date.dayOfWeek(zone));
    int tradeDay = tradeDayOf(weekday, session, crossover, info, static_cast<int>(hour),
                              static_cast<int>(minute));
    // In the part after midnight of a session that crosses it, the session began the day
    // before: the walk goes back from that day, or it would meet this session again when it
    // next turns the date.
    if (session == crossover && sessionStartTime(info, session) > clockTime(hour, minute)) {
        stepCalendarDays(month, day, year, -1);
        weekday = previousWeekday(weekday);
        hour = hourOf(sessionStartTime(info, session));
        minute = minuteOf(sessionStartTime(info, session));
    }
    bool first = true;
    // The session whose step back turns the calendar day: the crossover, or for a same-day
    // security session 3, the mirror of the forward walk's turn at session 0.
    const int turning = sameDay ? 3 : crossover;
    for (int step = 0; step < kWeekSteps; ++step) {
        const HOLIDAY_ROW* row = nullptr;
        // Rows are met going back, so each test reads them afresh.
        int index = holidays ? firstRowFrom(holidays, month, day, year) : 0;
        if (sessionCounts(month, day, year, hour, minute, crossover, info, session, tradeDay,
                          holidays, index, row)) {
            Date start(m_date);
            PeriodWalk(start).sessionStart(month, day, year, hour, minute, info, session, crossover,
                                           zone);
            const uint32_t from = start.m_value;
            uint32_t to = m_date.m_value;
            if (!first) {
                Date end(m_date);
                PeriodWalk(end).sessionEnd(month, day, year, info, session, row, crossover,
                                           tradeDay == weekday, zone);
                to = end.m_value;
            }
            // The mirror of the forward walk: a session with at least as many bars as are
            // left holds the landing (its first bar when they are equal).
            const int bars = barsBetween(from, to, weight);
            if (bars >= count) {
                m_date.m_value = from + Seconds(bars, bar) - Seconds(count, bar);
                count = 0;
                return true;
            }
            count -= bars;
        }
        session = (session + 3) % 4;
        if (session == turning && !(first && tradeDay != weekday)) {
            stepCalendarDays(month, day, year, -1);
            weekday = previousWeekday(weekday);
        }
        const int start = sessionStartTime(info, session);
        hour = hourOf(start);
        minute = minuteOf(start);
        tradeDay = tradeDayOf(weekday, session, crossover, info, static_cast<int>(hour),
                              static_cast<int>(minute));
        first = false;
        if (session == 0 && tradeDay == 7) {
            m_date.m_value = anchor;
            return true;
        }
    }
    return false;
}

}  // namespace qvnrt::calendar
