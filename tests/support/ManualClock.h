// A clock that tests set by hand. Installs itself for its lifetime.
#pragma once

#include <qvnrt/host.h>

namespace qvnrt::test {

class ManualClock : public Clock {
public:
    explicit ManualClock(time_t now = 1700000000, uint32_t ticks = 1000)
        : now(now), ticks(ticks), m_previous(SetClock(this)) {}
    ~ManualClock() override { SetClock(m_previous); }

    time_t Now() override { return now; }
    uint32_t TickCount() override { return ticks; }

    time_t now;
    uint32_t ticks;

private:
    Clock* m_previous;
};

}  // namespace qvnrt::test
