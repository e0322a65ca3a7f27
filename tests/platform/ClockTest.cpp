#include "platform/Clock.h"

#include <ctime>

#include <gtest/gtest.h>

#include "support/ManualClock.h"

namespace qvnrt {
namespace {

TEST(Clock, InstalledClockAnswersUntilRestored) {
    const time_t before = ::time(nullptr);
    {
        test::ManualClock manual(1234567890, 42);
        EXPECT_EQ(1234567890, platform::Now());
        EXPECT_EQ(42u, platform::TickCount());
        manual.now += 5;
        manual.ticks = 0xFFFFFFFFu;
        EXPECT_EQ(1234567895, platform::Now());
        EXPECT_EQ(0xFFFFFFFFu, platform::TickCount());
        {
            test::ManualClock inner(7, 8);  // nests: restores the outer one
            EXPECT_EQ(7, platform::Now());
        }
        EXPECT_EQ(1234567895, platform::Now());
    }
    EXPECT_GE(platform::Now(), before);
    EXPECT_LE(platform::Now(), ::time(nullptr));
}

TEST(Clock, SetClockReturnsThePreviousOneAndNullRestoresTheSystemClock) {
    test::ManualClock manual(100, 1);
    Clock* previous = SetClock(nullptr);
    EXPECT_EQ(&manual, previous);
    EXPECT_NE(100, platform::Now());
    EXPECT_EQ(nullptr, SetClock(previous));  // the system clock is reported as null
    EXPECT_EQ(100, platform::Now());
}

TEST(Clock, SystemTickCountMovesForwardInMilliseconds) {
    SetClock(nullptr);
    const uint32_t first = platform::TickCount();
    struct timespec pause = {0, 20 * 1000 * 1000};
    ::nanosleep(&pause, nullptr);
    const uint32_t elapsed = platform::TickCount() - first;  // wraps like GetTickCount
    EXPECT_GE(elapsed, 19u);
    EXPECT_LT(elapsed, 60000u);
}

}  // namespace
}  // namespace qvnrt
