// The named symbol lists and the option chains that the simulation serves.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Universe.h"

struct QvnSimOptionFilter;

namespace qvnsim {

// Names, without regard to case: "ALL" (or an empty name), "STOCKS", "INDICES", "BONDS",
// "FUTURES", "CURRENCIES", "OPTIONS", an exchange's short name ("NYX", "LDX", "TKX", "CFX",
// "GBX", "FXC"), or an index symbol for its members ("$USX", "$UKX", "$JPX"). An asset type
// other than 0 or 98 keeps only that type. Options appear only in "OPTIONS" and in chains.
// Rows are indexes in the universe; nothing for an unknown name.
std::optional<std::vector<int>> SymbolList(const Universe& universe, const std::string& name,
                                           int assetType);

// The options on `underlying` that pass the filter, by expiry, then strike, calls first.
std::vector<int> OptionChain(const Universe& universe, const std::string& underlying,
                             const QvnSimOptionFilter& filter);

}  // namespace qvnsim
