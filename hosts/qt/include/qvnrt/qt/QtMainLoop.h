/// \file
/// qvnrt::QtMainLoop: the library's main loop over the Qt event loop, so that the cache timer
/// and a driver's dispatch run inside QApplication::exec().
///
///   QApplication app(argc, argv);
///   qvnrt::QtMainLoop loop;
///   qvnrt::SetMainLoop(&loop);   // before the driver loads
///   ... LoadRTServer, Connect, open securities ...
///   int code = app.exec();
///   RTServer::CloseServer();
///   qvnrt::SetMainLoop(nullptr); // before `loop` goes
#pragma once

#include <memory>

#include <qvnrt/host.h>
#include <qvnrt/qt/export.h>

namespace qvnrt {

// Timers are QTimers, descriptors QSocketNotifiers (read), all owned by this object and
// living in the thread that made it, which must be the thread running the Qt event loop.
// Every call, and every callback, is on that thread. A QCoreApplication must exist while
// timers or watches are added.
class QVNRT_QT_API QtMainLoop : public MainLoop {
public:
    QtMainLoop();
    ~QtMainLoop() override;
    QtMainLoop(const QtMainLoop&) = delete;
    QtMainLoop& operator=(const QtMainLoop&) = delete;

    // Removing a timer or a watch from inside its own callback is allowed: the Qt object is
    // released once control is back in the event loop.
    TimerId addTimer(unsigned ms, std::function<void()> fn) override;
    void removeTimer(TimerId id) override;
    void watchFd(int fd, std::function<void()> fn) override;
    void unwatchFd(int fd) override;

    // How many timers and watches are live, for an application's diagnostics.
    std::size_t TimerCount() const;
    std::size_t WatchCount() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace qvnrt
