// Live trades folded into one-minute bars, as the minute store folds them.
#pragma once

namespace qvnrt::securities {

// `ticks` holds `count` TICKREC, oldest first, times as from the driver. Returns a malloc'd
// array of RTINTRADAY_PRICEREC stamped with the first second of their minute, and sets
// `count` to their number; a tick older than the bar before it is dropped. Null with a
// count of 0 when there is nothing, null with the count unchanged when memory ran out.
void* MinuteBarsFromTicks(int& count, const void* ticks);

}  // namespace qvnrt::securities
