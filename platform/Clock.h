// The library's reads of the time, through the installed qvnrt::Clock (see qvnrt/host.h).
#pragma once

#include <cstdint>
#include <ctime>

namespace qvnrt::platform {

// time(nullptr), or the installed clock's Now().
time_t Now();
// A monotonic millisecond count cut to 32 bits, as GetTickCount was, or the installed
// clock's TickCount().
uint32_t TickCount();

}  // namespace qvnrt::platform
