// The QApplication of a Qt host test, on the offscreen platform unless the environment
// names another, and a bounded wait on the event loop.
#pragma once

#include <QApplication>
#include <QDeadlineTimer>

#include <cstdlib>
#include <functional>

namespace qvnrt::test {

inline QApplication& TestApp() {
    static int argc = 1;
    static char name[] = "qvnrt-qt-test";
    static char* argv[] = {name, nullptr};
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    // Never destroyed: at exit Qt's own statics (the input device QTest makes) may already be
    // gone, and a QApplication torn down after them crashes.
    static QApplication* app = new QApplication(argc, argv);
    return *app;
}

// Runs the event loop until `done` holds or `ms` pass; the last answer of `done`.
inline bool RunEventsUntil(const std::function<bool()>& done, int ms = 3000) {
    TestApp();
    QDeadlineTimer deadline(ms);
    while (!done()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    return true;
}

}  // namespace qvnrt::test
