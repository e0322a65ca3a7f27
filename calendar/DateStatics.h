// The calendar's process-wide state: the error texts of the string table, the last error
// raised, the object that Date::format fills (loaded by Date::ensureDateStatics), and the
// calendar mode.
#pragma once

class CVString;

namespace qvnrt::calendar {

// In the order of their string-table ids, 5237 to 5243 and 7330 to 7332.
enum class DateError {
    kInvalidMonthDay,
    kInvalidDayName,
    kInvalidMonthName,
    kInvalidMonth,
    kInvalidDay,
    kInvalidYear,
    kDateIncomplete,
    kInvalidHour,
    kInvalidMinute,
    kInvalidSecond,
};

// Copies the error's text into the last-error string.
void raiseDateError(DateError error);

// The one object that every Date::format call fills and returns.
CVString& formatResult();

// The opt-in modern calendar: value "Modern Calendar" (dword, 1 for on) of key
// Software\Quorvane\RealTime in the registry store, read at the first question and again
// by setTimeZoneChangeFromQvn; qvnrt::SetModernCalendar sets it directly. Off, the calendar
// reckons as it always has (2000 is no leap year in the daylight reckoning).
bool modernCalendar();
void setModernCalendar(bool on);
void reloadCalendarMode();

}  // namespace qvnrt::calendar
