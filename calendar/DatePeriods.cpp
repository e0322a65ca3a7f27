// Date: addPeriods and subPeriods, the front of the period arithmetic. They log what they were
// asked, choose the walk (bars, or a calendar step for the other period codes), and guard the
// bottom of the range.
#include <qvnrt/Date.h>

#include "calendar/DateLog.h"
#include "calendar/DatePeriodLog.h"
#include "calendar/SessionTable.h"

namespace {

using qvnrt::calendar::dateLogEnabled;
using qvnrt::calendar::writeDateLog;
using qvnrt::calendar::writeDateLogFormat;

constexpr char kIntraday = 'I';

}  // namespace

void Date::addPeriods(int count, char code, int newBarWeight, SESSION_INFO* session,
                      HOLIDAYS_INFO* holidays, uint8_t zone) {
    stepByPeriods(count, code, newBarWeight, session, holidays, zone, false);
}

void Date::subPeriods(int count, char code, int newBarWeight, SESSION_INFO* session,
                      HOLIDAYS_INFO* holidays, uint8_t zone) {
    stepByPeriods(count, code, newBarWeight, session, holidays, zone, true);
}

void Date::stepByPeriods(int count, char code, int weight, const SESSION_INFO* info,
                         const HOLIDAYS_INFO* holidays, uint8_t zone, bool subtracting) {
    const char* name = subtracting ? "subPeriods" : "addPeriods";
    const bool logging = dateLogEnabled();
    if (logging) {
        writeDateLogFormat("%s %d %d %d %d\r\n", name, count, static_cast<signed char>(code),
                           weight, zone);
        writeDateLog(format("%c", zone));
        writeDateLogFormat("in timeZone %d\r\n", zone);
        qvnrt::calendar::logSessionInfo(info);
        qvnrt::calendar::logHolidaysInfo(holidays);
    }
    if (m_value <= 1) return;
    const uint32_t before = m_value;
    const int signedCount = subtracting ? negated(count) : count;
    const uint8_t walkZone = resolvedZone(zone);
    if (code != kIntraday) {
        stepPeriods(signedCount, code, zone);
    } else if (info && weight <= -1) {
        // Zero or positive weights are ticks, which no calendar can walk: nothing happens.
        if (info->bSingleSessionStandard && (!holidays || holidays->bAreAllHolidaysFull)) {
            const int start = info->sStartTime[0];
            const int end = info->sEndTime[0];
            WallTime last{static_cast<int>(qvnrt::calendar::hourOf(end)),
                          static_cast<int>(qvnrt::calendar::minuteOf(end)) - 1};
            if (last.minute < 0) {
                last.minute = 59;
                last.hour = last.hour == 0 ? 23 : last.hour - 1;
            }
            fastWalk(signedCount, weight,
                     WallTime{static_cast<int>(qvnrt::calendar::hourOf(start)),
                              static_cast<int>(qvnrt::calendar::minuteOf(start))},
                     last, holidays, qvnrt::calendar::sessionMask(info, 0), walkZone);
        } else {
            generalWalk(signedCount, weight, info, holidays, walkZone);
        }
    }
    // Below the first representable second the value wraps to the top of the range.
    if (subtracting && m_value > before && count > 0) m_value = 0;
    if (m_value != before) m_sequence = 0;
    if (logging) {
        writeDateLogFormat("finished %s\r\n", name);
        writeDateLog(format("%c", zone));
        writeDateLogFormat("in timeZone %d\r\n", zone);
    }
}
