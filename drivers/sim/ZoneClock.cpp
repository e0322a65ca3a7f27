#include "ZoneClock.h"

#include "CalendarMode.h"
#include "CivilDate.h"

namespace qvnsim {

namespace {

struct ZoneRow {
    uint8_t id;
    ZoneRule standard;
    ZoneRule daylight;
    // With the modern calendar: today's rules, in force from `modernFrom` on; earlier years
    // keep the row's, which agree with the tz database back to 1987 (US) and 1996 (London).
    int modernFrom;
    ZoneRule modernStandard;
    ZoneRule modernDaylight;
};

// Rows copied from the library's zone table, with the rules that the library's modern
// calendar takes from the tz database for the years since they last changed.
constexpr ZoneRow kZones[] = {
    {13,
     {21600, 25200, 10, 5, 7},
     {18000, 28800, 4, 1, 7},
     2007,
     {21600, 25200, 11, 1, 7},
     {18000, 28800, 3, 2, 7}},
    {18,
     {18000, 21600, 10, 5, 7},
     {14400, 25200, 4, 1, 7},
     2007,
     {18000, 21600, 11, 1, 7},
     {14400, 25200, 3, 2, 7}},
    {22,
     {0, 7200, 10, 5, 7},
     {-3600, 7200, 3, 5, 7},
     1996,
     {0, 3600, 10, 5, 7},
     {-3600, 3600, 3, 5, 7}},
    {23, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, 0, {}, {}},
    {45, {-32400, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, 0, {}, {}},
};

}  // namespace

ZoneClock::ZoneClock(uint8_t zoneId)
    : m_id(zoneId),
      m_standard(),
      m_daylight(),
      m_modernFrom(0),
      m_modernStandard(),
      m_modernDaylight() {
    const ZoneRow* chosen = nullptr;
    for (const ZoneRow& row : kZones) {
        if (row.id == zoneId || (chosen == nullptr && row.id == 18)) chosen = &row;
    }
    m_standard = chosen->standard;
    m_daylight = chosen->daylight;
    if (ModernCalendarOn() && chosen->modernFrom != 0) {
        m_modernFrom = chosen->modernFrom;
        m_modernStandard = chosen->modernStandard;
        m_modernDaylight = chosen->modernDaylight;
    }
}

int64_t ZoneClock::ChangeMoment(int year, const ZoneRule& rule) const {
    const int64_t day = rule.day == 0 ? DaysFromCivil(year, rule.month, rule.week)
                                      : NthWeekdayOfMonth(year, rule.month, rule.day, rule.week);
    return day * kSecondsPerDay + rule.change;
}

bool ZoneClock::IsDaylight(int64_t utc) const {
    if (m_standard.month == 0 || m_daylight.month == 0) return false;
    const int year = CivilFromDays(DayOf(utc)).year;
    const bool modern = m_modernFrom != 0 && year >= m_modernFrom;
    const int64_t toDaylight = ChangeMoment(year, modern ? m_modernDaylight : m_daylight);
    const int64_t toStandard = ChangeMoment(year, modern ? m_modernStandard : m_standard);
    if (m_standard.month > m_daylight.month) return utc >= toDaylight && utc < toStandard;
    return !(utc >= toStandard && utc < toDaylight);
}

int64_t ZoneClock::UtcToLocal(int64_t utc) const {
    return utc - (IsDaylight(utc) ? m_daylight.bias : m_standard.bias);
}

int64_t ZoneClock::LocalToUtc(int64_t local) const {
    const int64_t asStandard = local + m_standard.bias;
    return IsDaylight(asStandard) ? local + m_daylight.bias : asStandard;
}

}  // namespace qvnsim
