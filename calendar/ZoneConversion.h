// Wall clock to GMT and back, in any zone of the table, with the reckoning of the days
// around a daylight change.
//
// Away from a change the season follows from the date alone (seasonOf). Within a few days
// of one, the moment of the change is worked out (changeMoment) and compared; a Date keeps
// the two moments of its last zone and year, so that repeated conversions in one year cost
// one calculation.
#pragma once

#include <cstdint>

#include "calendar/ZoneTable.h"

namespace qvnrt::calendar {

// A Date's cached change moments, by reference.
struct MomentCache {
    uint8_t& zone;
    uint32_t& year;
    uint32_t& standardChange;  // 0 while unknown
    uint32_t& daylightChange;  // 0 while unknown
};

// 0 standard time, 1 daylight time, -1 near a change, for that day (year normalised).
int seasonOf(uint32_t month, uint32_t day, uint32_t year, uint8_t zone);

// The Date value of the moment at which `rule` takes effect in `year`.
//
// Kept: the leap test runs on the count of years from 1900, so 1900 counts as leap and
// 2000 does not. In 2000 the first of every month from March on therefore reads as the last
// of the month before, and a "last weekday of the month" rule from then on lands on that
// day; in the US zones the change to standard time of 2000 falls on 30 September. With the
// modern calendar on, the test runs on the calendar year.
uint32_t changeMoment(uint32_t year, const ZoneRule& rule);

// The value of a wall-clock time in the zone (not 255: 51 to 255 are row 18), 1 before
// 1900. Without a cache this is the form for callers that have no Date.
uint32_t makeValue(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                   uint32_t second, uint8_t zone, MomentCache* cache = nullptr);

// A value of 3000000 or more as wall-clock seconds in the zone (not 255).
uint32_t zonedValue(uint32_t value, uint8_t zone, MomentCache* cache = nullptr);

}  // namespace qvnrt::calendar
