// How the intraday stores reach the securities that they serve and the driver: the owner of
// a store request is an RTSecurity, its handle is m_hTickEvent, and records reach it through
// ReqTickCallbackHelper2.
#pragma once

#include "store/IntradayLink.h"

namespace qvnrt::securities {

class StoreLink final : public RTSecCache::IntradayLink {
public:
    bool connected() override;
    uint32_t handleOf(RTSecCache::StoreOwner owner) override;
    void closeRequest(uint32_t handle) override;
    bool ready(RTSecCache::StoreOwner owner) override;
    void send(RTSecCache::StoreOwner owner, int count, int live, int type, const void* data) override;

    // True while an owner's handler runs inside a send: a store must not be destroyed
    // under its own feet then, so closing leaves idle stores to the timer.
    bool sending() const { return m_sending != 0; }

private:
    int m_sending = 0;
};

}  // namespace qvnrt::securities
