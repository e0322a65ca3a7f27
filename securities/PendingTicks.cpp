#include "securities/PendingTicks.h"

#include <qvnrt/RTSecurity.h>

#include "securities/SecuritiesState.h"

namespace qvnrt::securities {

void QueuePendingTicks(RTSecurity* security, const TICKREC* ticks, int count) {
    std::vector<TICKREC>& queue = State().pendingTicks()[security];
    queue.insert(queue.end(), ticks, ticks + count);
}

void DeliverPendingTicks() {
    PendingTicksMap& pending = State().pendingTicks();
    for (auto at = pending.begin(); at != pending.end();) {
        RTSecurity* security = at->first;
        if (!security->IsReadyForRTCallback()) {
            ++at;
            continue;
        }
        // Taken out first: the owner's handler may close the request, or queue more.
        std::vector<TICKREC> ticks = std::move(at->second);
        at = pending.erase(at);
        security->ReqTickCallbackHelper2(security->m_hTickEvent, static_cast<int>(ticks.size()),
                                         1, RTREC_TICKREC, ticks.data());
        at = pending.upper_bound(security);
    }
}

void DropPendingTicks(RTSec_Base* security) {
    PendingTicksMap& pending = State().pendingTicks();
    const auto at = pending.find(security);
    if (at != pending.end()) pending.erase(at);
}

}  // namespace qvnrt::securities
