// Date: the calendar steps by days, weeks, months, years and trading days.
#include <qvnrt/Date.h>

#include "calendar/DayMask.h"

namespace {

using qvnrt::calendar::dayAllowed;
using qvnrt::calendar::daysPerWeek;

constexpr uint32_t kHour = 3600;
constexpr uint32_t kDay = 86400;
constexpr uint32_t kWeek = 604800;

// Lowers the day until the date exists: 31 January a month on is the end of February.
void ReduceDayUntilValid(uint32_t month, uint32_t& day, uint32_t year) {
    while (day > 1 && !Date::validDate(month, day, year)) --day;
}

// Moves month and year in the zone, keeps the wall clock, and reduces the day until the date
// is valid: 31 January goes to the end of February, and the day stays reduced afterwards.
template <class Move>
void MoveMonthAndYear(Date& date, uint8_t zone, Move move) {
    if (date.m_value < 2) return;
    if (zone == ZONE_DEFAULT) zone = date.m_timeZone;
    uint32_t month, day, year, hour, minute, second;
    date.getMDYHMS(month, day, year, hour, minute, second, zone);
    move(month, year);
    ReduceDayUntilValid(month, day, year);
    date.m_value = date.makeValue(month, day, year, hour, minute, second, zone);
    date.m_sequence = 0;
}

}  // namespace

void Date::keepWallClockHour(uint32_t hourBefore, uint8_t zone) {
    const uint32_t hourAfter = getHour(zone);
    if (hourBefore == hourAfter) return;
    if (hourBefore == hourAfter + 1) {
        m_value += kHour;
    } else if (hourBefore + 1 == hourAfter) {
        m_value -= kHour;
    } else if (hourBefore == 0) {  // the change moved the time back over midnight
        m_value += kHour;
    } else if (hourBefore == 23) {  // or forward over it
        m_value -= kHour;
    }
}

void Date::addWeeks(int count, uint8_t zone) {
    if (m_value < 2) return;
    zone = resolvedZone(zone);
    const uint32_t span = static_cast<uint32_t>(count) * kWeek;  // wraps as the value does
    if (zone == ZONE_GMT) {
        m_value += span;
        m_sequence = 0;
        return;
    }
    const uint32_t hourBefore = getHour(zone);
    m_value += span;
    keepWallClockHour(hourBefore, zone);
    m_sequence = 0;
}

void Date::addYears(int count, uint8_t zone) {
    MoveMonthAndYear(*this, zone, [count](uint32_t&, uint32_t& year) {
        year += static_cast<uint32_t>(count);
    });
}

void Date::nextMonth(uint8_t zone) {
    MoveMonthAndYear(*this, zone, [](uint32_t& month, uint32_t& year) {
        if (month >= 12) {
            month = 1;
            ++year;
        } else {
            ++month;
        }
    });
}

void Date::previousMonth(uint8_t zone) {
    MoveMonthAndYear(*this, zone, [](uint32_t& month, uint32_t& year) {
        if (month <= 1) {
            month = 12;
            --year;
        } else {
            --month;
        }
    });
}

void Date::addMonths(int count, uint8_t zone) {
    if (count == 0) return;
    addYears(count / 12, zone);
    const bool forward = count > 0;
    const unsigned magnitude =
        forward ? static_cast<unsigned>(count) : 0u - static_cast<unsigned>(count);
    for (unsigned i = 0; i < magnitude % 12; ++i) {
        if (forward) {
            nextMonth(zone);
        } else {
            previousMonth(zone);
        }
    }
}

bool Date::isTradingDay(uint8_t mask, uint8_t zone) const {
    return dayAllowed(mask, dayOfWeek(zone));
}

void Date::addTradingDays(int count, uint8_t mask, uint8_t zone) {
    if (count == 0 || m_value < 2) return;
    const int perWeek = daysPerWeek(mask);
    // A mask that allows no day cannot be walked; the step would never end.
    if (perWeek == 0) return;
    zone = resolvedZone(zone);
    // Away from midnight, so that a daylight change between here and there cannot move
    // the day steps across it.
    const uint32_t hourBefore = getHour(zone);
    uint32_t putBack = 0;
    if (hourBefore == 0) {
        m_value += kHour;
        putBack = 0u - kHour;
    } else if (hourBefore == 23) {
        m_value -= kHour;
        putBack = kHour;
    }
    m_value += static_cast<uint32_t>(count / perWeek) * kWeek;
    int remainder = count % perWeek;
    const uint32_t step = count > 0 ? kDay : 0u - kDay;
    while (remainder != 0) {
        m_value += step;
        if (isTradingDay(mask, zone)) remainder += count > 0 ? -1 : 1;
    }
    m_value += putBack;
    keepWallClockHour(hourBefore, zone);
    m_sequence = 0;
}

void Date::stepPeriods(int count, char code, uint8_t zone) {
    const uint8_t byte = static_cast<uint8_t>(code);
    if ((byte & 1) == 0) {
        addTradingDays(count, byte, zone);
        return;
    }
    switch (code) {
        case 'M':
            addMonths(count, zone);
            break;
        case 'W':
            addWeeks(count, zone);
            break;
        case 'Y':
            addYears(count, zone);
            break;
        default:
            break;  // 'I' and the other letters are not calendar steps
    }
}

void Date::unstepPeriods(int count, char code, uint8_t zone) {
    if (m_value < 2) return;
    const uint32_t before = m_value;
    stepPeriods(negated(count), code, zone);
    // Stepping back below the first representable second wraps to the top of the range.
    if (m_value > before && count >= 1) m_value = 0;
}

Date Date::lastDayNamed(const char* name, uint8_t zone) const {
    Date result(*this);
    const uint32_t target = dayNumberFromName(name);
    if (target == 0) {
        result.m_bValid = 0;
        result.m_value = 1;
        return result;
    }
    if (m_value < 2) return result;
    zone = resolvedZone(zone);
    const uint32_t today = dayOfWeek(zone);
    const uint32_t daysBack = today >= target ? today - target : today + 7 - target;
    result.m_value = m_value - daysBack * kDay;
    result.keepWallClockHour(getHour(zone), zone);
    result.m_sequence = 0;
    return result;
}
