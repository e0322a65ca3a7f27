#include "securities/ApplySecChanges.h"

#include <cstring>
#include <string>

#include <qvnrt/RTSec_Base.h>

namespace qvnrt::securities {

void ApplySecChanges(const RTSecChange* changes, size_t count) {
    RTSec_Base security;  // one temporary security, reopened on each symbol in turn
    for (size_t i = 0; i < count; ++i) {
        RTSecChange change = changes[i];
        // A symbol from the service may fill all 16 bytes without a terminator: read no
        // further than its field.
        const std::string symbol(change.symbol, strnlen(change.symbol, sizeof change.symbol));
        security.OpenRTSec(symbol.c_str());
        security.ApplySecChange(&change);
    }
}

}  // namespace qvnrt::securities
