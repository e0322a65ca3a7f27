// What the intraday cache holds and what it has served, for tools that show it. The cache
// itself needs no call: RTSecurity::RequestTick goes through it.
#pragma once

#include <cstdint>
#include <vector>

#include <qvnrt/export.h>

namespace qvnrt {

// History records handed to securities since the library was loaded: from the cache's
// blocks, and fresh from the driver (live records count as the driver's). Main thread.
struct TickCacheCounts {
    unsigned long long fromCache = 0;
    unsigned long long fromDriver = 0;
};
QVNRT_API TickCacheCounts GetTickCacheCounts();

// One block of a symbol's cache file.
struct TickCacheBlock {
    char kind;         // 'M' one-minute bars, 'T' ticks
    uint32_t first;    // first and last time covered, Date values
    uint32_t last;
    uint32_t count;    // records in it; 0: the span is known to hold none
    uint32_t lastUse;  // seconds since 1970
};

// The blocks of the symbol's cache file, minute blocks first, each kind oldest first. False
// (and `blocks` empty) when the symbol has no cache file, the cache is off, or the file is
// in use by a request or another process. A damaged file is replaced by an empty one, as
// its next use would. Main thread.
QVNRT_API bool ListTickCacheBlocks(const char* symbol, std::vector<TickCacheBlock>& blocks);

}  // namespace qvnrt
