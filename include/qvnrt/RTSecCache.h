/// \file
/// The security cache's timer procedure, exported so that an application's own loop, and
/// tests, can drive it.
#pragma once

#include <cstdint>

#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>

namespace RTSecCache {

/// Every 300 ms on the main loop. systemTime is the tick count (milliseconds, cut to 32
/// bits). A tick less than 150 ms after the previous effective tick finished only refreshes
/// the cache's clock; an effective tick raises OnHeartBeatTick on the RTServer listeners and
/// delivers what was buffered for securities that are ready for it.
QVNRT_API void CacheTimerProc(HWND window, unsigned int message, uintptr_t id,
                              uint32_t systemTime);

}  // namespace RTSecCache
