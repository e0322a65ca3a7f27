/// \file
/// The application's hooks: qvnrt::SetUiHost (messages, panels, the browser),
/// qvnrt::SetMainLoop (the loop that runs the library's timer and a driver's descriptor;
/// qvnrt::PollLoop is the library's own) and qvnrt::SetClock. The library owns none of the
/// objects installed; install them before the driver loads. See docs/applications.md.
// The library's hooks into its host application: the user interface, the main loop and the
// clock. Each has a default that works without any setup; an application installs its own
// through the Set... calls, and tests install recording ones.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>

#include <qvnrt/export.h>

namespace qvnrt {

// ---- User interface -----------------------------------------------------------------------

// Message box styles and answers, with the values that the library's messages use.
inline constexpr unsigned MB_OK = 0x00;
inline constexpr unsigned MB_OKCANCEL = 0x01;
inline constexpr unsigned MB_YESNOCANCEL = 0x03;
inline constexpr unsigned MB_YESNO = 0x04;
inline constexpr unsigned MB_ICONERROR = 0x10;
inline constexpr unsigned MB_ICONQUESTION = 0x20;
inline constexpr unsigned MB_ICONWARNING = 0x30;
inline constexpr unsigned MB_ICONINFORMATION = 0x40;
inline constexpr unsigned MB_TYPEMASK = 0x0F;
inline constexpr unsigned MB_ICONMASK = 0xF0;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;

// The logic of a modal panel. A host recognises the panels it can show by their class
// (dynamic_cast) and supplies a view for them; a host that cannot show a panel answers
// IDCANCEL.
class QVNRT_API Panel {
public:
    virtual ~Panel();
    virtual const char* Title() const = 0;
};

class QVNRT_API UiHost {
public:
    virtual ~UiHost();
    // Styles and answers as above. helpId is carried for hosts that have help.
    virtual int MessageBox(const char* text, const char* caption, unsigned style,
                           unsigned helpId) = 0;
    virtual int RunModal(Panel& panel) = 0;
    virtual void BeginWaitCursor() = 0;
    virtual void EndWaitCursor() = 0;
    // Opens the address in the user's browser; true when the browser was started.
    virtual bool OpenUrl(const char* url) = 0;
};

// Installs a host and returns the previous one; null restores the headless default, which
// writes message texts to standard error, answers IDOK to OK boxes and IDNO to yes/no
// boxes, shows no panel (IDCANCEL) and opens addresses with xdg-open. The library does not
// own the host.
QVNRT_API UiHost* SetUiHost(UiHost* host);
QVNRT_API UiHost& GetUiHost();

// ---- Main loop ----------------------------------------------------------------------------

// The loop on which the library's timer runs and a driver's descriptor is watched. All
// callbacks run on the loop's thread.
class QVNRT_API MainLoop {
public:
    using TimerId = std::uint64_t;  // 0 is never a valid id

    virtual ~MainLoop();
    // A repeating timer, first firing after `ms` milliseconds.
    virtual TimerId addTimer(unsigned ms, std::function<void()> fn) = 0;
    virtual void removeTimer(TimerId id) = 0;
    // Calls fn whenever fd is readable. One watch per descriptor; a second replaces it.
    virtual void watchFd(int fd, std::function<void()> fn) = 0;
    virtual void unwatchFd(int fd) = 0;
};

// The library's own loop: poll(2) over watched descriptors, one timerfd per timer.
class QVNRT_API PollLoop : public MainLoop {
public:
    PollLoop();
    ~PollLoop() override;
    PollLoop(const PollLoop&) = delete;
    PollLoop& operator=(const PollLoop&) = delete;

    TimerId addTimer(unsigned ms, std::function<void()> fn) override;
    void removeTimer(TimerId id) override;
    void watchFd(int fd, std::function<void()> fn) override;
    void unwatchFd(int fd) override;

    // Runs until quit().
    void run();
    // Runs for about `ms` milliseconds, or until quit(); returns early only on quit().
    void runFor(unsigned ms);
    // Waits once for at most `timeoutMs` (-1: no limit) and dispatches what is ready.
    // Returns the number of callbacks made.
    int runOnce(int timeoutMs);
    // Ends run() or runFor() after the callback in progress; callable from callbacks.
    void quit();

private:
    struct State;
    std::unique_ptr<State> m_state;
};

// Installs an application's loop; null restores the library's own PollLoop. The library
// does not own the loop. Install it before the first security opens: the timer and the
// driver's descriptor stay on the loop on which they were started.
QVNRT_API MainLoop* SetMainLoop(MainLoop* loop);
QVNRT_API MainLoop& GetMainLoop();

// ---- Clock --------------------------------------------------------------------------------

// Every read of the time of day and of the tick count goes through the clock.
class QVNRT_API Clock {
public:
    virtual ~Clock();
    virtual time_t Now() = 0;
    // Milliseconds from a fixed point, cut to 32 bits; it wraps after about 49 days.
    virtual uint32_t TickCount() = 0;
};

// Installs a clock and returns the previous one; null restores the system clock.
QVNRT_API Clock* SetClock(Clock* clock);

// ---- Calendar mode ------------------------------------------------------------------------

// Off by default: the calendar's zone table and its reckoning stay as they always were,
// which applications rely on. On, the rows of the zone table that stand for one region (18
// New York, 13 Chicago, 30 Denver, 33 Los Angeles, 22 London, 2 Anchorage, 4 Halifax, 32
// St. John's) take that region's changes, year by year, from the machine's tz database
// (/usr/share/zoneinfo, or $TZDIR), so that since 2007 New York changes on the second
// Sunday of March; and the daylight changes reckon leap years as the Gregorian calendar
// does (2000 is a leap year). Without a readable tz database the mode says so once on
// std::clog and the rows stay as they are. The setting is also read from the value
// "Modern Calendar" (dword, 1 for on) of Software\Quorvane\RealTime in the registry store,
// at the first conversion and again by setTimeZoneChangeFromQvn(), which overrides this
// call. Set it before making Dates: a Date keeps the change moments of the last zone and
// year it converted in. Main thread only, like the rest of the calendar.
QVNRT_API void SetModernCalendar(bool on);

// ---- Diagnostics --------------------------------------------------------------------------

// Why the latest attempt to load a driver failed, in the loader's words (dlerror: the path
// tried and the reason); empty after a load that succeeded. The text is the library's and
// stays valid until the next load; main-loop thread only.
QVNRT_API const char* LastDriverLoadError();

}  // namespace qvnrt
