#include "cli/Terminal.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

namespace qvnrt::cli {
namespace {

constexpr int kDefaultWidth = 80;
constexpr int kMaxWidth = 1000;  // a bogus $COLUMNS must not size a buffer

sigset_t HandledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGWINCH);
    return signals;
}

}  // namespace

bool IsTerminal(FILE* stream) {
    return ::isatty(::fileno(stream)) == 1;
}

int TerminalWidth(FILE* stream) {
    winsize size{};
    if (::ioctl(::fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    if (const char* columns = std::getenv("COLUMNS")) {
        char* end = nullptr;
        const long value = std::strtol(columns, &end, 10);
        if (end != columns && *end == '\0' && value > 0 && value <= kMaxWidth) {
            return static_cast<int>(value);
        }
    }
    return kDefaultWidth;
}

bool ColourWanted(FILE* stream, bool noColourOption) {
    if (noColourOption || std::getenv("NO_COLOR") != nullptr) return false;
    const char* term = std::getenv("TERM");
    if (!term || std::strcmp(term, "dumb") == 0) return false;
    return IsTerminal(stream);
}

void IgnoreFileSizeLimitSignal() {
    ::signal(SIGXFSZ, SIG_IGN);
}

TerminalSignals::Released::Released() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    ::sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

TerminalSignals::Released::~Released() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    ::sigprocmask(SIG_BLOCK, &signals, nullptr);
}

TerminalSignals::TerminalSignals() {
    ::signal(SIGPIPE, SIG_IGN);
    const sigset_t signals = HandledSignals();
    if (::sigprocmask(SIG_BLOCK, &signals, nullptr) == 0) {
        m_fd = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    }
}

TerminalSignals::~TerminalSignals() {
    if (m_fd >= 0) ::close(m_fd);
    const sigset_t signals = HandledSignals();
    ::sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

TerminalSignals::Received TerminalSignals::Take() {
    Received received;
    signalfd_siginfo info;
    while (m_fd >= 0 && ::read(m_fd, &info, sizeof(info)) == sizeof(info)) {
        if (info.ssi_signo == SIGWINCH) {
            received.resize = true;
        } else {
            received.interrupt = true;
        }
    }
    return received;
}

ScreenGuard::ScreenGuard(FILE* stream) : m_stream(stream) {
    const int fd = ::fileno(stream);
    if (!IsTerminal(stream) || ::tcgetattr(fd, &m_saved) != 0) return;
    termios quiet = m_saved;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO | ECHOCTL);
    ::tcsetattr(fd, TCSANOW, &quiet);
    std::fputs("\x1b[?25l", m_stream);  // hide the cursor
    m_active = true;
}

ScreenGuard::~ScreenGuard() {
    if (!m_active) return;
    std::fputs("\x1b[0m\x1b[?25h", m_stream);  // plain colours, cursor back
    std::fflush(m_stream);
    ::tcsetattr(::fileno(m_stream), TCSANOW, &m_saved);
}

KeyInput::KeyInput(FILE* stream) : m_fd(::fileno(stream)) {
    if (!IsTerminal(stream) || ::tcgetattr(m_fd, &m_saved) != 0) return;
    termios keys = m_saved;
    keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ECHOCTL);
    keys.c_cc[VMIN] = 1;
    keys.c_cc[VTIME] = 0;
    m_active = ::tcsetattr(m_fd, TCSANOW, &keys) == 0;
}

KeyInput::~KeyInput() {
    if (m_active) ::tcsetattr(m_fd, TCSANOW, &m_saved);
}

}  // namespace qvnrt::cli
