#include "calendar/DatePeriodLog.h"

#include "calendar/DateLog.h"
#include "calendar/SessionTable.h"

namespace qvnrt::calendar {
namespace {

const char* TrueFalse(int flag) {
    return flag ? "true" : "false";
}

// A session time as %X prints it: promoted to int first, sign and all.
unsigned Hex(int16_t time) {
    return static_cast<unsigned>(static_cast<int>(time));
}

}  // namespace

void logSessionInfo(const SESSION_INFO* info) {
    if (!info) {
        writeDateLog("SESSION_INFO NULL\r\n");
        return;
    }
    DateLogHold hold;
    writeDateLogFormat("SESSION_INFO sOpeningSession %d chTimeZone %d bIsFirstSessionSameDay %s",
                       info->sOpeningSession, info->chTimeZone,
                       TrueFalse(info->bIsFirstSessionSameDay));
    // Kept: this line has always printed bIsFirstSessionSameDay under the name of
    // bSingleSessionStandard; logs are compared across versions.
    writeDateLogFormat("SESSION_INFO bSingleSessionStandard %s dailyPeriod %d",
                       TrueFalse(info->bIsFirstSessionSameDay), info->dailyPeriod);
    for (int i = 0; i < 4; ++i) {
        if (info->bSession[i]) {
            writeDateLogFormat("SESSION_INFO[%d] tradeDays %d sStartTime %X sEndTime %X", i,
                               info->tradeDays[i], Hex(info->sStartTime[i]),
                               Hex(info->sEndTime[i]));
        } else {
            writeDateLogFormat("SESSION_INFO[%d] bSession = false", i);
        }
    }
    writeDateLog("\r\n");
}

void logHolidaysInfo(const HOLIDAYS_INFO* holidays) {
    if (!holidays) {
        writeDateLog("HOLIDAYS NULL\r\n");
        return;
    }
    DateLogHold hold;
    writeDateLogFormat("HOLIDAY_INFO sNumHolidays %d bAreAllHolidaysFull %s",
                       holidays->sNumHolidays, TrueFalse(holidays->bAreAllHolidaysFull));
    const int rows = holidayRows(holidays);
    for (int k = 0; k < rows; ++k) {
        const HOLIDAY_ROW& row = holidays->rows[k];
        if (row.session == 4) {
            writeDateLogFormat("HOLIDAYS_INFO[%d] %d/%d/%d ALL SESSIONS", k, row.month, row.day,
                               row.year);
        } else if (row.endTime == 0xFFFF) {
            writeDateLogFormat("HOLIDAYS_INFO[%d] %d/%d/%d NO SESSION %d", k, row.month, row.day,
                               row.year, row.session);
        } else {
            writeDateLogFormat("HOLIDAYS_INFO[%d] %d/%d/%d SHORTENED SESSION %d to %X", k,
                               row.month, row.day, row.year, row.session, row.endTime);
        }
    }
    writeDateLog("\r\n");
}

}  // namespace qvnrt::calendar
