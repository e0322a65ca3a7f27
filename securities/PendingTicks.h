// Live ticks of requests that bypassed the tick stores, held per security until the cache
// timer hands them on: the driver's call stays short, and the owner's handler runs on the
// timer, not inside it.
#pragma once

#include <map>
#include <vector>

#include <qvnrt/driver.h>

class RTSecurity;
class RTSec_Base;

namespace qvnrt::securities {

// Ordered by the security's address, the order of delivery. Found by any RTSec_Base address
// too, which is how a closing security drops its queue.
using PendingTicksMap = std::map<RTSecurity*, std::vector<TICKREC>, std::less<>>;

void QueuePendingTicks(RTSecurity* security, const TICKREC* ticks, int count);
// The cache timer's step: hands every queue whose security is ready to it, as one live
// packet, and erases it.
void DeliverPendingTicks();
// Forgets what waits for the security (its request closed, or the object going).
void DropPendingTicks(RTSec_Base* security);

}  // namespace qvnrt::securities
