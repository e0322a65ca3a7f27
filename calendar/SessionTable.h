// Reading SESSION_INFO and HOLIDAYS_INFO for the period walks, and calendar days counted on
// month, day and year, without a value and so without a zone.
#pragma once

#include <cstdint>

#include <qvnrt/Date.h>

namespace qvnrt::calendar {

// A session time or time of day as the records hold it: hour x 256 + minute.
inline int clockTime(uint32_t hour, uint32_t minute) {
    return static_cast<int>(hour * 256 + minute);
}
inline uint32_t hourOf(int time) {
    return static_cast<uint16_t>(time) >> 8;
}
inline uint32_t minuteOf(int time) {
    return static_cast<uint32_t>(time) & 0xFF;
}

inline bool sessionExists(const SESSION_INFO* info, int session) {
    return info->bSession[session] != 0;
}
inline int sessionStartTime(const SESSION_INFO* info, int session) {
    return info->sStartTime[session];
}
inline int sessionEndTime(const SESSION_INFO* info, int session) {
    return info->sEndTime[session];
}
inline uint8_t sessionMask(const SESSION_INFO* info, int session) {
    return static_cast<uint8_t>(info->tradeDays[session] & 0xFF);
}
inline bool isSameDay(const SESSION_INFO* info) {
    return info->bIsFirstSessionSameDay != 0;
}

// Rows that a calculation may read: a negative count is none.
inline int holidayRows(const HOLIDAYS_INFO* holidays) {
    return holidays && holidays->sNumHolidays > 0 ? holidays->sNumHolidays : 0;
}

// Every date comparison of holiday work goes through this ordinal.
inline int holidayOrdinal(int year, int month, int day) {
    return (year * 12 + month) * 31 + day;
}
inline int holidayOrdinal(const HOLIDAY_ROW& row) {
    return holidayOrdinal(row.year, row.month, row.day);
}

// The first row dated on or after the ordinal. Rows come sorted by date; a scan that starts
// here sees what a scan from the first row would, at a cost that does not grow with the table.
inline int firstRowFrom(const HOLIDAYS_INFO* holidays, int ordinal) {
    int low = 0, high = holidayRows(holidays);
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (holidayOrdinal(holidays->rows[middle]) < ordinal) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

// Whether a row closes every session of the day with that ordinal.
inline bool fullHolidayOn(int ordinal, const HOLIDAYS_INFO* holidays) {
    const int rows = holidayRows(holidays);
    for (int k = firstRowFrom(holidays, ordinal); k < rows; ++k) {
        const int rowOrdinal = holidayOrdinal(holidays->rows[k]);
        if (rowOrdinal > ordinal) return false;
        if (holidays->rows[k].session == 4) return true;
    }
    return false;
}

// Where a fresh scan for a session on that calendar date may start: its rows are dated on it
// or, for an evening session, the day after.
inline int firstRowFrom(const HOLIDAYS_INFO* holidays, uint32_t month, uint32_t day,
                        uint32_t year) {
    return firstRowFrom(holidays, holidayOrdinal(static_cast<int>(year), static_cast<int>(month),
                                                 static_cast<int>(day)));
}

inline void stepCalendarDays(uint32_t& month, uint32_t& day, uint32_t& year, int days) {
    Date::dateFromJulian(Date::julianFromDate(month, day, year) + static_cast<uint32_t>(days),
                         month, day, year);
}

// 1 for Monday to 7 for Sunday.
inline int weekdayOf(uint32_t month, uint32_t day, uint32_t year) {
    const uint32_t julian = Date::julianFromDate(month, day, year);
    return static_cast<int>(((julian + 1) % 7 + 6) % 7 + 1);
}
inline int nextWeekday(int weekday) {
    return weekday >= 7 ? 1 : weekday + 1;
}
inline int previousWeekday(int weekday) {
    return weekday <= 1 ? 7 : weekday - 1;
}

// The seconds of a bar of that weight (negative minutes), kept wide: weights come from
// applications unchecked.
inline int64_t barSeconds(int weight) {
    return -static_cast<int64_t>(weight) * 60;
}

}  // namespace qvnrt::calendar
