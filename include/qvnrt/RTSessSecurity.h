/// \file
/// RTSessSecurity: a security that also asks for its session and holiday rules, keeps a copy
/// of them, and tells its owner when they change.
#pragma once

#include <qvnrt/RTSecurity.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

/// A security that also keeps its session and holiday rules. Override OnSessChanged to
/// hear of new rules; m_pSessionRec and m_pHolidayRec are owned by the object.
class QVNRT_API RTSessSecurity : public RTSecurity {
public:
    RTSessSecurity();
    RTSessSecurity(const RTSessSecurity&) = delete;
    RTSessSecurity& operator=(const RTSessSecurity&) = delete;

    // ---- Replaced operations of RTSecurity ----

    ~RTSessSecurity() override;
    /// Closes the session request, frees both kept rules, then closes as RTSecurity does.
    int CloseEvent() override;
    /// Closes the session request (the body that OnSessClosed shares).
    void OnSecClosed() override;
    /// The quote request, then, when reading rules is on, the request for the rules.
    int ReqSecurity(const char* symbol, char* fields, RTSecurityType type, int flags,
                    ServiceLimit limit) override;

    // ---- Virtual operations of its own, in slot order ----

    /// Keeps copies of the rules given. Result 0.
    virtual int ReqSessCallback(unsigned long handle, int status, SESSION_INFO* rules,
                                void* holidays);
    /// The rules changed. Does nothing here: owners override it.
    virtual void OnSessChanged();
    /// The service closed the rules request.
    virtual void OnSessClosed();

    /// Asks for the rules through the cache: rules kept in the cache arrive at once, and the
    /// driver is asked while connected. Non-zero when either happened; 0 without a cache
    /// record.
    int ReqSessionInfo(int options);
    /// Whether ReqSecurity asks for the rules too (on after construction).
    void readSessHolInfo(bool read);

    unsigned long m_hSessEvent;     ///< handle of the rules request; 0 for none
    unsigned char m_bReadSessHolInfo;
    SESSION_INFO* m_pSessionRec;    ///< owned copy of the latest rules
    HOLIDAYS_INFO* m_pHolidayRec;   ///< owned copy of the latest holidays

private:
    void closeSessionRequest();
};
