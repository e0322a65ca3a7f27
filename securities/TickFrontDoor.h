// The cache's front door for intraday requests. A request whose route bits 0x11 are set goes
// straight to the driver; any other is a request for the symbol's minute store (weight -1)
// or tick store (weight 1). The stores are not built yet: their requests take the driver
// path here, with the reply entry that the stores will own, so that they slot in behind
// these two calls without a change in front of them.
#pragma once

#include <qvnrt/driver.h>

class RTSecurity;

namespace RTSecCache {

class SecCacheEntry;

// Called by RequestTick after it has closed the earlier request. True when the security now
// holds a driver handle (m_hTickEvent). Only the refresh bit (0x20000) of `flags` matters,
// and only to the stores.
bool openTicks(SecCacheEntry* entry, RTSecurity* security, TICKDATA* request, int flags,
               ServiceLimit limit);
// Drops the security's interest in the entry's ticks and closes its driver handle.
void closeTicks(SecCacheEntry* entry, RTSecurity* security);

}  // namespace RTSecCache
