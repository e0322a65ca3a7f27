#include "securities/SessionRulesRequest.h"

#include <cstring>

#include <qvnrt/RTServer.h>
#include <qvnrt/RTSessSecurity.h>

#include "platform/LiveObjects.h"
#include "securities/CacheBinding.h"
#include "store/SecCacheEntry.h"

namespace qvnrt::securities {

using RTSecCache::SecCacheEntry;

bool RequestSessionRules(RTSessSecurity& security) {
    SecCacheEntry* entry = security.m_pCacheEntry;
    if (!entry) return false;
    if (RTServer::IsConnected()) {
        entry->m_sessionListeners.insert(ListenerKey(&security));
        const CString symbol = security.GetReqSymbol();
        security.m_hSessEvent = RTServer::m_lpclientReqSessionInfo(
            const_cast<char*>(static_cast<const char*>(symbol)), security.m_assetType,
            SessionRulesCallback, reinterpret_cast<unsigned long>(&security));
        security.m_lastError = 0;
    } else {
        security.m_lastError = -1;
        security.m_hSessEvent = 0;
    }
    SESSION_INFO& kept = entry->m_record->session;
    if (kept.size != 0) {
        security.ReqSessCallback(security.m_hSessEvent, 0, &kept, nullptr);
        security.OnSessChanged();
        security.m_lastError = 0;
    }
    return security.m_lastError == 0;
}

int SessionRulesCallback(unsigned long handle, int status, SESSION_INFO* rules, void* holidays,
                         unsigned long user) {
    if (!user) return 0;
    try {
        auto* security = platform::LiveObjects<RTSec_Base>::Cast<RTSessSecurity>(user);
        if (!security || security->m_hSessEvent != handle) return 1;
        SecCacheEntry* entry = security->m_pCacheEntry;
        if (!entry) return 1;
        SESSION_INFO& kept = entry->m_record->session;
        if (status < 0) {
            kept.size = 0;  // the next GetSessionInfo answers false
            security->OnSessClosed();
        } else if (rules && std::memcmp(&kept, rules, sizeof(SESSION_INFO)) != 0) {
            // Only a change is told, and to everyone who listens for this symbol.
            std::memcpy(&kept, rules, sizeof(SESSION_INFO));
            // A copy of the set: a listener may close (and so leave the set) while it hears.
            const auto listeners = entry->m_sessionListeners;
            for (const void* key : listeners) {
                if (!entry->m_sessionListeners.count(key)) continue;
                // Only RTSessSecurity objects join, under the address of their base.
                auto* listener = static_cast<RTSessSecurity*>(
                    static_cast<RTSec_Base*>(const_cast<void*>(key)));
                listener->ReqSessCallback(handle, status, rules, holidays);
                listener->OnSessChanged();
            }
        }
        // A security made only for this request has no fields of its own to keep it bound.
        if (security->m_strDefaultFields.IsEmpty()) closeEntry(security);
    } catch (const std::exception&) {
    }
    return 1;
}

}  // namespace qvnrt::securities
