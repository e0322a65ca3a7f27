#include "securities/TickFrontDoor.h"

#include <exception>
#include <iostream>

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "platform/LiveObjects.h"
#include "securities/PendingTicks.h"
#include "securities/SecuritiesState.h"

namespace RTSecCache {

namespace {

constexpr uint8_t kDirectRoute = 0x11;

RTSecurity* LiveSecurity(unsigned long request, unsigned long user) {
    RTSecurity* security =
        qvnrt::platform::LiveObjects<RTSec_Base>::Cast<RTSecurity>(user);
    if (!security) return nullptr;
    // A late packet of a closed request must not reach the request that followed it.
    const RTSecurity* opening = qvnrt::securities::State().tickRequestOpening();
    if (security != opening && security->m_hTickEvent != request) return nullptr;
    return security;
}

// The plain callback of the direct path: live ticks wait for the timer, everything else is
// converted and delivered at once.
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

// The reply entry of the minute and tick stores. Until they exist their requests are served
// as the direct path serves its own.
int StoreReply(unsigned long request, int count, int live, int type, void* data,
               unsigned long user) {
    return DirectReply(request, count, live, type, data, user);
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

}  // namespace

bool openTicks(SecCacheEntry* entry, RTSecurity* security, TICKDATA* request, int /*flags*/,
               ServiceLimit limit) {
    if (!entry || !security || !request) return false;
    if (request->route & kDirectRoute) return AskDriver(security, request, DirectReply, limit);
    if (request->weight != -1 && request->weight != 1) return false;
    return AskDriver(security, request, StoreReply, limit);
}

void closeTicks(SecCacheEntry* entry, RTSecurity* security) {
    if (!entry || !security) return;
    qvnrt::securities::DropPendingTicks(security);
    unsigned long handle = security->m_hTickEvent;
    RTServer::CloseEvent(handle);
    security->m_hTickEvent = 0;
}

}  // namespace RTSecCache
