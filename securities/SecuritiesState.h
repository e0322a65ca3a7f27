// The securities' process-wide state: what waits for the cache timer to deliver it.
#pragma once

#include "securities/PendingEod.h"
#include "securities/PendingTicks.h"

namespace qvnrt::securities {

class SecuritiesState {
public:
    // Registers this layer's deliveries as steps of the cache timer.
    SecuritiesState();
    SecuritiesState(const SecuritiesState&) = delete;
    SecuritiesState& operator=(const SecuritiesState&) = delete;

    // End-of-day records waiting for their security to be ready.
    PendingEodMap& pendingEod() { return m_pendingEod; }
    // Live ticks of the direct intraday path waiting for the same.
    PendingTicksMap& pendingTicks() { return m_pendingTicks; }
    // The security whose intraday request is being handed to the driver, which may answer
    // before the handle has come back; null at other times.
    RTSecurity*& tickRequestOpening() { return m_tickRequestOpening; }

private:
    PendingEodMap m_pendingEod;
    PendingTicksMap m_pendingTicks;
    RTSecurity* m_tickRequestOpening = nullptr;
};

// The layer's one state object.
SecuritiesState& State();

}  // namespace qvnrt::securities
