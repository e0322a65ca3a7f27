#include "cli/CliSession.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace qvnrt::cli {
namespace {

constexpr double kConnectWaitSeconds = 5.0;

}  // namespace

CliSession::CliSession() {
    SetMainLoop(&m_loop);
    RTServer::addEventListener(*this);
    // Ctrl-C ends the loop cleanly, so that the driver is closed and the cache flushed.
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigaddset(&interrupt, SIGTERM);
    if (::sigprocmask(SIG_BLOCK, &interrupt, nullptr) == 0) {
        m_signalFd = ::signalfd(-1, &interrupt, SFD_CLOEXEC | SFD_NONBLOCK);
    }
    if (m_signalFd >= 0) {
        m_loop.watchFd(m_signalFd, [this] {
            signalfd_siginfo info;
            while (::read(m_signalFd, &info, sizeof(info)) == sizeof(info)) {
            }
            m_interrupted = true;
            m_loop.quit();
        });
    }
}

CliSession::~CliSession() {
    RTServer::CloseServer();
    RTServer::removeEventListener(*this);
    if (m_signalFd >= 0) {
        m_loop.unwatchFd(m_signalFd);
        ::close(m_signalFd);
    }
    SetMainLoop(nullptr);
}

bool CliSession::LoadDriver(const std::string& name) {
    if (!name.empty() && !RTServer::SetDLLName(name.c_str())) {
        std::fprintf(stderr, "qvnrt-cli: the driver name is too long\n");
        return false;
    }
    // The reason for a failure is shown through the terminal host.
    return LoadRTServer(0, 0) == 1;
}

bool CliSession::Connect() {
    const long status = RTServer::Connect("", "", 0, 0, 1);
    if (status == 0) return true;
    if (status == -1) {  // the service answers later, with an event
        Run(kConnectWaitSeconds, [] { return RTServer::IsConnected(); });
        if (RTServer::IsConnected()) return true;
        std::fprintf(stderr, "qvnrt-cli: the driver did not complete the connection\n");
        return false;
    }
    if (status == -5) {
        std::fprintf(stderr, "qvnrt-cli: the driver refused to connect\n");
    } else {
        std::fprintf(stderr, "qvnrt-cli: the driver could not connect (status %ld)\n", status);
    }
    return false;
}

void CliSession::OnHeartBeatTick() {
    if (onHeartBeat) onHeartBeat();
}

void CliSession::Run(double seconds, const std::function<bool()>& done) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    while (!m_interrupted && !(done && done())) {
        int timeoutMs = 100;
        if (seconds > 0) {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - Clock::now());
            if (left.count() <= 0) break;
            timeoutMs = static_cast<int>(std::min<long long>(left.count(), 100));
        }
        m_loop.runOnce(timeoutMs);
    }
}

}  // namespace qvnrt::cli
