#include "securities/SecuritiesState.h"

#include "securities/ApplySecChanges.h"
#include "securities/TickFrontDoor.h"
#include "server/CacheTimer.h"
#include "store/StoreHooks.h"

namespace qvnrt::securities {
namespace {

// Built when the library is loaded, so that it outlives the securities of an application
// (a static security closes its requests at exit, and so reaches in here).
SecuritiesState g_state;

}  // namespace

SecuritiesState& State() { return g_state; }

// The timer is made at first use, here at the latest, so it is destroyed after this object:
// the steps never outlive the state that they read. The store's hooks are made at first use
// too, so the change batch finds this layer's step whichever object is built first.
SecuritiesState::SecuritiesState() {
    server::TheCacheTimer().addStep(server::TickStage::PendingTicks, &DeliverPendingTicks);
    server::TheCacheTimer().addStep(server::TickStage::PendingEod, &DeliverPendingEod);
    RTSecCache::Hooks().applyChanges = &ApplySecChanges;
    server::TheCacheTimer().addStep(server::TickStage::LiveStores, &RTSecCache::pushLiveStores);
}

}  // namespace qvnrt::securities
