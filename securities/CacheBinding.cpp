#include "securities/CacheBinding.h"

#include <cstring>

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "securities/SecuritiesState.h"
#include "server/CacheTimer.h"
#include "store/SecCacheEntry.h"
#include "store/StoreState.h"

namespace qvnrt::securities {
namespace {

using RTSecCache::SecCacheEntry;

// Replays the stored fields of `fieldList` into a security while offline: each as an
// integer, else as text, else as a float, whichever the record holds first.
void Replay(SecCacheEntry& entry, RTSec_Base& security, const char* fieldList) {
    for (const unsigned char* at = reinterpret_cast<const unsigned char*>(fieldList); *at; ++at) {
        const int field = *at;
        long error = -4;
        int32_t integer = entry.getSecInt(field, &error);
        if (error == 0) {
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_INT, &integer);
            continue;
        }
        error = -4;
        const char* text = entry.getSecString(field, &error);
        if (error == 0) {
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_TEXT,
                                    const_cast<char*>(text));
            continue;
        }
        error = -4;
        float value = entry.getSecFloat(field, &error);
        if (error != 0) continue;  // the record lacks it
        if (field == 4) {
            double widened = value;
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_DOUBLE, &widened);
        } else {
            security.ReqSecCallback(security.m_request, 0, field, RTDATA_FLOAT, &value);
        }
    }
}

}  // namespace

SecCacheEntry* openEntry(const char* symbol, RTSec_Base* security, const char* fieldList) {
    RTSecCache::StoreState& store = RTSecCache::Store();
    if (!store.enabled() || !security) return nullptr;
    if (!store.secCache().ensureOpen()) return nullptr;
    server::TheCacheTimer().start();  // the timer runs from the cache's first open on
    // A record's first byte 0 marks a free slot, so there is no record for an empty symbol:
    // such a security works without one.
    if (!symbol || !*symbol) return nullptr;
    if (!fieldList) fieldList = "";

    SecCacheEntry* entry = security->m_pCacheEntry;
    if (entry && std::strcmp(entry->m_record->symbol, security->m_strSymbol) != 0) {
        closeEntry(security);
        entry = nullptr;
    }
    if (!entry) {
        entry = store.secCache().acquire(symbol);
        if (!entry) return nullptr;  // no record to be had: the security works without one
        security->m_pCacheEntry = entry;
    }
    entry->touch();

    if (RTServer::IsConnected()) return entry;  // the reply comes from the service
    if (entry->isClosed()) {
        security->OnSecClosed();
        return entry;
    }
    Replay(*entry, *security, fieldList);
    security->OnSecChanged();
    return entry;
}

void closeEntry(RTSec_Base* security) {
    SecCacheEntry* entry = security ? security->m_pCacheEntry : nullptr;
    if (!entry) return;
    security->m_pCacheEntry = nullptr;
    entry->m_sessionListeners.erase(ListenerKey(security));
    PendingEodMap& pending = State().pendingEod();
    if (const auto buffered = pending.find(security); buffered != pending.end()) {
        pending.erase(buffered);
    }
    RTSecCache::Store().secCache().release(entry);
}

}  // namespace qvnrt::securities
