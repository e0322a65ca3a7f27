#include "securities/PendingEod.h"

#include <exception>

#include <qvnrt/RTSecurity.h>

#include "platform/LiveObjects.h"
#include "securities/SecuritiesState.h"

namespace qvnrt::securities {

// Each entry goes over whole in the first tick in which its security is ready. While the
// data is not final, the first record is the one that a further batch could still
// overwrite: it is held back from the main call and sent alone, with flags 0, after it.
void DeliverPendingEod() {
    PendingEodMap& pending = State().pendingEod();
    for (auto at = pending.begin(); at != pending.end();) {
        RTSecurity* security = at->first;
        if (!security->IsReadyForRTCallback()) {
            ++at;
            continue;
        }
        // Taken out of the map first: the owner's handler may close the request, and so
        // erase its own entry, while it runs.
        PendingEodEntry entry = std::move(at->second);
        at = pending.erase(at);
        const RTSecurity* const key = security;
        // The owner's handler may destroy the security; its remaining calls then go nowhere.
        const auto alive = [security] {
            return qvnrt::platform::LiveObjects<RTSec_Base>::Contains(security);
        };
        // An exception from the owner's handler ends this entry's delivery and no other's:
        // the timer runs inside the application's loop, which must not see it.
        try {
            int count = static_cast<int>(entry.records.size());
            if (!entry.complete && count > 0) --count;
            if (count != 0) {
                security->ReqEODCallback(security->m_eodRequest, count, 1,
                                         entry.records.data() + (entry.records.size() - count));
            }
            if (!entry.complete && !entry.records.empty() && alive()) {
                security->ReqEODCallback(security->m_eodRequest, 1, 0, entry.records.data());
            }
            if (entry.ended && alive()) {
                security->ReqEODCallback(security->m_eodRequest, 0, entry.complete ? -1 : 0,
                                         nullptr);
            }
        } catch (const std::exception&) {
        }
        at = pending.upper_bound(const_cast<RTSecurity*>(key));
    }
}

}  // namespace qvnrt::securities
