#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>
#include <vector>

#include <qvnrt/host.h>

namespace qvnrt {
namespace {

using Callback = std::shared_ptr<std::function<void()>>;

struct Timer {
    int fd;
    Callback fn;
};

struct Watch {
    uint64_t serial;  // tells a watch from a later one on the same descriptor
    Callback fn;
};

// What one poll(2) waited for: a watch (by descriptor and serial) or a timer (by id).
struct Waited {
    bool isTimer;
    int fd;
    uint64_t key;
};

uint64_t MonotonicMs() {
    struct timespec now;
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000u +
           static_cast<uint64_t>(now.tv_nsec) / 1000000u;
}

}  // namespace

struct PollLoop::State {
    std::map<TimerId, Timer> timers;
    std::map<int, Watch> watches;
    TimerId nextTimerId = 1;
    uint64_t nextSerial = 1;
    uint64_t quitCount = 0;   // quit() calls so far; runOnce stops when it changes
    bool quitRequested = false;  // ends run() and runFor(); consumed when they return

    ~State() {
        for (const auto& entry : timers) ::close(entry.second.fd);
    }

    // A callback that removes its own timer or watch is still running: the entry's function
    // lives on in this copy until the call returns.
    Callback CurrentCallback(const Waited& waited) const {
        if (waited.isTimer) {
            const auto timer = timers.find(waited.key);
            return timer == timers.end() ? nullptr : timer->second.fn;
        }
        const auto watch = watches.find(waited.fd);
        return (watch == watches.end() || watch->second.serial != waited.key) ? nullptr
                                                                              : watch->second.fn;
    }
};

PollLoop::PollLoop() : m_state(std::make_unique<State>()) {}

PollLoop::~PollLoop() = default;

MainLoop::TimerId PollLoop::addTimer(unsigned ms, std::function<void()> fn) {
    if (!fn) return 0;
    const int fd = ::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (fd < 0) return 0;
    // A zero interval would disarm a timerfd; a 0 ms timer fires as often as the loop can,
    // at most once a millisecond.
    const unsigned period = ms == 0 ? 1 : ms;
    struct itimerspec interval = {};
    interval.it_interval.tv_sec = period / 1000;
    interval.it_interval.tv_nsec = static_cast<long>(period % 1000) * 1000000L;
    interval.it_value = interval.it_interval;
    if (::timerfd_settime(fd, 0, &interval, nullptr) != 0) {
        ::close(fd);
        return 0;
    }
    const TimerId id = m_state->nextTimerId++;
    m_state->timers.emplace(id, Timer{fd, std::make_shared<std::function<void()>>(std::move(fn))});
    return id;
}

void PollLoop::removeTimer(TimerId id) {
    const auto timer = m_state->timers.find(id);
    if (timer == m_state->timers.end()) return;
    ::close(timer->second.fd);
    m_state->timers.erase(timer);
}

void PollLoop::watchFd(int fd, std::function<void()> fn) {
    if (fd < 0) return;
    if (!fn) {
        unwatchFd(fd);
        return;
    }
    m_state->watches[fd] =
        Watch{m_state->nextSerial++, std::make_shared<std::function<void()>>(std::move(fn))};
}

void PollLoop::unwatchFd(int fd) { m_state->watches.erase(fd); }

int PollLoop::runOnce(int timeoutMs) {
    State& state = *m_state;
    std::vector<struct pollfd> fds;
    std::vector<Waited> waited;
    fds.reserve(state.watches.size() + state.timers.size());
    waited.reserve(fds.capacity());
    for (const auto& [fd, watch] : state.watches) {
        fds.push_back({fd, POLLIN, 0});
        waited.push_back({false, fd, watch.serial});
    }
    for (const auto& [id, timer] : state.timers) {
        fds.push_back({timer.fd, POLLIN, 0});
        waited.push_back({true, timer.fd, id});
    }

    const int ready = ::poll(fds.data(), fds.size(), timeoutMs < 0 ? -1 : timeoutMs);
    if (ready <= 0) return 0;  // timeout, or a signal (EINTR): the caller waits again

    // Callbacks may add or remove timers and watches, including their own: each entry is
    // looked up again before its call, so a removed one is skipped and an added one waits
    // for the next round.
    const uint64_t quitCount = state.quitCount;
    int calls = 0;
    for (size_t i = 0; i < fds.size(); ++i) {
        const short events = fds[i].revents;
        if (events == 0) continue;
        if (!waited[i].isTimer && (events & POLLNVAL)) {
            // The descriptor was closed without unwatchFd; it would be reported ready forever.
            const auto watch = state.watches.find(waited[i].fd);
            if (watch != state.watches.end() && watch->second.serial == waited[i].key) {
                state.watches.erase(watch);
            }
            continue;
        }
        const Callback fn = state.CurrentCallback(waited[i]);
        if (!fn) continue;
        if (waited[i].isTimer) {
            // Expirations missed while busy are folded into one call, as timer messages were.
            uint64_t expirations = 0;
            if (::read(waited[i].fd, &expirations, sizeof(expirations)) != sizeof(expirations)) {
                continue;
            }
        }
        ++calls;
        (*fn)();
        if (state.quitCount != quitCount) break;  // the rest stays ready for the next round
    }
    return calls;
}

void PollLoop::run() {
    m_state->quitRequested = false;
    while (!m_state->quitRequested) runOnce(-1);
    m_state->quitRequested = false;
}

void PollLoop::runFor(unsigned ms) {
    m_state->quitRequested = false;
    const uint64_t deadline = MonotonicMs() + ms;
    while (!m_state->quitRequested) {
        const uint64_t now = MonotonicMs();
        if (now >= deadline) break;
        runOnce(static_cast<int>(std::min<uint64_t>(deadline - now, INT32_MAX)));
    }
    m_state->quitRequested = false;
}

void PollLoop::quit() {
    ++m_state->quitCount;
    m_state->quitRequested = true;
}

}  // namespace qvnrt
