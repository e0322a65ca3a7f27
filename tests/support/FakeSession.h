// A library session against the scriptable fake driver: the user's files in temporary
// directories, a recording UI host, the cache off unless a test turns it on, and the fake
// loaded (and, with Connect, connected).
#pragma once

#include <gtest/gtest.h>

#include <qvnrt/RTServer.h>

#include "fake_driver/FakeDriver.h"
#include "support/RecordingUiHost.h"
#include "support/TempDir.h"

namespace qvnrt::test {

class FakeSession {
public:
    explicit FakeSession(const char* driverPath = QVNFAKE_PATH) : fake(driverPath) {
        RTServer::InitCache(false, cacheDir.path().c_str(), 5, 0);
        RTServer::SetDLLName(driverPath);
    }
    ~FakeSession() { RTServer::CloseServer(); }

    // Loads the driver; true when it bound.
    bool Load() { return LoadRTServer(1, 1) == 1; }
    // Loads and connects (the fake answers 1: a remote service).
    bool Connect(int connectMode = 1) {
        return Load() && RTServer::Connect("first", "second", 7, 0, connectMode) == 0;
    }

    IsolatedHome home;
    TempDir cacheDir;
    RecordingUiHost ui;
    FakeDriver fake;
};

}  // namespace qvnrt::test
