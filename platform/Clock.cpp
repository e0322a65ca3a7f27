#include "platform/Clock.h"

#include <time.h>

#include <qvnrt/host.h>

namespace qvnrt {
namespace {

class SystemClock final : public Clock {
public:
    time_t Now() override { return ::time(nullptr); }
    uint32_t TickCount() override {
        struct timespec now;
        ::clock_gettime(CLOCK_MONOTONIC, &now);
        const uint64_t ms = static_cast<uint64_t>(now.tv_sec) * 1000u +
                            static_cast<uint64_t>(now.tv_nsec) / 1000000u;
        return static_cast<uint32_t>(ms);  // cut to 32 bits, as the tick count always was
    }
};

SystemClock g_systemClock;
Clock* g_clock = &g_systemClock;

}  // namespace

Clock::~Clock() = default;

Clock* SetClock(Clock* clock) {
    Clock* previous = g_clock == &g_systemClock ? nullptr : g_clock;
    g_clock = clock ? clock : &g_systemClock;
    return previous;
}

namespace platform {

time_t Now() { return g_clock->Now(); }
uint32_t TickCount() { return g_clock->TickCount(); }

}  // namespace platform
}  // namespace qvnrt
