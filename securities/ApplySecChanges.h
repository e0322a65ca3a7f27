// The security layer's part of a change batch: each change goes to the cache entry of its
// symbol through a security opened on it, as RTSec_Base::ApplySecChange does for one.
#pragma once

#include <cstddef>

#include <qvnrt/driver.h>

namespace qvnrt::securities {

// Registered with the store (RTSecCache::Hooks().applyChanges) by this layer's state.
// Opening a symbol makes its cache record if it has none, as any open does.
void ApplySecChanges(const RTSecChange* changes, size_t count);

}  // namespace qvnrt::securities
