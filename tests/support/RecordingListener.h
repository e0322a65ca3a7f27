// An RTServer_Event listener that records the events it hears, registered for its lifetime.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <qvnrt/RTServer.h>

namespace qvnrt::test {

class RecordingListener : public RTServer_Event {
public:
    RecordingListener() { RTServer::addEventListener(*this); }
    ~RecordingListener() { RTServer::removeEventListener(*this); }
    RecordingListener(const RecordingListener&) = delete;
    RecordingListener& operator=(const RecordingListener&) = delete;

    void OnConnectResult(int result) override { Record("ConnectResult " + std::to_string(result)); }
    void OnDisconnected() override { Record("Disconnected"); }
    void OnEvent3() override { Record("Event3"); }
    void OnHeartBeatTick() override { Record("HeartBeatTick"); }
    void OnRightsChanged() override { Record("RightsChanged"); }
    void OnProcessingEODStarted() override { Record("EODStarted"); }
    void OnProcessingEODFinished() override { Record("EODFinished"); }
    void OnServerLimit(int value) override { Record("ServerLimit " + std::to_string(value)); }
    void OnLocalMode() override { Record("LocalMode"); }

    std::vector<std::string> events;
    // Runs after each recorded event, with its text; may throw or change the listeners.
    std::function<void(const std::string&)> after;

private:
    void Record(const std::string& event) {
        events.push_back(event);
        if (after) after(event);
    }
};

}  // namespace qvnrt::test
