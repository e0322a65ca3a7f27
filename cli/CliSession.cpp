#include "cli/CliSession.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace qvnrt::cli {
namespace {

constexpr double kConnectWaitSeconds = 5.0;
constexpr int kCacheKeepDays = 5;

}  // namespace

CliSession::CliSession() {
    SetMainLoop(&m_loop);
    RTServer::addEventListener(*this);
    // Ctrl-C ends the loop cleanly, so that the driver is closed and the cache flushed.
    if (m_signals.fd() >= 0) {
        m_loop.watchFd(m_signals.fd(), [this] {
            const TerminalSignals::Received received = m_signals.Take();
            if (received.resize && onResize) onResize();
            if (received.interrupt) Stop();
        });
    }
}

CliSession::~CliSession() {
    if (RTServer::IsConnected()) RTServer::Disconnect();
    RTServer::CloseServer();
    RTServer::removeEventListener(*this);
    if (m_signals.fd() >= 0) m_loop.unwatchFd(m_signals.fd());
    SetMainLoop(nullptr);
}

bool CliSession::UseCache(const std::string& directory) {
    if (directory.empty()) return true;
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (!error && !std::filesystem::is_directory(directory, error)) {
        error = std::make_error_code(std::errc::not_a_directory);
    }
    if (!error && ::access(directory.c_str(), R_OK | W_OK | X_OK) != 0) {
        error = std::error_code(errno, std::generic_category());
    }
    if (error) {
        std::fprintf(stderr, "qvnrt-cli: cache directory %s: %s\n", directory.c_str(),
                     error.message().c_str());
        return false;
    }
    RTServer::InitCache(true, directory.c_str(), kCacheKeepDays, 0);
    return true;
}

bool CliSession::LoadDriver(const std::string& name) {
    if (!name.empty() && !RTServer::SetDLLName(name.c_str())) {
        std::fprintf(stderr, "qvnrt-cli: driver %s: the name is longer than %zu characters\n",
                     name.c_str(), sizeof(RTServer::m_DLLName) - 1);
        return false;
    }
    // onlyOnce: the library's own message box is shown once; the reason follows here.
    // Loading reads the configuration outside the loop; Ctrl-C must still end it.
    int loaded;
    {
        const TerminalSignals::Released interruptible;
        loaded = LoadRTServer(1, 0);
    }
    if (loaded == 1) return true;
    const char* reason = LastDriverLoadError();
    std::fprintf(stderr, "qvnrt-cli: driver %s: %s\n", RTServer::m_DLLName,
                 reason && *reason ? reason : "not loadable");
    return false;
}

bool CliSession::Connect() {
    const long status = RTServer::Connect("", "", 0, 0, 1);
    if (status == 0) return true;
    if (status == -1) {  // the service answers later, with an event
        Run(kConnectWaitSeconds, [] { return RTServer::IsConnected(); });
        if (RTServer::IsConnected()) return true;
        if (!m_interrupted) {
            std::fprintf(stderr,
                         "qvnrt-cli: driver %s: the connection did not complete within %g s\n",
                         RTServer::m_DLLName, kConnectWaitSeconds);
        }
        return false;
    }
    if (status == -5) {
        std::fprintf(stderr, "qvnrt-cli: driver %s: the service refused to connect\n",
                     RTServer::m_DLLName);
    } else {
        std::fprintf(stderr, "qvnrt-cli: driver %s: could not connect (status %ld)\n",
                     RTServer::m_DLLName, status);
    }
    return false;
}

int CliSession::Start(const GlobalOptions& global) {
    if (!UseCache(global.cacheDirectory)) return kExitIncomplete;
    if (global.offline) return kExitOk;
    return LoadDriver(global.driver) && Connect() ? kExitOk : kExitIncomplete;
}

std::string CliSession::DriverPath() {
    if (!RTServer::m_hInstance) return {};
    link_map* map = nullptr;
    if (::dlinfo(RTServer::m_hInstance, RTLD_DI_LINKMAP, &map) != 0 || !map || !map->l_name) {
        return RTServer::m_DLLName;
    }
    return map->l_name;
}

void CliSession::Stop() {
    m_interrupted = true;
    m_loop.quit();
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
