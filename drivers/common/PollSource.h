// The descriptor that the library watches: an epoll set holding a timer that ticks while the
// driver's market moves (a simulation step, a replayed interval), and an event counter that
// says "answers are waiting". It is readable when either is.
#pragma once

#include <cstdint>

namespace QVN_DRIVER_NAMESPACE {

class PollSource {
public:
    PollSource();
    ~PollSource();
    PollSource(const PollSource&) = delete;
    PollSource& operator=(const PollSource&) = delete;

    // -1 when the descriptors could not be made (reported on standard error).
    int Fd() const { return m_epoll; }
    // Ticks every `intervalMs` milliseconds; 0 stops the timer.
    void Arm(int intervalMs);
    void Signal();
    // Empties both, so that the descriptor is readable again only for new work. Returns how
    // often the timer ticked since the last drain.
    uint64_t Drain();

private:
    int m_epoll = -1;
    int m_timer = -1;
    int m_event = -1;
};

}  // namespace QVN_DRIVER_NAMESPACE
