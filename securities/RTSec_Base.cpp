#include <qvnrt/RTSec_Base.h>

#include <cstring>
#include <typeinfo>

#include <qvnrt/CSymbolMap.h>
#include <qvnrt/RTServer.h>

#include "platform/LiveObjects.h"
#include "securities/CacheBinding.h"
#include "store/SecCacheEntry.h"

namespace {

using LiveSecurities = qvnrt::platform::LiveObjects<RTSec_Base>;

constexpr unsigned kNotMapped = 1;  // bit 0 of m_flags
constexpr size_t kCompareLength = 19;

// Types 0 and 3 are never mapped through the symbol map.
bool IsMappable(const RTSec_Base& security) {
    return !(security.m_flags & kNotMapped) && security.m_assetType != 0 &&
           security.m_assetType != 3;
}

int Order(float a, float b) { return a < b ? -1 : (a > b ? 1 : 0); }

}  // namespace

RTSec_Base::RTSec_Base()
    : m_flags(0),
      m_request(0),
      m_pCacheEntry(nullptr),
      m_delivered(1),
      m_bitFlags(0),
      m_exchange(-1),
      m_tickDirection(0),
      m_assetType(RTSECTYPE_NOT_KNOWN),
      m_field58(0),
      m_lastTrade(0.0f),
      m_prevClose(0.0f) {
    LiveSecurities::Insert(this);
}

namespace {

// Everything but the cache record, which the copy and the assignment share by reference.
void CopyValues(RTSec_Base& to, const RTSec_Base& from) {
    to.m_flags = from.m_flags;
    to.m_request = from.m_request;
    to.m_delivered = from.m_delivered;
    to.m_bitFlags = from.m_bitFlags;
    to.m_exchange = from.m_exchange;
    to.m_tickDirection = from.m_tickDirection;
    to.m_strSymbol = from.m_strSymbol;
    to.m_strName = from.m_strName;
    to.m_assetType = from.m_assetType;
    to.m_field58 = from.m_field58;
    to.m_lastTrade = from.m_lastTrade;
    to.m_prevClose = from.m_prevClose;
}

}  // namespace

// The copy shares the cache record, so it takes a reference of its own on it: each of the
// two releases it once when it closes.
RTSec_Base::RTSec_Base(const RTSec_Base& other) : RTSec_Base() {
    CopyValues(*this, other);
    m_pCacheEntry = other.m_pCacheEntry;
    if (m_pCacheEntry) ++m_pCacheEntry->m_refCount;
}

RTSec_Base& RTSec_Base::operator=(const RTSec_Base& other) {
    if (this == &other) return *this;
    if (m_pCacheEntry != other.m_pCacheEntry) {
        if (m_pCacheEntry) qvnrt::securities::closeEntry(this);
        m_pCacheEntry = other.m_pCacheEntry;
        if (m_pCacheEntry) ++m_pCacheEntry->m_refCount;
    }
    CopyValues(*this, other);
    return *this;
}

RTSec_Base::~RTSec_Base() {
    LiveSecurities::Erase(this);  // a late callback for this address now does nothing
    RTSec_Base::CloseEvent();
    Close();
}

int RTSec_Base::compareTo(RTSec_Base* other, int key) {
    if (!other || typeid(*other) != typeid(RTSec_Base)) return 0;
    switch (key) {
        case 1: return std::strcmp(m_strSymbol, other->m_strSymbol);
        case 2: return std::strcmp(m_strName, other->m_strName);
        case 4: return Order(m_lastTrade, other->m_lastTrade);
        default: return 0;
    }
}

int RTSec_Base::CloseEvent() {
    RTServer::CloseEvent(m_request);
    return 1;
}

int RTSec_Base::ReqSecCallback(unsigned long, int status, int field, int, void* data) {
    if (status < 0 || !data) return 0;
    const auto asInt = [data] { return *static_cast<const int32_t*>(data); };
    switch (field) {
        case 1: {
            const char* text = static_cast<const char*>(data);
            if (m_strSymbol.IsEmpty()) {
                m_strSymbol = text;
                break;
            }
            // Keep the application's spelling when the service answers with the mapped or
            // the same symbol, in any case, cut to the 19 characters that it keeps.
            CString mapped = m_strSymbol;
            const CString own = m_strSymbol.Left(kCompareLength);
            if (IsMappable(*this)) mapped = appSymbolMap.DL2RT(mapped, nullptr);
            mapped.MakeUpper();
            mapped = mapped.Left(kCompareLength);
            if (mapped.CompareNoCase(text) != 0 && own.CompareNoCase(text) != 0) {
                m_strSymbol = text;
            }
            break;
        }
        case 2: m_strName = static_cast<const char*>(data); break;
        case 3: m_assetType = static_cast<RTSecurityType>(asInt()); break;
        case 4: m_lastTrade = static_cast<float>(*static_cast<const double*>(data)); break;
        case 5: m_prevClose = *static_cast<const float*>(data); break;
        case 7: m_bitFlags = static_cast<uint8_t>(asInt()); break;
        case 8: m_exchange = static_cast<uint8_t>(asInt()); break;
        case 58: m_field58 = asInt(); break;
        case 59: m_tickDirection = static_cast<int16_t>(asInt()) < 0 ? 2 : 1; break;
        default: break;
    }
    return 0;
}

void RTSec_Base::OnSecChanged() {}

void RTSec_Base::OnSecClosed() { m_request = 0; }

RTSec_Base* RTSec_Base::clone() {
    RTSec_Base* copy = new RTSec_Base;
    // Kept as it always was: the bytes of this object's base part, its class identity
    // included, over the new one, without references on the texts or the cache record.
    std::memcpy(static_cast<void*>(copy), static_cast<const void*>(this), sizeof(RTSec_Base));
    return copy;
}

bool RTSec_Base::OpenRTSec(const char* symbol) {
    CloseEvent();
    m_strSymbol = symbol;
    qvnrt::securities::openEntry(m_strSymbol, this, "");
    return m_pCacheEntry != nullptr;
}

void RTSec_Base::Close() {
    if (m_pCacheEntry) qvnrt::securities::closeEntry(this);
    m_exchange = -1;
    m_pCacheEntry = nullptr;
    m_flags = 0;
    m_bitFlags = 0;
    m_field58 = 0;
    m_request = 0;
    m_tickDirection = 0;
    m_delivered = 1;
}

bool RTSec_Base::IsOpen() {
    return m_pCacheEntry && RTServer::IsCacheEnabled() && !m_pCacheEntry->isClosed();
}

int RTSec_Base::GetSecInt(int field, long* error) {
    if (!m_pCacheEntry) {
        if (error) *error = -2;
        return 0;
    }
    return m_pCacheEntry->getSecInt(field, error);
}

float RTSec_Base::GetSecFloat(int field, long* error) {
    if (!m_pCacheEntry) {
        if (error) *error = -2;
        return 0.0f;
    }
    return m_pCacheEntry->getSecFloat(field, error);
}

const char* RTSec_Base::GetSecString(int field, long* error) {
    if (!m_pCacheEntry) {
        if (error) *error = -2;
        return nullptr;
    }
    return m_pCacheEntry->getSecString(field, error);
}

CString RTSec_Base::GetReqSymbol() {
    CString symbol = m_strSymbol;
    if (IsMappable(*this)) {
        int found = 0;
        const CString mapped = appSymbolMap.DL2RT(m_strSymbol, &found);
        if (found) {
            symbol += '\n';
            symbol += mapped;
        }
    }
    return symbol.MakeUpper();
}

bool RTSec_Base::GetSessionInfo(SESSION_INFO*& session, HOLIDAYS_INFO*& holidays) {
    if (!m_pCacheEntry) {
        session = nullptr;
        holidays = nullptr;
        return false;
    }
    return m_pCacheEntry->sessionInfo(session, holidays);
}

void RTSec_Base::ApplySecChange(RTSecChange* change) {
    if (m_pCacheEntry) m_pCacheEntry->applySecChange(change);
}
