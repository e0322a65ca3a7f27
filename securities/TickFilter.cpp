// Ticks with those outside every session removed, live and history. Nothing in a kept tick
// is changed but its time, which becomes a Date value; `flag` passes unread.

#include <qvnrt/RTSecurity.h>

#include <cstdlib>
#include <cstring>

#include "securities/SessionWalk.h"
#include "securities/TickTimes.h"

using qvnrt::securities::SessionWalk;
using qvnrt::securities::TickTime;

// The ticks not yet handled are base[0 .. total - index), newest first, so the walk from the
// oldest up goes down in memory and `tick` is base[total - 1 - index]. Their times are the
// driver's (TickTime adjusts them). Returns the first unhandled tick at or past `time`, the
// walk's new place, or null when none is; `index` counts the ticks passed over. With a
// `source` the passed-over ticks are removed instead: the handled ones above them move down
// over the gap, `total` shrinks, and `index` stays.
TICKREC* RTSecurity::FilterTicksBetweenSessions(TICKREC* tick, TICKREC* source, int& index,
                                                int& total, unsigned long time) {
    TICKREC* base = tick - (total - 1 - index);
    // Binary search over base[0 .. total - index) for the last (oldest) tick at or past time.
    int low = 0;
    int high = total - index;  // ticks base[low .. high) are candidates
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (TickTime(base[middle]) >= time) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    const int found = low - 1;  // -1: every unhandled tick lies before `time`
    const int passed = (total - 1 - index) - found;
    if (source) {
        const int handled = index;
        std::memmove(base + found + 1, base + total - handled,
                     static_cast<size_t>(handled) * sizeof(TICKREC));
        total -= passed;
    } else {
        index += passed;
    }
    return found >= 0 ? base + found : nullptr;
}

TICKREC* RTSecurity::FilterNewTicks(int& count, TICKREC* ticks) {
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable()) return nullptr;  // count unchanged: the owner is not told why
    auto* buffer = static_cast<TICKREC*>(AdjustJulians(count, ticks, sizeof(TICKREC)));
    if (!buffer) {
        count = 0;
        return nullptr;
    }
    int kept = 0;
    uint32_t skipUntil = 0;
    for (int i = 0; i < count; ++i) {
        const uint32_t time = buffer[i].time;
        if (!m_sessionEnd || time > m_sessionEnd) {
            m_sessionEnd = 0;
            if (time < skipUntil) continue;
            uint32_t next = 0;
            if (!walk.minuteTest(time, next)) {
                skipUntil = next;
                continue;
            }
            // Stamped with the owner's weight, 1: the value lies before the tick, so the
            // test simply runs again on the next one. Kept as the calendar answers it.
            uint32_t lastBar = 0;
            m_sessionEnd = walk.sessionEnd(time, -1, m_origRequest.weight, lastBar);
        }
        buffer[kept++] = buffer[i];
    }
    count = kept;
    if (kept == 0) {
        std::free(buffer);
        return nullptr;
    }
    return buffer;
}

TICKREC* RTSecurity::FilterTickDataToOrigRequest(int& count, TICKREC* ticks) {
    const SessionWalk walk(m_pSessionInfo, m_pHolidaysInfo);
    if (!walk.usable() || count <= 0 || !ticks) {
        count = 0;
        return nullptr;
    }
    const size_t bytes = static_cast<size_t>(count) * sizeof(TICKREC);
    auto* buffer = static_cast<TICKREC*>(std::malloc(bytes));
    if (!buffer) {
        m_lTickStatus = -1;
        count = 0;
        return nullptr;
    }
    std::memcpy(buffer, ticks, bytes);
    int total = count;
    int index = 0;
    uint32_t sessionEnd = 0;
    while (index < total) {
        TICKREC& tick = buffer[total - 1 - index];
        const uint32_t time = TickTime(tick);
        if (!sessionEnd || time > sessionEnd) {
            uint32_t next = 0;
            if (!walk.minuteTest(time, next)) {
                if (next <= time) next = time + 1;  // always past the tick in hand
                FilterTicksBetweenSessions(&tick, buffer, index, total, next);
                continue;
            }
            uint32_t lastBar = 0;
            sessionEnd = walk.sessionEnd(time, -1, -1, lastBar);
            if (sessionEnd < time) sessionEnd = time;  // rules that cannot be walked
        }
        tick.time = time;
        ++index;
    }
    count = total;
    if (total == 0) {
        std::free(buffer);
        return nullptr;
    }
    return buffer;
}
