// The zone rows of the modern calendar: rows of the zone table that stand for one region take
// that region's rules, year by year, from the machine's tz database, in the same year-tagged
// form as the table's own history rows. Rows that name no single region keep their rules.
#pragma once

#include <cstdint>

#include "calendar/ZoneTable.h"

namespace qvnrt::calendar {

// The tz database's rules of table row `zone` (1 to 50) in `year`; false for a row that is
// not mapped, a year whose changes the row's form cannot state (daylight time over the turn
// of the year), or when the database cannot be read, which is said once on std::clog.
bool modernZoneRules(uint8_t zone, uint32_t year, ZoneRule& standard, ZoneRule& daylight);

// The region of a mapped row, or null.
const char* modernZoneRegion(uint8_t zone);

}  // namespace qvnrt::calendar
