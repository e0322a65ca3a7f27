#include "store/StoreHooks.h"

namespace RTSecCache {

StoreHooks& Hooks() {
    static StoreHooks hooks;
    return hooks;
}

}  // namespace RTSecCache
