// One run of the command-line program: the UI host and main loop it installs, the driver
// it loads and the connection it makes, and Ctrl-C.
#pragma once

#include <functional>
#include <string>

#include <qvnrt/RTServer.h>
#include <qvnrt/host.h>

#include "cli/TerminalHost.h"

namespace qvnrt::cli {

class CliSession : private RTServer_Event {
public:
    // Installs the terminal host and the program's loop; the loop must stand before the
    // driver is loaded and the cache is opened, since both start work on it.
    CliSession();
    ~CliSession();
    CliSession(const CliSession&) = delete;
    CliSession& operator=(const CliSession&) = delete;

    // Loads the driver: `name` when given, else the configured one. False after telling why.
    bool LoadDriver(const std::string& name);
    // Connects, waiting up to a few seconds for a service that answers later. False after
    // telling why.
    bool Connect();

    // Runs the loop until `seconds` have passed (0: no limit), Ctrl-C, or `done` says so.
    void Run(double seconds, const std::function<bool()>& done = {});
    // Called on every heartbeat of the library's timer.
    std::function<void()> onHeartBeat;

    bool interrupted() const { return m_interrupted; }
    TerminalHost& host() { return m_host; }

private:
    void OnConnectResult(int) override {}
    void OnDisconnected() override { m_disconnected = true; }
    void OnEvent3() override {}
    void OnHeartBeatTick() override;
    void OnRightsChanged() override {}
    void OnProcessingEODStarted() override {}
    void OnProcessingEODFinished() override {}
    void OnServerLimit(int) override {}
    void OnLocalMode() override {}

    TerminalHost m_host;
    PollLoop m_loop;
    int m_signalFd = -1;
    bool m_interrupted = false;
    bool m_disconnected = false;
};

}  // namespace qvnrt::cli
