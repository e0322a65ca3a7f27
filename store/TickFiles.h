// A symbol's .tik file as its cache entry holds it: the open root and the two stores in it.
#pragma once

#include "store/CompoundFile.h"

namespace RTSecCache {

class SecCacheEntry;

// The entry's open .tik file, opened (or made, or replaced when damaged) on first use, with
// the record's .tik time set to the cache's clock. Null when it cannot be had: the file is
// held by another process, or the directory cannot be written.
CompoundFile* openTickFile(SecCacheEntry& entry);
// Once neither store is left: commits and releases the file, and keeps its time and size in
// the record. False while a store remains.
bool closeTickFile(SecCacheEntry& entry);
// A change of kind "S": both stores go (each settling its live records and saving its index
// first), the file is released and deleted, and the record's .tik time is cleared; its .tik
// size is left as it was. Driver requests of the stores are closed; their owners keep stale
// handles, which close harmlessly.
void destroyTickStores(SecCacheEntry& entry);

}  // namespace RTSecCache
