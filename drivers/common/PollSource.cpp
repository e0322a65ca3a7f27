#include "PollSource.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace QVN_DRIVER_NAMESPACE {

namespace {

void CloseIfOpen(int& fd) {
    if (fd >= 0) ::close(fd);
    fd = -1;
}

bool Watch(int epoll, int fd) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    return ::epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event) == 0;
}

}  // namespace

PollSource::PollSource() {
    m_epoll = ::epoll_create1(EPOLL_CLOEXEC);
    m_timer = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    m_event = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    if (m_epoll < 0 || m_timer < 0 || m_event < 0 || !Watch(m_epoll, m_timer) ||
        !Watch(m_epoll, m_event)) {
        std::fprintf(stderr, "%s: cannot make the poll descriptor: %s\n", QVN_DRIVER_NAME,
                     std::strerror(errno));
        CloseIfOpen(m_epoll);
        CloseIfOpen(m_timer);
        CloseIfOpen(m_event);
    }
}

PollSource::~PollSource() {
    CloseIfOpen(m_epoll);
    CloseIfOpen(m_timer);
    CloseIfOpen(m_event);
}

void PollSource::Arm(int intervalMs) {
    if (m_timer < 0) return;
    itimerspec timing{};
    timing.it_interval.tv_sec = intervalMs / 1000;
    timing.it_interval.tv_nsec = static_cast<long>(intervalMs % 1000) * 1000000L;
    timing.it_value = timing.it_interval;
    ::timerfd_settime(m_timer, 0, &timing, nullptr);
}

void PollSource::Signal() {
    if (m_event < 0) return;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_event, &one, sizeof one);
}

uint64_t PollSource::Drain() {
    uint64_t ticks = 0;
    if (m_timer >= 0 && ::read(m_timer, &ticks, sizeof ticks) != sizeof ticks) ticks = 0;
    if (m_event >= 0) {
        uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = ::read(m_event, &count, sizeof count);
    }
    return ticks;
}

}  // namespace QVN_DRIVER_NAMESPACE
