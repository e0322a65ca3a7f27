// RTSecurity's quote side: the request, its callback entry, the lifecycle and the accessors.

#include <qvnrt/RTSecurity.h>

#include <cstdlib>
#include <cstring>

#include <qvnrt/CSessionInfo.h>
#include <qvnrt/RTServer.h>

#include "platform/LiveObjects.h"
#include "securities/CacheBinding.h"
#include "securities/DefaultFields.h"
#include "store/SecCacheEntry.h"

namespace {

constexpr int kStreaming = 0x1;
constexpr int kUnmappedSymbol = 0x100000;  // send m_strSymbol as it stands

}  // namespace

RTSecurity::RTSecurity()
    : m_lastError(0),
      m_strDefaultFields(qvnrt::DefaultFields()),
      m_eodRequest(0),
      m_lTickStatus(0),
      m_hTickEvent(0),
      m_bConvert(0),
      m_origRequest{},
      m_plainRequest{},
      m_lastHistBar{},
      m_barStart(0),
      m_barEnd(0),
      m_sessionEnd(0),
      m_lastBarStart(0),
      m_tickCount(-1),
      m_pHeldTicks(nullptr),
      m_nHeldTicks(0),
      m_pPendingTicks(nullptr),
      m_nPendingTicks(0),
      m_nPendingCapacity(0),
      m_bFirstPacket(1),
      m_openBar{},
      m_pSessionInfo(nullptr),
      m_pHolidaysInfo(nullptr),
      m_secondsDelayed(-1),
      m_closedUntil(0),
      m_openUntil(0),
      m_bInHeartBeat(0),
      m_savedBarStart(0),
      m_savedBarEnd(0),
      m_savedSessionEnd(0),
      m_savedLastBarStart(0),
      m_savedBar{} {}

RTSecurity::~RTSecurity() {
    CloseSecurity();
    RTSecurity::CloseEvent();
    setSessHolInfo(nullptr, nullptr, 0);
    std::free(m_pHeldTicks);
    std::free(m_pPendingTicks);
}

// ---- Virtual operations ----

// The open bar that this keeps moving exists only while intraday bars are requested; this
// build makes no intraday requests, so there is never one (m_barStart stays 0).
void RTSecurity::OnHeartBeat() {
    if (m_barStart == 0 || !RTServer::IsConnected() || m_bInHeartBeat) return;
}

int RTSecurity::ReqSecurity(const char* symbol, char* fields, RTSecurityType type, int flags,
                            ServiceLimit limit) {
    if (m_request) CloseEvent();
    m_assetType = type;
    m_strSymbol = symbol;
    m_lastError = 0;
    const CString activeFields = fields ? CString(fields) : m_strDefaultFields;
    // While offline this may call back at once, replaying the cached fields.
    qvnrt::securities::openEntry(m_strSymbol, this, activeFields);
    if (activeFields.IsEmpty()) return 1;
    if (RTServer::IsConnected()) {
        const CString requestSymbol = (flags & kUnmappedSymbol) ? m_strSymbol : GetReqSymbol();
        m_request = RTServer::m_lpReqSecurity(requestSymbol, type, activeFields,
                                              ReqSecCallbackHelper,
                                              reinterpret_cast<unsigned long>(this),
                                              flags & kStreaming, 1, limit);
        m_lastError = 0;
    } else {
        m_lastError = -1;
        m_request = 0;
    }
    // The result does not say whether the driver took the request: a zero m_request after a
    // connected request is the only sign.
    return 1;
}

bool RTSecurity::ReqTickCallback(unsigned long, int, int, int, int, void*) { return false; }

bool RTSecurity::IsReadyForRTCallback() { return true; }

bool RTSecurity::ReqEODCallback(unsigned long, int, int, RTPRICEREC*) { return false; }

void RTSecurity::setSessHolInfo(CSessionInfo* session, CHolidaysInfo* holidays,
                                unsigned char spare) {
    // The new references are taken before the old ones are dropped, so that setting the
    // object already held cannot delete it under the caller.
    if (session) {
        session->m_info.spare = spare;
        session->Use();
    }
    if (holidays) holidays->Use();
    if (m_pSessionInfo && m_pSessionInfo->Free() == 0) delete m_pSessionInfo;
    if (m_pHolidaysInfo && m_pHolidaysInfo->Free() == 0) delete m_pHolidaysInfo;
    m_pSessionInfo = session;
    m_pHolidaysInfo = holidays;
}

int RTSecurity::CloseEvent() {
    closeTickRequest();
    CloseEOD();
    RTSec_Base::CloseEvent();  // not RTSec_Option's: the option fields survive
    m_lastError = 0;
    m_assetType = RTSECTYPE_NOT_KNOWN;
    m_strSymbol.Empty();
    return 1;
}

// ---- The callback entry ----

int RTSecurity::ReqSecCallbackHelper(unsigned long request, int status, int field, int dataType,
                                     void* data, unsigned long user) {
    try {
        if (!user) return 0;
        // The driver may call after the object has gone: only a live one is touched.
        RTSec_Base* security = qvnrt::platform::LiveObjects<RTSec_Base>::Cast<RTSec_Base>(user);
        if (!security || security->m_request != request) return 1;
        if (security->m_pCacheEntry) {
            security->m_pCacheEntry->storeSecField(request, status, field, dataType, data);
        }
        if (status < 0) {
            security->OnSecClosed();
        } else if (field != 0) {
            security->ReqSecCallback(request, status, field, dataType, data);
        } else {
            security->OnSecChanged();  // field 0 closes a batch
        }
    } catch (const std::exception&) {
    }
    return 1;
}

// ---- Lifecycle ----

int RTSecurity::OpenSecurity(const char* symbol, RTSecurityType type, int flags,
                             ServiceLimit limit) {
    CloseEvent();
    RTSec_Base::Close();
    ReqSecurity(symbol, nullptr, type, flags, limit);
    return m_lastError == 0;
}

int RTSecurity::ModifySecurity(char* fields) {
    if (fields) m_strDefaultFields = fields;
    if (!RTServer::IsConnected()) return 1;
    if (!m_request) return 0;
    return RTServer::m_lpModifySecurity(m_request, fields);
}

void RTSecurity::CloseSecurity() {
    closeTickRequest();
    CloseEOD();
    CloseEvent();
    RTSec_Base::Close();
}

bool RTSecurity::IsRequested() { return m_request != 0; }

int RTSecurity::operator==(unsigned long request) { return m_request == request; }

void RTSecurity::SetDefaultFields(CString fields) { m_strDefaultFields = fields; }

long RTSecurity::GetLastError() { return m_lastError; }

void RTSecurity::closeTickRequest() {
    m_tickCount = -1;
    m_barStart = m_barEnd = m_sessionEnd = m_lastBarStart = 0;
    m_openBar.time = 0;
    m_lastHistBar.time = 0;
    m_savedBarStart = m_savedBarEnd = m_savedSessionEnd = m_savedLastBarStart = 0;
    m_bFirstPacket = 1;
    std::free(m_pHeldTicks);
    m_pHeldTicks = nullptr;
    m_nHeldTicks = 0;
    m_bConvert = 0;
    unsigned long handle = m_hTickEvent;
    RTServer::CloseEvent(handle);
    m_hTickEvent = 0;
}

// ---- Typed accessors ----

RTSecurityType RTSecurity::GetSecAssetType(long* error) {
    *error = 0;
    return m_assetType;
}

unsigned char RTSecurity::GetSecBitFlags(long* error) {
    *error = 0;
    return static_cast<unsigned char>(m_bitFlags);
}

unsigned char RTSecurity::GetSecExchange(long* error) {
    *error = 0;
    return static_cast<unsigned char>(m_exchange);
}

// A last trade or close of exactly 0 counts as missing; a negative one is present.
double RTSecurity::GetSecLastTrade(long* error) {
    *error = m_lastTrade == 0.0f ? -4 : 0;
    return m_lastTrade;
}

float RTSecurity::GetSecPrevClose(long* error) {
    *error = m_prevClose == 0.0f ? -4 : 0;
    return m_prevClose;
}

// Needs an open record. The buffer is not terminated when the name fills it; the result is
// the name's own length. Kept as it was, beside GetSecCurrDesc's other rules.
unsigned short RTSecurity::GetSecName(char* buffer, unsigned short length, long* error) {
    if (!IsOpen()) {
        *error = -2;
        return 0;
    }
    *error = 0;
    if (buffer) std::strncpy(buffer, m_strName, length);
    return static_cast<unsigned short>(m_strName.GetLength());
}

// Needs no record; always terminates at buffer[length], so the buffer holds length + 1.
unsigned short RTSecurity::GetSecCurrDesc(char* buffer, unsigned short length, long* error) {
    *error = m_strName.IsEmpty() ? -4 : 0;
    if (!buffer) return 0;
    std::strncpy(buffer, m_strName, length);
    buffer[length] = '\0';
    return static_cast<unsigned short>(std::strlen(buffer));
}

float RTSecurity::GetSecEPS(long* error) { return GetSecFloat(31, error); }

// These forward to the driver without checking the connection, as applications expect;
// without a loaded driver there is nothing to forward to, and the answer is 0.
unsigned long RTSecurity::GetExchangeLong(int exchange, int property, long defaultValue) {
    if (!RTServer::m_hInstance) return 0;
    return RTServer::m_lpGetExchangeLong(exchange, property, defaultValue);
}

int RTSecurity::GetExchangeString(int exchange, int property, char* buffer, int length,
                                  char* defaultText) {
    if (!RTServer::m_hInstance) return 0;
    return RTServer::m_lpGetExchangeString(exchange, property, buffer, length, defaultText);
}

CSessionInfo* RTSecurity::sessionRulesAre() { return m_pSessionInfo; }

CHolidaysInfo* RTSecurity::holidayRulesAre() { return m_pHolidaysInfo; }
