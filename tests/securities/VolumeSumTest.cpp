// Volumes from a driver summed into a bar: a sum beyond 32 bits stays at the bound instead
// of wrapping round to the other sign.
#include <cstdint>
#include <cstdlib>
#include <limits>

#include <gtest/gtest.h>

#include <qvnrt/driver.h>

#include "securities/MinuteBarsFromTicks.h"

namespace {

struct VolumeCase {
    int32_t first, second, bar;
};

class MinuteVolume : public ::testing::TestWithParam<VolumeCase> {};

TEST_P(MinuteVolume, TwoTradesInOneMinuteMakeOneBar) {
    const VolumeCase& c = GetParam();
    const TICKREC trades[] = {{600, c.first, 1.0f, 0}, {630, c.second, 2.0f, 0}};
    int count = 2;
    auto* bars = static_cast<RTINTRADAY_PRICEREC*>(
        qvnrt::securities::MinuteBarsFromTicks(count, trades));
    ASSERT_NE(bars, nullptr);
    ASSERT_EQ(count, 1);
    EXPECT_EQ(bars[0].volume, c.bar);
    std::free(bars);
}

constexpr int32_t kMax = std::numeric_limits<int32_t>::max();
constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
INSTANTIATE_TEST_SUITE_P(Sums, MinuteVolume,
                         ::testing::Values(VolumeCase{1000, 234, 1234},
                                           VolumeCase{kMax, 1, kMax},
                                           VolumeCase{kMax - 5, kMax - 5, kMax},
                                           VolumeCase{kMin, -1, kMin},
                                           VolumeCase{kMax, kMin, -1}));

}  // namespace
