/// \file
/// RTServer, the static facade over the one loaded driver: loading (LoadRTServer,
/// SetDLLName), the connection (Connect, Disconnect, CloseServer), the cache settings
/// (InitCache) and the connection events, heard by RTServer_Event listeners that the
/// application registers and keeps alive. See docs/applications.md and docs/drivers.md.
// RTServer: the one loaded driver, the connection to the data service, its events and their
// listeners. All state is static; one instance exists, for the listener set.
#pragma once

#include <qvnrt/EventMulticaster.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

// The application's listener for connection events, in this slot order.
class QVNRT_API RTServer_Event {
public:
    virtual void OnConnectResult(int result) = 0;  // event 6
    virtual void OnDisconnected() = 0;             // the connection ended
    virtual void OnEvent3() = 0;                   // never raised; holds its place
    virtual void OnHeartBeatTick() = 0;            // each effective tick of the cache timer
    virtual void OnRightsChanged() = 0;            // event 2
    virtual void OnProcessingEODStarted() = 0;     // event 5 with a true flag
    virtual void OnProcessingEODFinished() = 0;    // event 5 with a false or missing flag
    virtual void OnServerLimit(int value) = 0;     // event 6 with result 0, and event 7
    virtual void OnLocalMode() = 0;                // Connect found a local service

protected:
    // Listeners are not deleted through this interface.
    ~RTServer_Event() = default;
};

class QVNRT_API RTServer : public EventMulticaster<RTServer_Event> {
public:
    RTServer() = default;
    RTServer(const RTServer&) = default;
    RTServer& operator=(const RTServer&) = default;
    ~RTServer() override;

    // ---- Loading the driver ----

    // 0 on success or when already loaded, else the identifier of the message to show:
    // 7338 no name configured, 7348 the driver could not be loaded, 7339 it lacks a needed
    // entry point.
    static int OpenServer(int noDefaultName);
    // 1 taken, 0 refused (null, or longer than 256 characters).
    static int SetDLLName(const char* name);
    static int IsLoaded();
    // Closes the connection and unloads the driver. No event is raised and m_lStatus stays.
    static void CloseServer();

    // ---- The connection ----

    // Returns the resulting m_lStatus: 0 connected, -1 loaded and not connected, -3 no
    // driver, -5 refused by the driver, any other value a code of the driver's.
    static long Connect(const char* firstText, const char* secondText,
                        unsigned long connectNumber, int wantRights, int connectMode);
    static void Disconnect();
    static bool IsConnected();
    static int IsLocal();
    static int IsProcessingEOD();
    // Cancels a request at the driver when connected, and zeroes the handle in any case.
    static void CloseEvent(unsigned long& request);

    // ---- Properties and other driver calls ----

    // 0 when no driver is loaded.
    static long GetProperty(RTProperties property, long argument);
    static int GetPropertyString(RTProperties property, char* buffer, int length, char* extra);
    static int GetNewsSource(int source, int what, const char* buffer, int length);
    static void DisplayServerProperties(HWND window);

    // ---- The local cache ----

    // Must run before the first security opens: the cache files are opened once.
    static void InitCache(bool enable, const char* directory, int keepDays, int reserved);
    static bool IsCacheEnabled();

    // ---- Listeners ----

    static void addEventListener(RTServer_Event& listener);
    static void removeEventListener(RTServer_Event& listener);

    // The driver's NetworkCallback; not called by the application.
    static void NetworkCB(int event, void* data);

    // ---- State ----

    static char m_DLLName[257];  // room for 256 characters and the terminator
    static void* m_hInstance;    // non-null exactly while the driver is loaded
    static long m_lStatus;
    static unsigned char m_locality;  // 1 remote, 2 local, 3 not known
    static int m_bLockedOut;          // exported; never read or written by the library

    // The driver's entry points, in the order in which they are looked up.
    static clientOpenServer_t m_lpOpenServer;
    static clientCloseServer_t m_lpCloseServer;
    static clientGetPropertyLong_t m_lpGetProperty;
    static clientGetPropertyString_t m_lpGetPropertyString;
    static clientGetExchangeFieldAccess_t m_lpGetExchangeFieldAccess;
    static clientGetExchangeStringFieldAccess_t m_lpGetExchangeStringFieldAccess;
    static clientReqSecurities_t m_lpReqSecurity;
    static clientReqRankedList_t m_lpReqRankedList;
    static clientReqSecurityList_t m_lpReqSecList;
    static clientCloseEvent_t m_lpCloseEvent;
    static clientModifySecurity_t m_lpModifySecurity;
    static clientChangeEvent_t m_lpChangeEvent;
    static clientGetExchangeLong_t m_lpGetExchangeLong;
    static clientGetExchangeString_t m_lpGetExchangeString;
    static DisplayPreferencesDialog_t m_lpclientDislayServerProps;
    static clientReqEodRecords_t m_lpReqEOD;
    static clientReqTickBars_t m_lpReqTick;
    static clientReqNewsStory_t m_lpclientReqNewsStory;
    static clientReqNewsHeadlines_t m_lpClientReqNewsHeadlines;
    static clientGetNewsSource_t m_lpClientGetNewsSource;
    static clientReqSessionInfo_t m_lpclientReqSessionInfo;

    static int s_connectMode;         // last connect mode given to Connect
    static int s_lProcessingEOD;      // 1 while the service reports end-of-day processing
    static long s_lServerTimeDelta;   // server clock minus local clock, in seconds

    // The one instance; its set holds the listeners of every event.
    static RTServer s_listeners;
};

// Binds the driver. 1 when it is loaded, else 0 after showing the reason, which with
// onlyOnce set is shown once over repeated failures (and again after a success).
QVNRT_API int LoadRTServer(int onlyOnce, int noDefaultName);
