// The cache's front door for intraday requests. A request whose route bits 0x11 are set goes
// straight to the driver (the direct path); any other is a request for the symbol's minute
// store (weight -1) or tick store (weight 1), which serves what its blocks hold and asks
// the driver only for the rest.
#pragma once

#include <qvnrt/driver.h>

class RTSecurity;

namespace RTSecCache {

class SecCacheEntry;

// Called by RequestTick after it has closed the earlier request. True when the security now
// holds a driver handle (m_hTickEvent); offline that is false, although cached records were
// delivered and the request ended. Only the refresh bit (0x20000) of `flags` matters, and
// only to the stores.
bool openTicks(SecCacheEntry* entry, RTSecurity* security, TICKDATA* request, int flags,
               ServiceLimit limit);
// Drops the security's interest in the entry's ticks and closes its driver handle. A store
// left without subscribers and pending requests is destroyed, and the .tik file with the
// last of them.
void closeTicks(SecCacheEntry* entry, RTSecurity* security);

// The cache timer's step: each active entry's tick store, then its minute store, hands its
// live records on; stores left idle by a close made inside a delivery go afterwards.
void pushLiveStores();

// The driver's reply entries: the stores' own (user = the store), and the direct path's
// (user = the security).
int TickStoreReply(unsigned long handle, int count, int live, int type, void* data,
                   unsigned long user);
int MinuteStoreReply(unsigned long handle, int count, int live, int type, void* data,
                     unsigned long user);
int DirectReply(unsigned long handle, int count, int live, int type, void* data,
                unsigned long user);

}  // namespace RTSecCache
