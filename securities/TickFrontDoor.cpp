#include "securities/TickFrontDoor.h"

#include <exception>
#include <iostream>
#include <vector>

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "platform/LiveObjects.h"
#include "securities/PendingTicks.h"
#include "securities/SecuritiesState.h"
#include "store/IntradayStore.h"
#include "store/SecCacheEntry.h"
#include "store/TickFiles.h"

namespace RTSecCache {

namespace {

constexpr uint8_t kDirectRoute = 0x11;
constexpr int16_t kMinuteKind = -1;
constexpr int16_t kTickKind = 1;

RTSecurity* LiveSecurity(unsigned long request, unsigned long user) {
    RTSecurity* security =
        qvnrt::platform::LiveObjects<RTSec_Base>::Cast<RTSecurity>(user);
    if (!security) return nullptr;
    // A late packet of a closed request must not reach the request that followed it.
    const RTSecurity* opening = qvnrt::securities::State().tickRequestOpening();
    if (security != opening && security->m_hTickEvent != request) return nullptr;
    return security;
}

bool AskDriver(RTSecurity* security, TICKDATA* request, TickCallback reply, ServiceLimit limit) {
    if (!RTServer::IsConnected()) return false;
    // A driver may answer inside the call, before the handle has come back.
    RTSecurity*& opening = qvnrt::securities::State().tickRequestOpening();
    opening = security;
    const unsigned long handle =
        RTServer::m_lpReqTick(security->GetReqSymbol(), security->m_assetType, request, reply,
                              reinterpret_cast<unsigned long>(security), limit);
    opening = nullptr;
    security->m_hTickEvent = static_cast<uint32_t>(handle);
    return security->m_hTickEvent != 0;
}

// A store's request for a missing span: the security's request with the span's times, the
// store as the user value. The security's request is left as it was.
class DriverSpan final : public SpanRequester {
public:
    DriverSpan(RTSecurity* security, TICKDATA* request, TickCallback reply,
               IntradayStoreBase* store, ServiceLimit limit)
        : m_security(security), m_request(request), m_reply(reply), m_store(store), m_limit(limit) {}

    uint32_t ask(uint32_t from, uint32_t to) override {
        const uint32_t start = m_request->start;
        const uint32_t end = m_request->end;
        m_request->start = toRequestTime(from);
        m_request->end = toRequestTime(to);
        const unsigned long handle = RTServer::m_lpReqTick(
            m_security->GetReqSymbol(), m_security->m_assetType, m_request, m_reply,
            reinterpret_cast<unsigned long>(m_store), m_limit);
        m_request->start = start;
        m_request->end = end;
        m_security->m_hTickEvent = static_cast<uint32_t>(handle);
        return m_security->m_hTickEvent;
    }

private:
    RTSecurity* m_security;
    TICKDATA* m_request;
    TickCallback m_reply;
    IntradayStoreBase* m_store;
    ServiceLimit m_limit;
};

template <class Store>
int StoreReply(unsigned long handle, int count, int live, int type, void* data, unsigned long user) {
    if (!user) return 0;
    try {
        if (Store* store = qvnrt::platform::LiveObjects<IntradayStoreBase>::Cast<Store>(user)) {
            store->onDriverReply(static_cast<uint32_t>(handle), count, live, type, data);
        }
    } catch (const std::exception&) {
        // dropped: the driver's call must return
    }
    return 1;
}

template <class Store>
bool RequestFromStore(Store*& slot, CompoundFile& file, RTSecurity* security, TICKDATA* request,
                      int flags, TickCallback reply, ServiceLimit limit) {
    if (!slot) slot = new Store(file, qvnrt::securities::State().storeLink());
    DriverSpan driver(security, request, reply, slot, limit);
    return slot->request(security, request->start, request->end, flags, driver);
}

// Forgets the security in one store; destroys the store when nothing is left in it.
template <class Store>
void LeaveStore(Store*& slot, RTSecurity* security) {
    if (!slot) return;
    bool heldShared = false;
    if (slot->unsubscribe(security, &heldShared)) {
        if (heldShared) {
            security->m_hTickEvent = 0;  // the shared request lives on for the others
        } else {
            unsigned long handle = security->m_hTickEvent;
            RTServer::CloseEvent(handle);
            security->m_hTickEvent = 0;
        }
    }
    if (!slot->hasSubscribers()) slot->closeShared();
    if (slot->idle() && !qvnrt::securities::State().storeLink().sending()) {
        delete slot;
        slot = nullptr;
    }
}

template <class Store>
void DestroyIfIdle(Store*& slot) {
    if (slot && slot->idle()) {
        delete slot;
        slot = nullptr;
    }
}

void ReleaseFileIfDone(SecCacheEntry* entry) {
    if (closeTickFile(*entry)) qvnrt::securities::State().activeEntries().erase(entry);
}

}  // namespace

int DirectReply(unsigned long request, int count, int live, int type, void* data,
                unsigned long user) {
    try {
        if (!user) return 0;
        RTSecurity* security = LiveSecurity(request, user);
        if (!security) return 1;
        if (live && count > 0 && type == RTREC_TICKREC && data) {
            qvnrt::securities::QueuePendingTicks(security, static_cast<TICKREC*>(data), count);
            return 1;
        }
        return security->ReqTickCallbackHelper2(request, count, live, type, data);
    } catch (const std::exception& error) {
        std::clog << error.what() << '\n';
    }
    return 1;
}

int TickStoreReply(unsigned long handle, int count, int live, int type, void* data,
                   unsigned long user) {
    return StoreReply<TickStore>(handle, count, live, type, data, user);
}

int MinuteStoreReply(unsigned long handle, int count, int live, int type, void* data,
                     unsigned long user) {
    return StoreReply<MinuteStore>(handle, count, live, type, data, user);
}

bool openTicks(SecCacheEntry* entry, RTSecurity* security, TICKDATA* request, int flags,
               ServiceLimit limit) {
    if (!entry || !security || !request) return false;
    CompoundFile* file = openTickFile(*entry);
    if (request->route & kDirectRoute) return AskDriver(security, request, DirectReply, limit);
    // A .tik file that another process holds (or that cannot be made) leaves the request
    // to the driver alone, uncached.
    if (!file) return AskDriver(security, request, DirectReply, limit);
    qvnrt::securities::State().activeEntries().insert(entry);
    if (request->weight == kMinuteKind) {
        return RequestFromStore(entry->m_pMinuteStore, *file, security, request, flags,
                                MinuteStoreReply, limit);
    }
    if (request->weight == kTickKind) {
        return RequestFromStore(entry->m_pTickStore, *file, security, request, flags,
                                TickStoreReply, limit);
    }
    return false;
}

void closeTicks(SecCacheEntry* entry, RTSecurity* security) {
    if (!entry || !security) return;
    qvnrt::securities::DropPendingTicks(security);
    LeaveStore(entry->m_pTickStore, security);
    LeaveStore(entry->m_pMinuteStore, security);
    if (!qvnrt::securities::State().storeLink().sending()) ReleaseFileIfDone(entry);
    unsigned long handle = security->m_hTickEvent;
    RTServer::CloseEvent(handle);
    security->m_hTickEvent = 0;
}

void pushLiveStores() {
    auto& active = qvnrt::securities::State().activeEntries();
    // Copied: an owner's handler may close its request, and with it an entry's stores.
    const std::vector<SecCacheEntry*> entries(active.begin(), active.end());
    for (SecCacheEntry* entry : entries) {
        if (!active.count(entry)) continue;
        if (entry->m_pTickStore) entry->m_pTickStore->pushLive();
        if (entry->m_pMinuteStore) entry->m_pMinuteStore->pushLive();
    }
    for (SecCacheEntry* entry : entries) {
        if (!active.count(entry)) continue;
        DestroyIfIdle(entry->m_pTickStore);
        DestroyIfIdle(entry->m_pMinuteStore);
        ReleaseFileIfDone(entry);
    }
}

}  // namespace RTSecCache
