// The exported view of the tick cache: its delivery counts and a symbol's blocks.
#include <qvnrt/TickCache.h>

#include "platform/Directories.h"
#include "store/IntradayStore.h"
#include "store/StoreState.h"
#include "store/TickFilePath.h"

namespace qvnrt {

TickCacheCounts GetTickCacheCounts() { return RTSecCache::Store().tickCounts(); }

bool ListTickCacheBlocks(const char* symbol, std::vector<TickCacheBlock>& blocks) {
    blocks.clear();
    if (!symbol || !RTSecCache::Store().enabled()) return false;
    const std::string path = RTSecCache::tickFilePath(symbol);
    if (!platform::FileExists(path)) return false;
    // The file is read, never changed: no store is made, so nothing ages or goes.
    const auto file = RTSecCache::CompoundFile::open(path);
    if (!file) return false;
    for (const char kind : {'M', 'T'}) {
        std::vector<unsigned char> contents;
        if (!file->read(std::string(1, kind), "Contents", contents)) continue;
        for (const RTSecCache::BlockIndexEntry& entry : RTSecCache::ReadContents(contents)) {
            blocks.push_back({kind, RTSecCache::toRequestTime(entry.first),
                              RTSecCache::toRequestTime(entry.last), entry.count, entry.lastUse});
        }
    }
    return true;
}

}  // namespace qvnrt
