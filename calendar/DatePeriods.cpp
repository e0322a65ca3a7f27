// Date: addPeriods and subPeriods, the front of the period arithmetic. They log what they were
// asked, choose the walk (bars, or a calendar step for the other period codes), and guard the
// bottom of the range.
#include <qvnrt/Date.h>

#include "calendar/DateLog.h"
#include "calendar/DatePeriodLog.h"
#include "calendar/PeriodWalk.h"
#include "calendar/SessionTable.h"

namespace {

using qvnrt::calendar::dateLogEnabled;
using qvnrt::calendar::writeDateLog;
using qvnrt::calendar::writeDateLogFormat;

constexpr char kIntraday = 'I';

// The count negated in unsigned arithmetic, where INT_MIN wraps to itself as it always has.
int Negated(int count) {
    return static_cast<int>(0u - static_cast<unsigned>(count));
}

}  // namespace

void Date::addPeriods(int count, char code, int newBarWeight, SESSION_INFO* session,
                      HOLIDAYS_INFO* holidays, uint8_t zone) {
    const uint32_t before = m_value;
    qvnrt::calendar::PeriodWalk(*this).stepByPeriods(count, code, newBarWeight, session, holidays,
                                                     zone, false);
    if (m_value != before) m_sequence = 0;
}

void Date::subPeriods(int count, char code, int newBarWeight, SESSION_INFO* session,
                      HOLIDAYS_INFO* holidays, uint8_t zone) {
    const uint32_t before = m_value;
    qvnrt::calendar::PeriodWalk(*this).stepByPeriods(count, code, newBarWeight, session, holidays,
                                                     zone, true);
    if (m_value != before) m_sequence = 0;
}

namespace qvnrt::calendar {

void PeriodWalk::stepByPeriods(int count, char code, int weight, const SESSION_INFO* info,
                               const HOLIDAYS_INFO* holidays, uint8_t zone, bool subtracting) {
    const char* name = subtracting ? "subPeriods" : "addPeriods";
    const bool logging = dateLogEnabled();
    if (logging) {
        writeDateLogFormat("%s %d %d %d %d\r\n", name, count, static_cast<signed char>(code),
                           weight, zone);
        writeDateLog(m_date.format("%c", zone));
        writeDateLogFormat("in timeZone %d\r\n", zone);
        logSessionInfo(info);
        logHolidaysInfo(holidays);
    }
    if (m_date.m_value <= 1) return;
    const uint32_t before = m_date.m_value;
    const int signedCount = subtracting ? Negated(count) : count;
    const uint8_t walkZone = resolvedZone(zone);
    if (code != kIntraday) {
        m_date.stepPeriods(signedCount, code, zone);
    } else if (info && weight <= -1) {
        // Zero or positive weights are ticks, which no calendar can walk: nothing happens.
        if (info->bSingleSessionStandard && (!holidays || holidays->bAreAllHolidaysFull)) {
            const int start = info->sStartTime[0];
            const int end = info->sEndTime[0];
            WallTime last{static_cast<int>(hourOf(end)), static_cast<int>(minuteOf(end)) - 1};
            if (last.minute < 0) {
                last.minute = 59;
                last.hour = last.hour == 0 ? 23 : last.hour - 1;
            }
            fastWalk(signedCount, weight,
                     WallTime{static_cast<int>(hourOf(start)), static_cast<int>(minuteOf(start))},
                     last, holidays, sessionMask(info, 0), walkZone);
        } else {
            generalWalk(signedCount, weight, info, holidays, walkZone);
        }
    }
    // Below the first representable second the value wraps to the top of the range.
    if (subtracting && m_date.m_value > before && count > 0) m_date.m_value = 0;
    if (logging) {
        writeDateLogFormat("finished %s\r\n", name);
        writeDateLog(m_date.format("%c", zone));
        writeDateLogFormat("in timeZone %d\r\n", zone);
    }
}

}  // namespace qvnrt::calendar
