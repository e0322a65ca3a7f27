/// \file
/// RTSecurity, the security object of applications: quotes (OpenSecurity, OnSecChanged, the
/// typed accessors), end-of-day history (RequestEOD, ReqEODCallback), intraday bars and ticks
/// (RequestTick, ReqTickCallback) and session rules. Derive from it and override the
/// notifications; every notification arrives on the main loop's thread. The object must
/// outlive its requests or close them (CloseSecurity; the destructor closes everything).
/// See docs/applications.md.
// RTSecurity: the security object that applications use. It requests quotes, answers
// through typed accessors, and carries the state of intraday and end-of-day requests.
#pragma once

#include <cstdint>

#include <qvnrt/RTSec_Option.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

class CSessionInfo;
class CHolidaysInfo;

class QVNRT_API RTSecurity : public RTSec_Option {
public:
    // Takes the library's default field string.
    RTSecurity();
    RTSecurity(const RTSecurity&) = delete;
    RTSecurity& operator=(const RTSecurity&) = delete;

    // Closes every request and the cache record, and drops the session references.
    ~RTSecurity() override;
    // Cancels the requests, and clears the last error, the asset type and the symbol; the
    // option fields survive. Result 1.
    int CloseEvent() override;

    // ---- Virtual operations of RTSecurity, in slot order after those of RTSec_Base ----

    // Carried on from the application's heartbeat listener; keeps a chart's open bar
    // moving while intraday data are requested.
    virtual void OnHeartBeat();
    // The one quote request: binds the cache record and asks the driver. Result 1.
    virtual int ReqSecurity(const char* symbol, char* fields, RTSecurityType type, int flags,
                            ServiceLimit limit);
    // Intraday data for the owner; the base answers false.
    virtual bool ReqTickCallback(unsigned long handle, int count, int done, int isNew, int type,
                                 void* data);
    // Deferred deliveries wait while this answers false; the base answers true.
    virtual bool IsReadyForRTCallback();
    // End-of-day data for the owner; the base answers false.
    virtual bool ReqEODCallback(unsigned long request, int count, int flags, RTPRICEREC* records);
    // Replaces the held session and holiday references.
    virtual void setSessHolInfo(CSessionInfo* session, CHolidaysInfo* holidays,
                                unsigned char spare);

    // ---- Quotes ----

    // Cancels, releases the cache record, and requests again with the default fields.
    // Non-zero when the request reached the driver or the cache (m_lastError 0).
    int OpenSecurity(const char* symbol, RTSecurityType type, int flags, ServiceLimit limit);
    // A non-null field string becomes the default. 1 offline, 0 with no open request,
    // otherwise the driver's answer.
    int ModifySecurity(char* fields);
    void CloseSecurity();
    bool IsRequested();
    int operator==(unsigned long request);
    void SetDefaultFields(CString fields);
    long GetLastError();

    // The typed accessors. The error pointer must not be null.
    RTSecurityType GetSecAssetType(long* error);
    unsigned char GetSecBitFlags(long* error);
    unsigned char GetSecExchange(long* error);
    double GetSecLastTrade(long* error);
    float GetSecPrevClose(long* error);
    unsigned short GetSecName(char* buffer, unsigned short length, long* error);
    unsigned short GetSecCurrDesc(char* buffer, unsigned short length, long* error);
    float GetSecEPS(long* error);

    // Forwarders to the driver's exchange calls in their plain shape, with no checks.
    static unsigned long GetExchangeLong(int exchange, int property, long defaultValue);
    static int GetExchangeString(int exchange, int property, char* buffer, int length,
                                 char* defaultText);

    // The driver's SecurityCallback for a single security.
    static int ReqSecCallbackHelper(unsigned long request, int status, int field, int dataType,
                                    void* data, unsigned long user);

    // ---- End-of-day history ----

    // Asks for the daily history that `request` describes (its layout is agreed between
    // application and driver; the library passes its address only). Flags: bit 0
    // streaming, bit 20 send m_strSymbol unmapped. Runs CloseEOD first. Offline the owner
    // gets ReqEODCallback(0, 0, 1, null) at once, and the driver is asked all the same.
    // The records reach ReqEODCallback from the cache timer, never inside the driver's
    // call: oldest first with flags 1, then, while the data is not final, the newest record
    // alone with flags 0 (a later batch may still change that day), and when the history
    // has ended a call with count 0 and flags -1. The records are valid during the call
    // only. True when the driver took the request (m_eodRequest is not 0).
    bool RequestEOD(EODDATA* request, int flags, ServiceLimit limit);
    // Cancels the request; records not yet delivered are dropped.
    void CloseEOD();
    // The driver's EodCallback: repairs the batch and merges it into what waits for the
    // timer. 1 when stored; 0 for a user that is not a live security or a broken batch.
    static int ReqEODCallbackHelper(unsigned long request, int count, int flags,
                                    RTPRICEREC* records, unsigned long user);

    // ---- Session rules ----

    CSessionInfo* sessionRulesAre();
    CHolidaysInfo* holidayRulesAre();
    // The driver's SessionCallback for an RTSessSecurity.
    static int ReqSessCallbackHelper(unsigned long handle, int status, SESSION_INFO* rules,
                                     void* holidays, unsigned long user);

    // ---- Quote state ----

    long m_lastError;  // 0 after a request reached the driver or the cache, -1 offline
    CString m_strDefaultFields;
    unsigned long m_eodRequest;  // handle of the end-of-day request

    // ---- Intraday state ----

    int32_t m_lTickStatus;  // -1 after a failure; later packets are dropped
    uint32_t m_hTickEvent;  // driver or cache handle
    uint8_t m_bConvert;     // packets must be converted to the owner's request
    LOCTICKDATA m_origRequest;
    LOCTICKDATA m_plainRequest;
    RTINTRADAY_PRICEREC m_lastHistBar;
    uint32_t m_barStart;
    uint32_t m_barEnd;
    uint32_t m_sessionEnd;
    uint32_t m_lastBarStart;
    int32_t m_tickCount;
    TICKREC* m_pHeldTicks;
    int32_t m_nHeldTicks;
    TICKREC* m_pPendingTicks;
    int32_t m_nPendingTicks;
    int32_t m_nPendingCapacity;
    int32_t m_bFirstPacket;
    RTINTRADAY_PRICEREC m_openBar;
    CSessionInfo* m_pSessionInfo;
    CHolidaysInfo* m_pHolidaysInfo;
    int32_t m_secondsDelayed;
    uint32_t m_closedUntil;
    uint32_t m_openUntil;
    int32_t m_bInHeartBeat;
    uint32_t m_savedBarStart;
    uint32_t m_savedBarEnd;
    uint32_t m_savedSessionEnd;
    uint32_t m_savedLastBarStart;
    RTINTRADAY_PRICEREC m_savedBar;

private:
    // Cancels the intraday request and resets its state.
    void closeTickRequest();
};
