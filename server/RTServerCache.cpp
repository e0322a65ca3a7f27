// The cache's switch, which the interface puts on RTServer; the cache itself is the store's.
#include <qvnrt/RTServer.h>

#include "store/StoreState.h"

// Must run before the first security opens: the files are opened once. `reserved` is part
// of the interface and means nothing.
void RTServer::InitCache(bool enable, const char* directory, int keepDays, int) {
    RTSecCache::Store().configure(enable, directory, keepDays);
}

bool RTServer::IsCacheEnabled() { return RTSecCache::Store().enabled(); }
