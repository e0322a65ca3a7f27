// The steps behind Date's walks by trading bars (addPeriods, subPeriods, the two edges of a
// bar, toNextSessionStart). They read a security's session and holiday tables and move one
// Date; the public operations make a PeriodWalk over the Date and call in.
//
// Session times hold the hour in the high byte and the minute in the low byte and compare
// signed; a time of day t below is hour x 256 + minute. A not same-day security
// (bIsFirstSessionSameDay 0) opens its trading day on the evening before: its sessions up to
// the crossover begin on the calendar day before their trading day.
#pragma once

#include <cstdint>

#include <qvnrt/Date.h>

namespace qvnrt::calendar {

// A time of day; the library's Time reads the clock when made, which the walks must not.
struct WallTime {
    int hour;
    int minute;
};

// ---- The session table (DateSessions.cpp) --------------------------------------------------

// The last session that starts before midnight; -1 for a same-day security. -1 with `error`
// 6 when two sessions start together, 1 when no session qualifies.
int crossoverSession(const SESSION_INFO* info, int& error);
// crossoverSession, false when a not same-day security has none to walk by.
bool usableCrossover(const SESSION_INFO* info, int& crossover);
// The trading day, 1 to 7, of session i on a calendar day of that weekday, for a time of day
// hour:minute within it.
int tradeDayOf(int weekday, int session, int crossover, const SESSION_INFO* info, int hour,
               int minute);
// Whether a holiday row closes session i of the trading day that the session on that
// calendar date at hour:minute belongs to. Rows are read from `index` on, which only grows.
// A row that shortens the session comes back in `row`, with the answer false.
bool holidayCheck(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                  int crossover, const SESSION_INFO* info, int session,
                  const HOLIDAYS_INFO* holidays, int& index, const HOLIDAY_ROW*& row);
// Whether session i counts: it exists, its mask allows the trading day, and no holiday row
// closes it (holidayCheck, with `index` and `row` as there).
bool sessionCounts(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                   int crossover, const SESSION_INFO* info, int session, int tradeDay,
                   const HOLIDAYS_INFO* holidays, int& index, const HOLIDAY_ROW*& row);
// Whole or partial bars from start to end, rounded up; negative when end is earlier.
int barsBetween(uint32_t start, uint32_t end, int weight);
// The bars of a whole week without holidays; 1 when the sessions cannot be walked.
int barsPerWeek(const SESSION_INFO* info, int weight);

// One Date being walked. It changes only the Date's value; the public operations look after
// its sequence.
class PeriodWalk {
  public:
    explicit PeriodWalk(Date& date) : m_date(date) {}

    // ---- DateSessions.cpp: where the Date stands in the tables ----------------------------

    // The session holding this instant's time of day, or -1. With `inGap` true, a time
    // between sessions answers the session that the gap follows and clears `inGap`.
    int findSession(const SESSION_INFO* info, bool& inGap, uint8_t zone) const;
    // The Date becomes the first second of session i, starting on that date, or on the day
    // before when the session must have begun there to hold hour:minute.
    void sessionStart(uint32_t month, uint32_t day, uint32_t year, uint32_t hour, uint32_t minute,
                      const SESSION_INFO* info, int session, int crossover, uint8_t zone);
    // The Date becomes the first second after session i (ended by the row when given).
    // sameTradeDay: the session's trading day is the weekday of that date.
    void sessionEnd(uint32_t month, uint32_t day, uint32_t year, const SESSION_INFO* info,
                    int session, const HOLIDAY_ROW* row, int crossover, bool sameTradeDay,
                    uint8_t zone);
    // Whether a row closes every session on this date.
    bool isFullHoliday(const HOLIDAYS_INFO* holidays, uint8_t zone) const;
    // All-session rows between the two dates, both included; -1 if a row between them
    // closes or shortens a single session.
    int countFullHolidays(const Date& other, const HOLIDAYS_INFO* holidays, uint8_t zone) const;
    // Whether any row lies between the two dates widened by a day on each side.
    bool holidayNear(const Date& other, const HOLIDAYS_INFO* holidays, uint8_t zone) const;
    // Whether a daylight change of the zone may lie between the two dates.
    bool zoneChangeNear(const Date& other, uint8_t zone) const;

    // ---- DatePeriodEdges.cpp: the edges of bars and sessions -------------------------------

    // From session i (the one holding or preceding this instant) back to the last second of
    // the latest session that is live, which may be session i itself unless skipFirst.
    // False, with the Date moved, when no live session turns up.
    bool previousSession(int& session, int crossover, const SESSION_INFO* info,
                         const HOLIDAYS_INFO* holidays, bool skipFirst, uint8_t zone);
    // From session i on to the first second of the next live session; `row` gets the row
    // that shortens it. False, with the Date moved, when none turns up.
    bool nextSession(int& session, int crossover, const SESSION_INFO* info,
                     const HOLIDAYS_INFO* holidays, int& index, uint8_t zone,
                     const HOLIDAY_ROW** row = nullptr);
    // The two edges of a bar with their log lines; false when they stopped early. The zone
    // may be 255, the Date's own.
    bool firstSecondOfPeriod(int weight, const SESSION_INFO* info, const HOLIDAYS_INFO* holidays,
                             uint8_t zone);
    bool lastSecondOfPeriod(int weight, const SESSION_INFO* info, const HOLIDAYS_INFO* holidays,
                            uint8_t zone);
    // toNextSessionStart without the sequence.
    void nextSessionStart(const SESSION_INFO* info, const HOLIDAYS_INFO* holidays, uint8_t zone);

    // ---- DateWalks.cpp: the walks -----------------------------------------------------------

    // One plain session a day, by whole days where it can. `last` is the session's last
    // minute.
    void fastWalk(int count, int weight, WallTime start, WallTime last,
                  const HOLIDAYS_INFO* holidays, uint8_t mask, uint8_t zone);
    // Any sessions: week by week, session by session near holidays and daylight changes.
    void generalWalk(int64_t count, int weight, const SESSION_INFO* info,
                     const HOLIDAYS_INFO* holidays, uint8_t zone);
    void generalWalkBackward(int64_t count, int weight, const SESSION_INFO* info,
                             const HOLIDAYS_INFO* holidays, uint8_t zone);
    // Session by session to the end (start) of the trading week, using up `count` bars on
    // the way; false when they could not walk at all.
    bool weekWalkForward(int64_t& count, int weight, const SESSION_INFO* info,
                         const HOLIDAYS_INFO* holidays, uint8_t zone);
    bool weekWalkBackward(int64_t& count, int weight, const SESSION_INFO* info,
                          const HOLIDAYS_INFO* holidays, uint8_t zone);

    // ---- DatePeriods.cpp ------------------------------------------------------------------

    // addPeriods and subPeriods: the log, the dispatch and the underflow guard.
    void stepByPeriods(int count, char code, int weight, const SESSION_INFO* info,
                       const HOLIDAYS_INFO* holidays, uint8_t zone, bool subtracting);

  private:
    // Where the Date stands for the two edges of a bar.
    struct PeriodPlace {
        int session;
        int crossover;
        uint32_t month, day, year, hour, minute, second;
        int weekday;
        bool live;
        bool skipFirst;
        const HOLIDAY_ROW* row;
    };
    bool placeInPeriod(const char* edge, int weight, const SESSION_INFO* info,
                       const HOLIDAYS_INFO* holidays, uint8_t zone, PeriodPlace& place);
    uint8_t resolvedZone(uint8_t zone) const {
        return zone == ZONE_DEFAULT ? m_date.m_timeZone : zone;
    }

    Date& m_date;
};

}  // namespace qvnrt::calendar
