#include "config/CQvnRTApp.h"

#include <cstring>

#include <qvnrt/LibraryStartup.h>

namespace {

constexpr size_t kAppNameBufferSize = 260;
char g_appName[kAppNameBufferSize];

// The one library object. Built before the application's first call, destroyed at unload.
CQvnRTApp theApp;

// Load hook: the library object's InitInstance runs once the module's objects stand.
__attribute__((constructor(65535))) void OnLibraryLoad() { theApp.InitInstance(); }

}  // namespace

CQvnRTApp::~CQvnRTApp() = default;

// The Windows build chose its registry company key here; on Linux the registry store has
// one fixed place (user.reg in the config directory), so there is nothing to set.
int CQvnRTApp::InitInstance() { return 1; }

const char* qvnrt::AppNameBuffer() { return g_appName; }

// The version of project() in the top CMakeLists.txt.
const char* qvnrt::LibraryVersion() { return QVNRT_VERSION; }

void qvnrtSetAppName(const char* name) {
    std::memset(g_appName, 0, sizeof(g_appName));
    // Bounded: the original copied without a check into the 260-byte buffer.
    if (name) std::strncpy(g_appName, name, sizeof(g_appName) - 1);
}
