// The securities' process-wide state: what waits for the cache timer to deliver it.
#pragma once

#include "securities/PendingEod.h"

namespace qvnrt::securities {

class SecuritiesState {
public:
    // Registers this layer's deliveries as steps of the cache timer.
    SecuritiesState();
    SecuritiesState(const SecuritiesState&) = delete;
    SecuritiesState& operator=(const SecuritiesState&) = delete;

    // End-of-day records waiting for their security to be ready.
    PendingEodMap& pendingEod() { return m_pendingEod; }

private:
    PendingEodMap m_pendingEod;
};

// The layer's one state object.
SecuritiesState& State();

}  // namespace qvnrt::securities
