/// \file
/// RTSec_Base, the base of every security object: the shared fields, the link to the
/// symbol's cache record, and GetSecInt, GetSecFloat and GetSecString, which read any field
/// from the cache at any time (error 0 present, -2 not open, -4 no such value).
// RTSec_Base: the base of every security object. It holds the values that every security
// shares, links the object to its record in the local cache, and receives field updates.
#pragma once

#include <qvnrt/compat/CString.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

namespace RTSecCache {
class SecCacheEntry;
}

class QVNRT_API RTSec_Base {
public:
    RTSec_Base();
    // Member by member, with proper text copies; the request handle and the cache link are
    // copied too.
    RTSec_Base(const RTSec_Base& other);
    RTSec_Base& operator=(const RTSec_Base& other);

    // ---- Virtual operations, in slot order ----

    // Compares by key when the other object's exact class is RTSec_Base: 1 symbol, 2 name,
    // 4 last trade. Otherwise 0.
    virtual int compareTo(RTSec_Base* other, int key);
    // Cancels the request. Result 1.
    virtual int CloseEvent();
    virtual ~RTSec_Base();
    // Stores one field of a batch in the object. Result 0.
    virtual int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                               void* data);
    // A batch of fields is complete. Does nothing here.
    virtual void OnSecChanged();
    // The service closed the security: the request handle is cleared.
    virtual void OnSecClosed();
    // A byte copy over a new RTSec_Base: it carries the source's class identity, cache link,
    // request handle and texts without taking a reference. Kept as it was: a clone is a
    // short-lived read-only view that must not outlive its source and is never destroyed
    // through the ordinary path.
    virtual RTSec_Base* clone();

    // ---- Operations ----

    // Opens the symbol in the local cache with no fields; true when the object now has a
    // cache record (false with the cache disabled).
    bool OpenRTSec(const char* symbol);
    // Releases the cache record and resets the object's state; does not cancel the request.
    void Close();
    bool IsOpen();
    // Reads through the cache record. Errors: -2 no record, -4 no such value. A null error
    // pointer is allowed.
    int GetSecInt(int field, long* error = nullptr);
    float GetSecFloat(int field, long* error = nullptr);
    const char* GetSecString(int field, long* error = nullptr);
    // The symbol as it goes to the driver: upper case, and, when the symbol map knows it,
    // both names on two lines.
    CString GetReqSymbol();
    // The session rules kept with the cache record; holidays are always null.
    bool GetSessionInfo(SESSION_INFO*& session, HOLIDAYS_INFO*& holidays);
    void ApplySecChange(RTSecChange* change);

    // ---- State ----

    // Bit 0: the symbol is not mapped through the symbol map; bit 1: a list request skips
    // this security.
    unsigned int m_flags : 2;
    unsigned long m_request;  // handle of the driver request feeding this object; 0 for none
    RTSecCache::SecCacheEntry* m_pCacheEntry;
    int m_delivered;
    int m_bitFlags;       // field 7
    int m_exchange;       // field 8
    int m_tickDirection;  // field 59: 1 zero or above, 2 below zero, 0 before any
    CString m_strSymbol;  // field 1, as the application knows it
    CString m_strName;    // field 2
    RTSecurityType m_assetType;  // field 3; 98 when not yet known
    int m_field58;
    float m_lastTrade;  // field 4
    float m_prevClose;  // field 5
};
