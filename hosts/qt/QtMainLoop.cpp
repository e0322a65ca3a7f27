#include <qvnrt/qt/QtMainLoop.h>

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <climits>

#include <map>

namespace qvnrt {

namespace {

// Released later rather than now: the object may be the one whose signal is being handled.
struct LaterDeleter {
    void operator()(QObject* object) const { object->deleteLater(); }
};
using TimerPtr = std::unique_ptr<QTimer, LaterDeleter>;
using NotifierPtr = std::unique_ptr<QSocketNotifier, LaterDeleter>;

}  // namespace

struct QtMainLoop::State {
    TimerId nextId = 1;
    std::map<TimerId, TimerPtr> timers;
    std::map<int, NotifierPtr> watches;
};

QtMainLoop::QtMainLoop() : m_state(std::make_unique<State>()) {}

QtMainLoop::~QtMainLoop() {
    // Stopped now, so that nothing fires between here and the deferred deletes.
    for (auto& [id, timer] : m_state->timers) timer->stop();
    for (auto& [fd, notifier] : m_state->watches) notifier->setEnabled(false);
}

MainLoop::TimerId QtMainLoop::addTimer(unsigned ms, std::function<void()> fn) {
    const TimerId id = m_state->nextId++;
    TimerPtr timer(new QTimer);
    timer->setInterval(static_cast<int>(std::min<unsigned>(ms, INT_MAX)));
    QObject::connect(timer.get(), &QTimer::timeout, [fn = std::move(fn)] { fn(); });
    timer->start();
    m_state->timers.emplace(id, std::move(timer));
    return id;
}

void QtMainLoop::removeTimer(TimerId id) {
    const auto found = m_state->timers.find(id);
    if (found == m_state->timers.end()) return;
    found->second->stop();
    m_state->timers.erase(found);
}

void QtMainLoop::watchFd(int fd, std::function<void()> fn) {
    // One notifier per descriptor: Qt refuses a second one for the same descriptor and type.
    unwatchFd(fd);
    NotifierPtr notifier(new QSocketNotifier(fd, QSocketNotifier::Read));
    QObject::connect(notifier.get(), &QSocketNotifier::activated, [fn = std::move(fn)] { fn(); });
    m_state->watches.emplace(fd, std::move(notifier));
}

void QtMainLoop::unwatchFd(int fd) {
    const auto found = m_state->watches.find(fd);
    if (found == m_state->watches.end()) return;
    found->second->setEnabled(false);
    m_state->watches.erase(found);
}

std::size_t QtMainLoop::TimerCount() const {
    return m_state->timers.size();
}

std::size_t QtMainLoop::WatchCount() const {
    return m_state->watches.size();
}

}  // namespace qvnrt
