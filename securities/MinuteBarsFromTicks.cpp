#include "securities/MinuteBarsFromTicks.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <qvnrt/driver.h>

#include "store/IntradayRecords.h"

namespace qvnrt::securities {

void* MinuteBarsFromTicks(int& count, const void* ticks) {
    if (count <= 0 || !ticks) {
        count = 0;
        return nullptr;
    }
    auto* bars = static_cast<RTINTRADAY_PRICEREC*>(
        std::malloc(static_cast<size_t>(count) * sizeof(RTINTRADAY_PRICEREC)));
    if (!bars) return nullptr;
    const auto* bytes = static_cast<const unsigned char*>(ticks);
    int made = 0;
    for (int i = 0; i < count; ++i) {
        TICKREC tick;
        std::memcpy(&tick, bytes + static_cast<size_t>(i) * sizeof(TICKREC), sizeof(tick));
        const uint32_t minute = tick.time - tick.time % 60;
        if (made > 0 && bars[made - 1].time == minute) {
            RTINTRADAY_PRICEREC& bar = bars[made - 1];
            bar.volume = RTSecCache::AddVolume(bar.volume, tick.volume);
            bar.close = tick.price;
            bar.high = std::max(bar.high, tick.price);
            bar.low = std::min(bar.low, tick.price);
        } else if (made == 0 || bars[made - 1].time < minute) {
            bars[made++] = {minute, tick.volume, tick.price, tick.price, tick.price, tick.price};
        }
    }
    count = made;
    return bars;
}

}  // namespace qvnrt::securities
