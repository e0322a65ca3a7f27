// Steps that layers above the store fill in.
//
// The store never names a security; where its logic needs one, it calls through these
// pointers. They are filled while the library loads, from the state
// object of the layer that provides them, and a null step is skipped.
#pragma once

#include <cstddef>

#include <qvnrt/driver.h>

namespace RTSecCache {

// Applies a sorted batch of security changes to the cached securities, one by one.
using SecChangeApplier = void (*)(const RTSecChange* changes, size_t count);

struct StoreHooks {
    SecChangeApplier applyChanges = nullptr;
};

// Made at first use, so that a layer's state object may register in it while the library
// loads, whichever of them is built first.
StoreHooks& Hooks();

}  // namespace RTSecCache
