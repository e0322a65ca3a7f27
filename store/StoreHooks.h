// Steps that layers above the store, and parts of the store built later, fill in.
//
// The store never names a security or a tick store's class; where its logic needs them, it
// calls through these pointers. They are filled while the library loads, from the state
// object of the layer that provides them, and a null step is skipped.
#pragma once

#include <cstddef>

#include <qvnrt/driver.h>

namespace RTSecCache {

class SecCacheEntry;

// Applies a sorted batch of security changes to the cached securities, one by one.
using SecChangeApplier = void (*)(const RTSecChange* changes, size_t count);

// Puts an entry's intraday stores away: the TickStore and the MinuteStore each flushed and
// saved, then destroyed, then the open root storage (the .tik file) released. Afterwards
// m_pTickStore, m_pMinuteStore and m_pRootStorage are null. The caller deletes the file.
using TickStoreCloser = void (*)(SecCacheEntry& entry);

struct StoreHooks {
    SecChangeApplier applyChanges = nullptr;
    TickStoreCloser closeTickStores = nullptr;
};

// Made at first use, so that a layer's state object may register in it while the library
// loads, whichever of them is built first.
StoreHooks& Hooks();

}  // namespace RTSecCache
