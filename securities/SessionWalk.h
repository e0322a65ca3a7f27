// The questions that the intraday conversions ask of a security's trading calendar, each a
// few of Date's period walks: is this minute in a session, where does the session end, where
// does a bar begin. The walks are dear, so callers ask once per session edge, not per record.
#pragma once

#include <cstdint>

#include <qvnrt/Date.h>
#include <qvnrt/driver.h>

class CSessionInfo;
class CHolidaysInfo;

namespace qvnrt::securities {

class SessionWalk {
public:
    SessionWalk(CSessionInfo* session, CHolidaysInfo* holidays);
    // False when the security has no rules to walk by (none held, or a record not filled).
    bool usable() const { return m_session != nullptr; }

    // Whether the minute that holds `time` lies in a session. When it does not, `next` is
    // the first minute of the following session; everything before it can be skipped.
    bool minuteTest(uint32_t time, uint32_t& next) const;
    // The last second of the session that holds `time`, walking bars of `walkWeight` and
    // stamping the last one with `lastWeight`; `lastBarStart` gets the first second of the
    // session's last bar.
    uint32_t sessionEnd(uint32_t time, int walkWeight, int lastWeight,
                        uint32_t& lastBarStart) const;
    // The same, and `nextStart` gets the first second of the next live session.
    uint32_t sessionEnd(uint32_t time, int walkWeight, int lastWeight, uint32_t& lastBarStart,
                        uint32_t& nextStart) const;
    // The first second of the bar of `weight` that holds `time`: one bar on and one back.
    uint32_t barStart(uint32_t time, int weight) const;
    uint32_t firstSecond(uint32_t time, int weight) const;
    uint32_t lastSecond(uint32_t time, int weight) const;

    // Steps of a single walk, for the callers that follow the Part's own sequence.
    Date at(uint32_t time) const;
    void add(Date& date, int weight) const;
    void sub(Date& date, int weight) const;
    void toNextSessionStart(Date& date) const;
    void toLastSecond(Date& date, int weight) const;
    void toFirstSecond(Date& date, int weight) const;

    static uint32_t minuteOf(uint32_t time) {
        return time < DATE_SECONDS_BASE ? time : time - (time - DATE_SECONDS_BASE) % 60;
    }

private:
    SESSION_INFO* m_session = nullptr;
    HOLIDAYS_INFO* m_holidays = nullptr;  // null when there are no rows
    uint8_t m_zone = 0;
};

}  // namespace qvnrt::securities
