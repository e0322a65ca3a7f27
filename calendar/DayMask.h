// Day masks: one byte saying on which days of the week something happens.
//
// A byte with its low bit set is a period letter ('M', 'W', 'Y', 'I') and as a mask means
// Monday to Friday. With the low bit clear: 0x40 set allows Monday, 0x20 clear Tuesday, 0x10
// clear Wednesday, 0x08 clear Thursday, 0x04 set Friday, 0x02 set Saturday, 0x80 set Sunday.
// The inverted test of Tuesday to Thursday is deliberate: it makes 'D' (0x44), the daily
// period code, mean Monday to Friday.
#pragma once

#include <cstdint>

namespace qvnrt::calendar {

// Weekday 1 (Monday) to 7 (Sunday); any other number is never allowed.
inline bool dayAllowed(uint8_t mask, uint32_t weekday) {
    if (mask & 1) return weekday >= 1 && weekday <= 5;  // a period letter
    switch (weekday) {
        case 1:
            return (mask & 0x40) != 0;
        case 2:
            return (mask & 0x20) == 0;
        case 3:
            return (mask & 0x10) == 0;
        case 4:
            return (mask & 0x08) == 0;
        case 5:
            return (mask & 0x04) != 0;
        case 6:
            return (mask & 0x02) != 0;
        case 7:
            return (mask & 0x80) != 0;
        default:
            return false;
    }
}

inline int daysPerWeek(uint8_t mask) {
    if (mask & 1) return 5;
    int days = 0;
    for (uint32_t weekday = 1; weekday <= 7; ++weekday) days += dayAllowed(mask, weekday) ? 1 : 0;
    return days;
}

}  // namespace qvnrt::calendar
