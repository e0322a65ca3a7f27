/// \file
/// Date, one instant as an unsigned 32-bit value (3000000 plus the seconds since 1 January
/// 1900 GMT; 0 no date, 1 invalid), with zones, daylight rules and the walks by trading bars.
/// Every time the library hands to an application is a Date value: value - EPOCH_1970 is a
/// time_t. The calendar's statics are not reentrant: use it from the main loop's thread.
// Date: one instant, held as an unsigned 32-bit count of seconds, always GMT.
//
// The value:
//   0                   no date
//   1                   invalid, or earlier than 1 January 1900; every calculation that
//                       starts from a value below 2 stops without changing anything
//   2415021 - 2999999   a Julian day number. The constructor never stores one (it makes
//                       noon GMT of that day); the field accessors read one as that day at
//                       12:00:00
//   3000000 and above   3000000 + seconds since 1 January 1900 00:00:00 GMT
// The largest value is 3 January 2036, 13:08:15 GMT; years past 2035 wrap silently.
//
// A zone is applied only when a value is made from fields or taken apart into them. Zone
// ids: 0 the machine's zone; 1 to 50 the rows of the library's zone table, with their
// daylight rules and history; 23 GMT, never converted; 51 to 254 reckoned as row 18
// (kept: callers pass unknown exchange zones and rely on getting row 18), while the id
// stored in the Date stays as given; 255, as an argument, the Date's own zone.
//
// Day masks (isTradingDay, addTradingDays): a byte with its low bit set is a period letter
// ('M', 'W', 'Y', 'I') and as a mask means Monday to Friday. With the low bit clear, bit
// 0x40 set allows Monday, 0x20 clear Tuesday, 0x10 clear Wednesday, 0x08 clear Thursday,
// 0x04 set Friday, 0x02 set Saturday, 0x80 set Sunday. The inverted middle of the week is
// deliberate: it makes 'D' (0x44), the daily period code, mean Monday to Friday.
//
// Not reentrant: the last-error text, the text that format() returns, the machine's zone
// and the log are process-wide, and nothing guards them.
#pragma once

#include <cstdint>

#include <qvnrt/CVString.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/driver.h>  // SESSION_INFO, HOLIDAYS_INFO: the rules the period walks follow
#include <qvnrt/export.h>

inline constexpr uint32_t DATE_SECONDS_BASE = 3000000;
inline constexpr uint32_t FIRST_JULIAN_DAY = 2415021;  // 1 January 1900
#ifndef EPOCH_1970
// Added to a time_t, gives a Date value; the same definition as in qvnrt/driver.h.
#define EPOCH_1970 2211988800u
#endif

inline constexpr uint8_t ZONE_LOCAL = 0;
inline constexpr uint8_t ZONE_FALLBACK = 18;
inline constexpr uint8_t ZONE_GMT = 23;
inline constexpr uint8_t ZONE_DEFAULT = 255;

inline constexpr uint8_t DAYS_ALL = 0xC6;  // every day of the week, as a day mask

class QVNRT_API Date {
public:
    // m_bValid 1, m_value julianToValue(value), zone GMT, cache cleared.
    Date(uint32_t value = 0, uint16_t sequence = 0);
    Date(const Date& other);
    Date& operator=(const Date& other);

    // ---- Values and Julian days ----------------------------------------------------------

    // 0 and values of 3000000 or more as given; below 2415021 gives 1; a Julian day gives
    // the value of noon GMT of that day.
    static uint32_t julianToValue(uint32_t value);
    // Algorithm 199 of the Collected Algorithms of the ACM, in 32-bit unsigned arithmetic,
    // on the normalised year.
    static uint32_t julianFromDate(uint32_t month, uint32_t day, uint32_t year);
    static void dateFromJulian(uint32_t julian, uint32_t& month, uint32_t& day, uint32_t& year);

    // ---- Making a value from fields ------------------------------------------------------

    // Validates: a bad year stores "Invalid Year", a bad month or day "Invalid Month/Day" in
    // lastError(), and leaves m_bValid 0 and the value 1. Otherwise noon GMT of that day.
    // Zone GMT, sequence 0.
    void setDate(uint32_t day, uint32_t month, uint32_t year);
    // Does not validate. m_timeZone becomes the zone (255 leaves it as it is).
    void setDateTime(uint32_t day, uint32_t month, uint32_t year, uint32_t hour, uint32_t minute,
                     uint32_t second, uint8_t zone = ZONE_DEFAULT);
    // The value of that wall-clock time in the zone; 1 before 1 January 1900. In zones whose
    // daylight time lies within one calendar year, a wall-clock time that the change to
    // daylight time skips comes out an hour later, and one that the change back repeats is
    // taken in daylight time, the first of the two.
    uint32_t makeValue(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                       uint32_t second, uint8_t zone = ZONE_DEFAULT) const;
    // makeValue at 12:00:00 GMT.
    uint32_t makeNoonValue(uint32_t month, uint32_t day, uint32_t year) const;

    // ---- Taking a value apart ------------------------------------------------------------

    void getMDY(uint32_t& month, uint32_t& day, uint32_t& year, uint8_t zone = ZONE_DEFAULT) const;
    void getMDYHMS(uint32_t& month, uint32_t& day, uint32_t& year, uint32_t& hour, uint32_t& minute,
                   uint32_t& second, uint8_t zone = ZONE_DEFAULT) const;
    uint32_t getYear(uint8_t zone = ZONE_DEFAULT) const;
    uint32_t getMonth(uint8_t zone = ZONE_DEFAULT) const;
    uint32_t getDay(uint8_t zone = ZONE_DEFAULT) const;
    uint32_t getHour(uint8_t zone = ZONE_DEFAULT) const;
    uint32_t getMinute(uint8_t zone = ZONE_DEFAULT) const;
    uint32_t getSecond(uint8_t zone = ZONE_DEFAULT) const;
    // 1 for Monday to 7 for Sunday.
    uint32_t dayOfWeek(uint8_t zone = ZONE_DEFAULT) const;
    // 0 for 1 January.
    uint32_t dayOfYear(uint8_t zone = ZONE_DEFAULT) const;
    // strftime of the fields in the zone (no daylight flag) into 128 bytes; a result that
    // does not fit is empty. The result lives in one process-wide object, overwritten by
    // the next call.
    CVString& format(const char* pattern, uint8_t zone = ZONE_DEFAULT) const;

    // ---- Order ---------------------------------------------------------------------------

    // A greater value, or the same value with a greater m_sequence.
    bool isAfter(const Date& other) const;
    bool isBefore(const Date& other) const;
    bool operator>(const Date& other) const { return isAfter(other); }
    bool operator<(const Date& other) const { return isBefore(other); }

    // ---- Calendar rules ------------------------------------------------------------------

    // Below 10 adds 2000, 10 to 99 adds 1900.
    static uint32_t normaliseYear(uint32_t year);
    // 0 to 99, or 1900 to 2035.
    static bool validYear(uint32_t year);
    static bool validDate(uint32_t month, uint32_t day, uint32_t year);
    // 0 for a month outside 1 to 12.
    static uint32_t daysInMonth(uint32_t month, uint32_t year);
    static bool isLeapYear(uint32_t year);

    // ---- Day names -----------------------------------------------------------------------

    // 1 for Monday to 7 for Sunday: a name of three letters or more, in any case, that
    // begins a day's name ("Mon", "monday"). Otherwise 0, and "Invalid Day Name" in
    // lastError().
    static uint32_t dayNumberFromName(const char* name);
    // "MONDAY" to "SUNDAY" for 1 to 7; null for any other number.
    static const char* dayNameFromNumber(uint32_t day);
    // The latest day of that name at or before this one (today counts), at the same wall
    // clock in the zone. A name that does not resolve gives m_bValid 0 and value 1.
    Date lastDayNamed(const char* name, uint8_t zone = ZONE_DEFAULT) const;

    // ---- Calendar steps ------------------------------------------------------------------
    // Steps by days and weeks keep the wall-clock hour across a daylight change. Every step
    // sets m_sequence to 0.

    void addWeeks(int count, uint8_t zone = ZONE_DEFAULT);
    void subWeeks(int count, uint8_t zone = ZONE_DEFAULT) { addWeeks(negated(count), zone); }
    // Whole years by addYears, then one nextMonth or previousMonth per month left.
    void addMonths(int count, uint8_t zone = ZONE_DEFAULT);
    // 29 February goes to the 28th.
    void addYears(int count, uint8_t zone = ZONE_DEFAULT);
    void subYears(int count, uint8_t zone = ZONE_DEFAULT) { addYears(negated(count), zone); }
    // The day goes down until the date is valid (31 January to the end of February), and
    // stays there on later steps.
    void nextMonth(uint8_t zone = ZONE_DEFAULT);
    void previousMonth(uint8_t zone = ZONE_DEFAULT);
    // Steps over days that the mask does not allow. A mask that allows no day leaves the
    // Date unchanged.
    void addTradingDays(int count, uint8_t mask, uint8_t zone = ZONE_DEFAULT);
    void subTradingDays(int count, uint8_t mask, uint8_t zone = ZONE_DEFAULT) {
        addTradingDays(negated(count), mask, zone);
    }
    bool isTradingDay(uint8_t mask, uint8_t zone = ZONE_DEFAULT) const;

    // 'M' addMonths, 'W' addWeeks, 'Y' addYears, any other odd code nothing; an even code
    // is a day mask for addTradingDays.
    void stepPeriods(int count, char code, uint8_t zone = ZONE_DEFAULT);
    // stepPeriods by -count; a result that wrapped below zero becomes 0.
    void unstepPeriods(int count, char code, uint8_t zone = ZONE_DEFAULT);

    // ---- Trading periods -----------------------------------------------------------------
    // Steps by the bars of a security's trading calendar: its sessions (up to four a day, on
    // the days that each session's mask names), its holidays, in `zone` (the zone of the
    // session times, normally session->chTimeZone; 255 is the Date's own).
    //
    // newBarWeight is the width of a bar: negative for minutes (-5 is a five-minute bar),
    // zero or positive for ticks, which the calendar cannot walk. Bars are cut from each
    // session's first second; a session's last bar ends with the session and may be short,
    // and it counts as a whole bar. `holidays` may be null: every day is then open. A null
    // `session` does nothing (the calendar codes of addPeriods and subPeriods still step,
    // since they need no session). Nothing is reported: a Date that cannot be walked (value
    // below 2, an unusable session table) is left where it stands.
    //
    // Kept as the calendar has always walked, because callers depend on its exact landings:
    // - with a table of full holidays, a walk by one plain session that goes a whole day of
    //   bars beyond the next trading day lands outside the session;
    // - beyond 260 weeks of bars, whole weeks are skipped without regard to their holidays;
    // - for a security that opens its trading day the evening before, the search for the
    //   previous or next live session passes over a calendar day when it wraps round the
    //   session table.
    // One bar on and one back from any live minute returns to it, and from nowhere else: the
    // in-session test of the bar conversions relies on that.

    // code 'I': `count` bars on (negative: back) from the bar that holds this instant,
    // landing on a bar's first second; any other code goes to stepPeriods.
    void addPeriods(int count, char code, int newBarWeight, SESSION_INFO* session,
                    HOLIDAYS_INFO* holidays, uint8_t zone = ZONE_DEFAULT);
    // addPeriods by -count; a result that wrapped below zero becomes 0.
    void subPeriods(int count, char code, int newBarWeight, SESSION_INFO* session,
                    HOLIDAYS_INFO* holidays, uint8_t zone = ZONE_DEFAULT);
    // To the first second of the bar that holds this instant; from a gap between live
    // sessions, to the first second of the last bar before the gap.
    void setToFirstSecondOfPeriod(int newBarWeight, SESSION_INFO* session, HOLIDAYS_INFO* holidays,
                                  uint8_t zone = ZONE_DEFAULT);
    // To the last second of the bar that holds this instant (a short last bar ends with its
    // session); from a gap, to the last second of the first bar after it.
    void setToLastSecondOfPeriod(int newBarWeight, SESSION_INFO* session, HOLIDAYS_INFO* holidays,
                                 uint8_t zone = ZONE_DEFAULT);
    // To the first second of the next live session after the one that holds (or precedes)
    // this instant.
    void toNextSessionStart(SESSION_INFO* session, HOLIDAYS_INFO* holidays,
                            uint8_t zone = ZONE_DEFAULT);

    // ---- Module state --------------------------------------------------------------------

    // Runs once per process, in front of the constructors and dayNumberFromName: reads
    // LOGDATECALLS of [INHOUSEDEVELOPMENT] in QUORVANE.INI (a value starting with 'T' or
    // 't' turns the DATE.LOG log on) and loads the error texts.
    static void ensureDateStatics();
    // The last error raised by setDate or dayNumberFromName; only ever overwritten.
    static const CString& lastError();

    int32_t m_bValid;
    uint32_t m_value;
    uint8_t m_timeZone;
    uint16_t m_sequence;
    // Change moments of one zone and year, kept so that repeated conversions in a year
    // reckon them once; they are filled by the const accessors too.
    mutable uint8_t m_cachedZone;
    mutable uint32_t m_cachedYear;
    mutable uint32_t m_cachedStdChange;
    mutable uint32_t m_cachedDstChange;

private:
    static int negated(int count) { return static_cast<int>(0u - static_cast<unsigned>(count)); }
    uint8_t resolvedZone(uint8_t zone) const { return zone == ZONE_DEFAULT ? m_timeZone : zone; }
    // m_value as wall-clock seconds in the zone (zone already resolved).
    uint32_t zonedValue(uint32_t value, uint8_t zone) const;
    // The hour rule: after a step by whole days, puts back the wall-clock hour that a
    // daylight change moved.
    void keepWallClockHour(uint32_t hourBefore, uint8_t zone);
    void clearCache();
};

static_assert(sizeof(Date) == 28, "Date's fields are laid out as applications expect");

extern "C" {
// The host calls this when the machine's zone setting changes: zone 0 is read again at its
// next use.
QVNRT_API void setTimeZoneChangeFromQvn(void);
}
