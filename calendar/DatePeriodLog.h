// DATE.LOG lines of the period walks: the rules they were given, each dump held open as one
// run of lines. Callers test qvnrt::calendar::dateLogEnabled() first.
#pragma once

#include <qvnrt/driver.h>

namespace qvnrt::calendar {

void logSessionInfo(const SESSION_INFO* info);
// "HOLIDAYS NULL" when there is no table.
void logHolidaysInfo(const HOLIDAYS_INFO* holidays);

}  // namespace qvnrt::calendar
