#include "securities/PendingTicks.h"

#include <qvnrt/RTSecurity.h>

namespace RTSecCache {

std::map<RTSecurity*, std::vector<TICKREC>, std::less<>> s_pendingTicks;

}  // namespace RTSecCache

namespace qvnrt::securities {

using RTSecCache::s_pendingTicks;

void QueuePendingTicks(RTSecurity* security, const TICKREC* ticks, int count) {
    std::vector<TICKREC>& queue = s_pendingTicks[security];
    queue.insert(queue.end(), ticks, ticks + count);
}

void DeliverPendingTicks() {
    for (auto at = s_pendingTicks.begin(); at != s_pendingTicks.end();) {
        RTSecurity* security = at->first;
        if (!security->IsReadyForRTCallback()) {
            ++at;
            continue;
        }
        // Taken out first: the owner's handler may close the request, or queue more.
        std::vector<TICKREC> ticks = std::move(at->second);
        at = s_pendingTicks.erase(at);
        security->ReqTickCallbackHelper2(security->m_hTickEvent, static_cast<int>(ticks.size()),
                                         1, RTREC_TICKREC, ticks.data());
        at = s_pendingTicks.upper_bound(security);
    }
}

void DropPendingTicks(RTSec_Base* security) {
    const auto at = s_pendingTicks.find(security);
    if (at != s_pendingTicks.end()) s_pendingTicks.erase(at);
}

}  // namespace qvnrt::securities
