// Wall clock of one zone of the library's zone table, with its daylight rule.
//
// The simulation reads the same rules the library reads (for zone 18 that is daylight from
// the first Sunday of April to the last Sunday of October), so that a session edge that the
// simulation produces falls exactly where the library's calendar expects it. With the
// modern calendar switched on (CalendarMode.h) it keeps today's rules instead, as the
// library then does.
#pragma once

#include <cstdint>

namespace qvnsim {

struct ZoneRule {
    int bias;    // seconds; GMT = wall clock + bias
    int change;  // seconds after 00:00 GMT of the picked day
    int month;   // 0: the zone keeps one bias all year
    int week;    // 1 to 4, 5 for the last; with day 0, the day of the month
    int day;     // 1 Monday to 7 Sunday, or 0
};

class ZoneClock {
  public:
    // Zones 13 (US Central), 18 (US Eastern), 22 (London), 23 (GMT) and 45 (Tokyo).
    // Any other id reads as 18, as the library does for ids it has no row for.
    explicit ZoneClock(uint8_t zoneId);

    uint8_t Id() const { return m_id; }
    bool IsDaylight(int64_t utc) const;
    int64_t UtcToLocal(int64_t utc) const;
    int64_t LocalToUtc(int64_t local) const;

  private:
    int64_t ChangeMoment(int year, const ZoneRule& rule) const;

    uint8_t m_id;
    ZoneRule m_standard;
    ZoneRule m_daylight;
    int m_modernFrom;  // 0: the row's rules every year
    ZoneRule m_modernStandard;
    ZoneRule m_modernDaylight;
};

}  // namespace qvnsim
