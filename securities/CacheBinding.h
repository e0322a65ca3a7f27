// A security object's binding to its symbol's entry in the security cache, and the offline
// replay of the entry's fields into the object.
#pragma once

class RTSec_Base;

namespace RTSecCache {
class SecCacheEntry;
}

namespace qvnrt::securities {

// Binds the security to the symbol's entry, making the record if new, and puts the cache
// timer on the main loop. Offline, the stored fields of `fieldList` (one character a field
// id) are replayed into the security at once, then OnSecChanged (or OnSecClosed for a
// closed record). Null when the cache is off; the security's binding then stays as it was.
RTSecCache::SecCacheEntry* openEntry(const char* symbol, RTSec_Base* security,
                                     const char* fieldList);
// Releases the security's binding, its place among the session listeners and what was
// buffered for it; the entry goes with its last security, its record stays.
void closeEntry(RTSec_Base* security);

// The key under which a security stands among an entry's session listeners.
inline const void* ListenerKey(const RTSec_Base* security) { return security; }

}  // namespace qvnrt::securities
