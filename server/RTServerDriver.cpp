// Finding, binding and unloading the driver, and the calls that go straight through to it.

#include <cstring>
#include <string>

#include <qvnrt/RTServer.h>
#include <qvnrt/host.h>

#include "config/Strings.h"
#include "platform/DynamicLibrary.h"
#include "platform/IniFile.h"
#include "server/CRegistry.h"

char RTServer::m_DLLName[257];
void* RTServer::m_hInstance = nullptr;
long RTServer::m_lStatus = 0;
unsigned char RTServer::m_locality = 3;
int RTServer::m_bLockedOut = 0;

clientOpenServer_t RTServer::m_lpOpenServer;
clientCloseServer_t RTServer::m_lpCloseServer;
clientGetPropertyLong_t RTServer::m_lpGetProperty;
clientGetPropertyString_t RTServer::m_lpGetPropertyString;
clientGetExchangeFieldAccess_t RTServer::m_lpGetExchangeFieldAccess;
clientGetExchangeStringFieldAccess_t RTServer::m_lpGetExchangeStringFieldAccess;
clientReqSecurities_t RTServer::m_lpReqSecurity;
clientReqRankedList_t RTServer::m_lpReqRankedList;
clientReqSecurityList_t RTServer::m_lpReqSecList;
clientCloseEvent_t RTServer::m_lpCloseEvent;
clientModifySecurity_t RTServer::m_lpModifySecurity;
clientChangeEvent_t RTServer::m_lpChangeEvent;
clientGetExchangeLong_t RTServer::m_lpGetExchangeLong;
clientGetExchangeString_t RTServer::m_lpGetExchangeString;
DisplayPreferencesDialog_t RTServer::m_lpclientDislayServerProps;
clientReqEodRecords_t RTServer::m_lpReqEOD;
clientReqTickBars_t RTServer::m_lpReqTick;
clientReqNewsStory_t RTServer::m_lpclientReqNewsStory;
clientReqNewsHeadlines_t RTServer::m_lpClientReqNewsHeadlines;
clientGetNewsSource_t RTServer::m_lpClientGetNewsSource;
clientReqSessionInfo_t RTServer::m_lpclientReqSessionInfo;

namespace {

constexpr int kNoNameConfigured = 7338;
constexpr int kIncompleteDriver = 7339;
constexpr int kCannotLoad = 7348;
constexpr size_t kMaxNameLength = 256;

// A member of the binding table and the entry point it holds. Function pointers are
// stored by copying dlsym's result into the member's bytes.
struct Binding {
    const char* entryPoint;
    void* member;
    bool needed;
};

template <class F>
Binding Bind(const char* entryPoint, F& member, bool needed = true) {
    static_assert(sizeof(F) == sizeof(void*));
    return {entryPoint, &member, needed};
}

// In lookup order. clientGetExchangeLong and clientGetExchangeString are each bound twice,
// to members of different argument types: the driver is called in both shapes. Kept.
const Binding kBindings[] = {
    Bind("clientOpenServer", RTServer::m_lpOpenServer),
    Bind("clientCloseServer", RTServer::m_lpCloseServer),
    Bind("clientGetPropertyLong", RTServer::m_lpGetProperty),
    Bind("clientGetPropertyString", RTServer::m_lpGetPropertyString),
    Bind("clientGetExchangeLong", RTServer::m_lpGetExchangeFieldAccess),
    Bind("clientGetExchangeString", RTServer::m_lpGetExchangeStringFieldAccess),
    Bind("clientReqSecurities", RTServer::m_lpReqSecurity),
    Bind("clientReqRankedList", RTServer::m_lpReqRankedList),
    Bind("clientReqSecurityList", RTServer::m_lpReqSecList),
    Bind("clientCloseEvent", RTServer::m_lpCloseEvent),
    Bind("clientModifySecurity", RTServer::m_lpModifySecurity),
    Bind("clientChangeEvent", RTServer::m_lpChangeEvent),  // needed, though nothing calls it
    Bind("clientGetExchangeLong", RTServer::m_lpGetExchangeLong),
    Bind("clientGetExchangeString", RTServer::m_lpGetExchangeString),
    Bind("DisplayPreferencesDialog", RTServer::m_lpclientDislayServerProps, false),
    Bind("clientReqEodRecords", RTServer::m_lpReqEOD),
    Bind("clientReqTickBars", RTServer::m_lpReqTick),
    Bind("clientReqNewsStory", RTServer::m_lpclientReqNewsStory),
    Bind("clientReqNewsHeadlines", RTServer::m_lpClientReqNewsHeadlines),
    Bind("clientGetNewsSource", RTServer::m_lpClientGetNewsSource),
    Bind("clientReqSessionInfo", RTServer::m_lpclientReqSessionInfo),
};

// Stores every entry point, also the missing ones as null; true when every needed one is
// there. On failure the members keep what was stored: every caller is guarded by the
// driver's state, so nothing reads them.
bool BindEntryPoints(void* library) {
    bool complete = true;
    for (const Binding& binding : kBindings) {
        void* const address = qvnrt::platform::GetProcAddress(library, binding.entryPoint);
        std::memcpy(binding.member, &address, sizeof(address));
        if (binding.needed && !address) complete = false;
    }
    return complete;
}

// The Linux dispatch extension: a driver that offers both calls has its descriptor watched
// on the main loop while it is loaded, and makes its callbacks from inside clientDispatch.
struct DriverDispatch {
    clientDispatch_t dispatch = nullptr;
    int fd = -1;
};
DriverDispatch g_driverDispatch;

void StartDispatchWatch(void* library) {
    auto getPollFd = reinterpret_cast<clientGetPollFd_t>(
        qvnrt::platform::GetProcAddress(library, "clientGetPollFd"));
    auto dispatch = reinterpret_cast<clientDispatch_t>(
        qvnrt::platform::GetProcAddress(library, "clientDispatch"));
    if (!getPollFd || !dispatch) return;
    const int fd = getPollFd();
    if (fd < 0) return;
    g_driverDispatch = {dispatch, fd};
    qvnrt::GetMainLoop().watchFd(fd, [] {
        if (g_driverDispatch.dispatch) g_driverDispatch.dispatch();
    });
}

void StopDispatchWatch() {
    if (g_driverDispatch.fd >= 0) qvnrt::GetMainLoop().unwatchFd(g_driverDispatch.fd);
    g_driverDispatch = {};
}

// The name of the driver when none was given: Client.DLL for in-house development set-ups,
// else the registry's value with Client.DLL as its default.
CString DefaultDriverName() {
    const std::string sameDirectory = qvnrt::platform::GetPrivateProfileString(
        "INHOUSEDEVELOPMENT", "SAMEDIRINTF", "n", 5, "QUORVANE.INI");
    if (!sameDirectory.empty() && (sameDirectory[0] == 'y' || sameDirectory[0] == 'Y')) {
        return "Client.DLL";
    }
    CString name;
    CRegistry().ReadString("RealTime", "RealTime DLL", "Client.DLL", name);
    return name;
}

int s_bLoadMessageShown = 0;

}  // namespace

int RTServer::OpenServer(int noDefaultName) {
    if (m_hInstance) return 0;
    if (m_DLLName[0] == '\0') {
        if (noDefaultName) {
            m_lStatus = -3;
            return kNoNameConfigured;
        }
        SetDLLName(DefaultDriverName());  // a refused name leaves m_DLLName empty
    }
    m_hInstance = qvnrt::platform::LoadLibrary(m_DLLName);
    if (!m_hInstance) {
        m_lStatus = -3;  // m_DLLName stays, so a later call tries the same name again
        return kCannotLoad;
    }
    if (!BindEntryPoints(m_hInstance)) {
        qvnrt::platform::FreeLibrary(m_hInstance);
        m_hInstance = nullptr;
        m_lStatus = -3;
        return kIncompleteDriver;
    }
    StartDispatchWatch(m_hInstance);
    m_lStatus = -1;
    return 0;
}

int RTServer::SetDLLName(const char* name) {
    if (!name || std::strlen(name) > kMaxNameLength) return 0;
    std::strcpy(m_DLLName, name);
    return 1;
}

int RTServer::IsLoaded() { return m_hInstance != nullptr; }

void RTServer::CloseServer() {
    s_lProcessingEOD = 0;
    if (!m_hInstance) return;
    StopDispatchWatch();  // before the driver closes its descriptor
    m_lpCloseServer();
    qvnrt::platform::FreeLibrary(m_hInstance);
    m_hInstance = nullptr;
}

long RTServer::GetProperty(RTProperties property, long argument) {
    return m_hInstance ? m_lpGetProperty(property, argument) : 0;
}

int RTServer::GetPropertyString(RTProperties property, char* buffer, int length, char* extra) {
    return m_hInstance ? m_lpGetPropertyString(property, buffer, length, extra) : 0;
}

// The two calls below make no check of the connection's state, and applications call them
// as such. They do check that the entry point is bound to a loaded driver: a call through a
// null or unloaded entry point would only crash.
int RTServer::GetNewsSource(int source, int what, const char* buffer, int length) {
    if (!m_hInstance || !m_lpClientGetNewsSource) return 0;
    return m_lpClientGetNewsSource(source, what, const_cast<char*>(buffer), length);
}

void RTServer::DisplayServerProperties(HWND window) {
    if (m_hInstance && m_lpclientDislayServerProps) m_lpclientDislayServerProps(window);
}

int LoadRTServer(int onlyOnce, int noDefaultName) {
    const int message = RTServer::OpenServer(noDefaultName);
    if (message == 0) {
        s_bLoadMessageShown = 0;
        return 1;
    }
    if (!onlyOnce || !s_bLoadMessageShown) {
        s_bLoadMessageShown = 1;
        qvnrt::ShowMessage(static_cast<unsigned>(message), qvnrt::MB_ICONINFORMATION);
    }
    return 0;
}
