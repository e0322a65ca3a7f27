// A tick's time as the owner sees it: the driver's time_t as a Date value, 0 staying 0.
#pragma once

#include <cstdint>

#include <qvnrt/driver.h>

namespace qvnrt::securities {

inline uint32_t TickTime(const TICKREC& tick) {
    const uint32_t time = tick.time;
    return time ? time + EPOCH_1970 : 0;
}

}  // namespace qvnrt::securities
