// The connection's states, the reaction to the driver's network events, and the listeners.

#include <cstdint>

#include <qvnrt/CDataServiceRights.h>
#include <qvnrt/RTSecChangeDB.h>
#include <qvnrt/RTServer.h>

#include "platform/Clock.h"
#include "platform/UiHost.h"

int RTServer::s_connectMode = 1;
int RTServer::s_lProcessingEOD = 0;
long RTServer::s_lServerTimeDelta = 0;
RTServer RTServer::s_listeners;

namespace {

constexpr long kStatusConnected = 0;
constexpr long kStatusOffline = -1;
constexpr long kStatusRefused = -5;
constexpr int kRightsTag = 5;
constexpr unsigned long kConnectBuffer = 65536;
constexpr unsigned long kNoChangeStamp = 0x7fffffff;

const char kPortMessage[] =
    "Unable to open port for interprocess communications.  Make sure TCP/IP is installed on "
    "your system.  If the problem persists you may need to install this program again.";
const char kConnectionLostMessage[] =
    "Application interprocess communication unavailable.  Data no longer available.  Save "
    "your work and close application.  If this happens again, restart the data service and "
    "contact your market data provider.";

void TellRightsGate() { g_appDataServiceRights.NoteConnectionState(RTServer::m_lStatus); }

void RaiseDisconnected() { RTServer::s_listeners.raiseEvent(&RTServer_Event::OnDisconnected); }

// Event 1: the connection is gone. Connect mode 0 is the interactive client that tells the
// user; any other mode stays silent; mode 1 moreover never touches the rights gate.
void OnConnectionLost(int reason) {
    RTServer::s_lProcessingEOD = 0;
    RTServer::s_lServerTimeDelta = 0;
    if (RTServer::s_connectMode != 1) TellRightsGate();
    if (RTServer::s_connectMode != 0) {
        if (RTServer::m_lStatus == kStatusOffline) return;
        RTServer::m_lStatus = kStatusOffline;
        RaiseDisconnected();
        return;
    }
    RTServer::m_lStatus = kStatusOffline;
    if (reason == 1) {
        // Style and help identifier stand the other way round from the message below. Kept.
        qvnrt::platform::ShowMessageBox(kPortMessage, 0, 0x30);
        RaiseDisconnected();
    } else {
        // Deliberately silent towards listeners: the user has been told.
        qvnrt::platform::ShowMessageBox(kConnectionLostMessage, qvnrt::MB_ICONINFORMATION);
    }
}

}  // namespace

RTServer::~RTServer() = default;

long RTServer::Connect(const char* firstText, const char* secondText,
                       unsigned long connectNumber, int wantRights, int connectMode) {
    if (!m_hInstance || IsConnected()) return m_lStatus;
    s_connectMode = connectMode;
    if (wantRights) wantRights = g_appDataServiceRights.GetRightsValue(kRightsTag);
    m_locality = 3;
    const unsigned long changeStamp = IsCacheEnabled()
                                          ? static_cast<unsigned long>(GetRTSecChangeTimestamp())
                                          : kNoChangeStamp;
    const long result = m_lpOpenServer(firstText, secondText, NetworkCB, kConnectBuffer,
                                       connectNumber, changeStamp, wantRights, connectMode);
    switch (result) {
        case RTOPEN_REFUSED:
            m_lStatus = kStatusRefused;
            break;
        case RTOPEN_REMOTE:
            m_lStatus = kStatusConnected;
            m_locality = 1;
            break;
        case RTOPEN_LOCAL:
            m_lStatus = kStatusConnected;
            m_locality = 2;
            TellRightsGate();
            s_listeners.raiseEvent(&RTServer_Event::OnLocalMode);
            break;
        case RTOPEN_PENDING:
            // The connection completes later, through event 6.
            if (connectMode != 1) TellRightsGate();
            m_lStatus = kStatusOffline;
            break;
        default:
            m_lStatus = result;
            break;
    }
    return m_lStatus;
}

void RTServer::Disconnect() {
    if (s_connectMode != 1) TellRightsGate();  // whether or not the server is connected
    if (!IsConnected()) return;
    m_lpCloseServer();
    s_lProcessingEOD = 0;
    m_lStatus = kStatusOffline;
    RaiseDisconnected();
}

bool RTServer::IsConnected() { return m_hInstance && m_lStatus == kStatusConnected; }

int RTServer::IsLocal() { return m_locality == 2; }

int RTServer::IsProcessingEOD() { return s_lProcessingEOD; }

void RTServer::CloseEvent(unsigned long& request) {
    if (request && IsConnected() && m_lpCloseEvent) m_lpCloseEvent(request);
    request = 0;  // a handle that outlived its connection is dropped silently
}

void RTServer::addEventListener(RTServer_Event& listener) { s_listeners.addListener(listener); }

void RTServer::removeEventListener(RTServer_Event& listener) {
    s_listeners.removeListener(listener);
}

void RTServer::NetworkCB(int event, void* data) {
    switch (event) {
        case RTNET_CONNECTION_LOST:
            OnConnectionLost(static_cast<int>(reinterpret_cast<intptr_t>(data)));
            break;
        case RTNET_RIGHTS:
            g_appDataServiceRights.SetRightsData(data);
            if (m_lStatus == kStatusConnected) g_appDataServiceRights.ApplyRightsData();
            s_listeners.raiseEvent(&RTServer_Event::OnRightsChanged);
            break;
        case RTNET_SERVER_TIME:
            // A driver that sends no time has nothing to say; the delta stays.
            if (data) s_lServerTimeDelta = *static_cast<const long*>(data) - qvnrt::platform::Now();
            break;
        case RTNET_EOD_PROCESSING:
            if (data && *static_cast<const int*>(data)) {
                s_lProcessingEOD = 1;
                s_listeners.raiseEvent(&RTServer_Event::OnProcessingEODStarted);
            } else {
                s_lProcessingEOD = 0;
                s_listeners.raiseEvent(&RTServer_Event::OnProcessingEODFinished);
            }
            break;
        case RTNET_CONNECTED: {
            // Without its value and result the event cannot be told to anyone.
            if (!data) break;
            const auto* connected = static_cast<const RTNetConnectResult*>(data);
            m_lStatus = kStatusConnected;
            // Unguarded: a listener's exception leaves here. Kept.
            s_listeners.raiseEvent(&RTServer_Event::OnConnectResult,
                                   static_cast<int>(connected->result));
            if (connected->result == 0) {
                s_listeners.raiseEvent(&RTServer_Event::OnServerLimit,
                                       static_cast<int>(connected->value));
            }
            break;
        }
        case RTNET_NO_LIMIT:
            s_listeners.raiseEvent(&RTServer_Event::OnServerLimit, 0x7fffffff);
            break;
        case RTNET_SECURITY_CHANGE:
            if (data) {
                auto* batch = static_cast<RTNetSecChangeBatch*>(data);
                SetRTSecChangeInfo(batch->timestamp, batch->count, batch->changes);
            }
            break;
        default:  // 3 and unknown codes are ignored
            break;
    }
}
