// The calendar's process-wide texts: the error texts of the string table, the last error
// raised, and the object that Date::format fills. Loaded by Date::ensureDateStatics.
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

}  // namespace qvnrt::calendar
