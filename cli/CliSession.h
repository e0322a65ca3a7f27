// One run of a command: the terminal host and the loop it installs, the cache directory,
// the driver it loads and the connection it makes, and the signals that end or resize it.
// Every failure is told on standard error, naming the thing and the reason.
#pragma once

#include <functional>
#include <string>

#include <qvnrt/RTServer.h>
#include <qvnrt/host.h>

#include "cli/Command.h"
#include "cli/Terminal.h"
#include "cli/TerminalHost.h"

namespace qvnrt::cli {

class CliSession : private RTServer_Event {
public:
    // Installs the terminal host and the program's loop; the loop must stand before the
    // driver is loaded and the cache is opened, since both start work on it.
    CliSession();
    // Disconnects when connected, and closes the driver, which flushes the cache.
    ~CliSession();
    CliSession(const CliSession&) = delete;
    CliSession& operator=(const CliSession&) = delete;

    // Puts the cache in `directory` (made when missing; empty: the library's default).
    // False after telling why the directory cannot be used.
    bool UseCache(const std::string& directory);
    // Loads the driver: `name` when given, else the configured one. False after telling
    // which path failed and why.
    bool LoadDriver(const std::string& name);
    // Connects, waiting up to a few seconds for a service that answers later. False after
    // telling why.
    bool Connect();
    // The cache directory, then (unless offline) the driver and the connection: what most
    // commands do first. kExitOk, or kExitIncomplete after telling why.
    int Start(const GlobalOptions& global);

    // Runs the loop until `seconds` have passed (0: no limit), Ctrl-C, or `done` says so.
    void Run(double seconds, const std::function<bool()>& done = {});
    // Called on every heartbeat of the library's timer, and when the terminal is resized.
    std::function<void()> onHeartBeat;
    std::function<void()> onResize;

    // Ends Run() after the callback in progress, as Ctrl-C does.
    void Stop();
    bool interrupted() const { return m_interrupted; }
    TerminalHost& host() { return m_host; }

    // The file the loaded driver came from, as the loader resolved it; empty when none.
    static std::string DriverPath();

private:
    void OnConnectResult(int) override {}
    void OnDisconnected() override {}
    void OnEvent3() override {}
    void OnHeartBeatTick() override;
    void OnRightsChanged() override {}
    void OnProcessingEODStarted() override {}
    void OnProcessingEODFinished() override {}
    void OnServerLimit(int) override {}
    void OnLocalMode() override {}

    TerminalHost m_host;
    PollLoop m_loop;
    TerminalSignals m_signals;
    bool m_interrupted = false;
};

}  // namespace qvnrt::cli
