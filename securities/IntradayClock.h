// The library's time now for intraday requests: the cache's clock, refreshed by the timer,
// moved by the server's clock offset.
#pragma once

#include <ctime>

#include <qvnrt/RTServer.h>

#include "store/StoreState.h"

namespace qvnrt::securities {

inline time_t IntradayNow() { return RTSecCache::Store().now() + RTServer::s_lServerTimeDelta; }

}  // namespace qvnrt::securities
