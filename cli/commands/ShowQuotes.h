// The quote board that `quotes` and `demo` show: live on a terminal, streamed rows elsewhere.
#pragma once

#include <string>
#include <vector>

#include "cli/Command.h"

namespace qvnrt::cli {

// Streams `symbols` for `seconds` (0: until Ctrl-C); offline, prints what the cache holds.
// Returns the exit status.
int ShowQuotes(const GlobalOptions& global, const std::vector<std::string>& symbols,
               double seconds, const std::string& title);

}  // namespace qvnrt::cli
