// The library object: what was the application object of the Windows library, now plain
// load and unload hooks around the module-level objects.
#pragma once

class CQvnRTApp {
public:
    virtual ~CQvnRTApp();
    // Runs once when the library is loaded. Result 1.
    virtual int InitInstance();
};

namespace qvnrt {
// The application name set by qvnrtSetAppName, empty until then.
const char* AppNameBuffer();
}  // namespace qvnrt
