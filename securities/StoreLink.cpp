#include "securities/StoreLink.h"

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

namespace qvnrt::securities {
namespace {

RTSecurity* Owner(RTSecCache::StoreOwner owner) { return static_cast<RTSecurity*>(owner); }

}  // namespace

bool StoreLink::connected() { return RTServer::IsConnected(); }

uint32_t StoreLink::handleOf(RTSecCache::StoreOwner owner) { return Owner(owner)->m_hTickEvent; }

void StoreLink::closeRequest(uint32_t handle) {
    unsigned long request = handle;
    RTServer::CloseEvent(request);
}

bool StoreLink::ready(RTSecCache::StoreOwner owner) { return Owner(owner)->IsReadyForRTCallback(); }

void StoreLink::send(RTSecCache::StoreOwner owner, int count, int live, int type, const void* data) {
    RTSecurity* security = Owner(owner);
    ++m_sending;
    try {
        security->ReqTickCallbackHelper2(security->m_hTickEvent, count, live, type,
                                         const_cast<void*>(data));
    } catch (...) {
        --m_sending;
        throw;
    }
    --m_sending;
}

}  // namespace qvnrt::securities
