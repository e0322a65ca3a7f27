// Everything the program asks of the terminal: whether an output is one, its width, whether
// colour is wanted, the signals that end a run or resize the screen, and a guard that keeps
// typed keys off a live board and restores the screen however the run ends.
#pragma once

#include <cstdio>

#include <termios.h>

namespace qvnrt::cli {

// True when `stream` is a terminal.
bool IsTerminal(FILE* stream);

// Columns of the terminal behind `stream`; else $COLUMNS when it is a number; else 80.
int TerminalWidth(FILE* stream);

// Colour is used on a terminal that is not "dumb", unless --no-color was given or NO_COLOR
// is set (to anything, as https://no-color.org asks).
bool ColourWanted(FILE* stream, bool noColourOption);

// SIGXFSZ would end the program without a word when a write passes `ulimit -f`; ignored,
// the write fails with EFBIG instead, and the failure is reported where it happens.
void IgnoreFileSizeLimitSignal();

// SIGINT, SIGTERM and SIGWINCH, blocked and read from a descriptor, so that the program's
// loop handles them between two callbacks instead of inside one. SIGPIPE is ignored: a
// reader that goes away shows as a failed write, and the run ends cleanly.
class TerminalSignals {
public:
    TerminalSignals();
    ~TerminalSignals();
    TerminalSignals(const TerminalSignals&) = delete;
    TerminalSignals& operator=(const TerminalSignals&) = delete;

    // -1 when the signals could not be redirected (they then keep their default action).
    int fd() const { return m_fd; }

    struct Received {
        bool interrupt = false;
        bool resize = false;
    };
    // Reads every signal that is waiting.
    Received Take();

    // For its lifetime SIGINT and SIGTERM have their default action again: work that runs
    // outside the loop (loading the driver, which reads the configuration) can then still
    // be ended by Ctrl-C. One already waiting ends the program at once.
    class Released {
    public:
        Released();
        ~Released();
        Released(const Released&) = delete;
        Released& operator=(const Released&) = delete;
    };

private:
    int m_fd = -1;
};

// While it lives, the terminal does not echo typed keys (a ^C would land inside the board)
// and its cursor is hidden; its destructor puts both back. Does nothing on a non-terminal.
class ScreenGuard {
public:
    explicit ScreenGuard(FILE* stream);
    ~ScreenGuard();
    ScreenGuard(const ScreenGuard&) = delete;
    ScreenGuard& operator=(const ScreenGuard&) = delete;

private:
    FILE* m_stream;
    bool m_active = false;
    termios m_saved{};
};

// While it lives, keys typed on the terminal behind `stream` reach the program one at a
// time, as they are typed, and unechoed; Ctrl-C still interrupts. Its destructor puts the
// terminal back. Does nothing on a non-terminal. Make it after a ScreenGuard, so that the
// two put the terminal back in the right order.
class KeyInput {
public:
    explicit KeyInput(FILE* stream);
    ~KeyInput();
    KeyInput(const KeyInput&) = delete;
    KeyInput& operator=(const KeyInput&) = delete;

    bool active() const { return m_active; }

private:
    int m_fd;
    bool m_active = false;
    termios m_saved{};
};

}  // namespace qvnrt::cli
