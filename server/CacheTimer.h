// The cache timer: the library's one 300 ms timer on the main loop, its heartbeat, and the
// deliveries that the layers above hand it as steps.
//
// The server knows no security class. A layer that has something to deliver on the timer
// registers a step, a plain function that runs on every effective tick; the step finds
// its own state. The store's clock is refreshed here directly, at every call, before the
// 150 ms rule is applied.
#pragma once

#include <cstdint>
#include <vector>

#include <qvnrt/host.h>

namespace qvnrt::server {

// Where a step runs within an effective tick: in ascending order of stage, and within one
// stage in the order of registration. The stages are the timer's deliveries, in the order
// in which it has always made them.
enum class TickStage {
    PendingTicks = 1,  // ticks buffered for securities that were not ready for them
    PendingEod = 2,    // end-of-day records buffered the same way
    LiveStores = 3,    // the open intraday stores pushing what is live
};

// A step. It runs on the main loop's thread, after OnHeartBeatTick, with the busy flag set.
// An exception that it lets out ends that tick's remaining steps and leaves CacheTimerProc.
using TickStep = void (*)();

class CacheTimer {
public:
    CacheTimer() = default;
    CacheTimer(const CacheTimer&) = delete;
    CacheTimer& operator=(const CacheTimer&) = delete;
    // Leaves the loop that it was started on, if that loop is still the current one: an
    // application's loop that was replaced may be gone, and the library's own outlives all.
    ~CacheTimer();

    // Registers `step` at `stage`. A step already registered stays where it is, so calling
    // this again is harmless. Steps may be added or removed from inside a step; the change
    // counts from the next tick.
    void addStep(TickStage stage, TickStep step);
    void removeStep(TickStep step);

    // Puts the timer on the current main loop. Only the first call does anything.
    void start();

    // One call of the timer procedure; `systemTime` is the tick count of the call.
    void tick(uint32_t systemTime);

    // True while an effective tick runs its steps; guards against re-entry alone.
    bool busy() const { return m_busy; }
    // The tick count at the end of the last effective tick.
    uint32_t lastTick() const { return m_lastTick; }

private:
    struct Step {
        TickStage stage;
        TickStep run;
    };

    std::vector<Step> m_steps;
    bool m_busy = false;
    uint32_t m_lastTick = 0;
    MainLoop* m_loop = nullptr;
    MainLoop::TimerId m_timer = 0;
};

// The server's one timer, made at first use.
CacheTimer& TheCacheTimer();

}  // namespace qvnrt::server
