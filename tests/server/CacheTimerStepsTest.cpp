// The steps that the layers above hand the cache timer: their order, changes made while a
// tick runs, and a step that throws.
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "server/CacheTimer.h"
#include "support/ManualClock.h"

namespace {

using qvnrt::server::CacheTimer;
using qvnrt::server::TickStage;

CacheTimer* g_timer = nullptr;
std::vector<std::string> g_ran;

// Records its name and whether the timer was busy while it ran.
template <char Name>
void Step() {
    g_ran.push_back(std::string(1, Name) + (g_timer->busy() ? "" : " (not busy)"));
}

void RemoveBAndAddC() {
    Step<'x'>();
    g_timer->removeStep(&Step<'b'>);
    g_timer->addStep(TickStage::PendingTicks, &Step<'c'>);
}

void Throw() { throw std::runtime_error("a handler's failure"); }

class CacheTimerSteps : public ::testing::Test {
protected:
    void SetUp() override {
        g_timer = &timer;
        g_ran.clear();
    }
    void TearDown() override { g_timer = nullptr; }

    // Effective ticks, 300 ms apart as on the loop.
    std::vector<std::string> Tick() {
        g_ran.clear();
        clock.ticks += 300;
        timer.tick(clock.ticks);
        return g_ran;
    }

    qvnrt::test::ManualClock clock{5000, 1000};
    CacheTimer timer;
};

TEST_F(CacheTimerSteps, RunByStageThenInTheOrderOfRegistration) {
    timer.addStep(TickStage::LiveStores, &Step<'a'>);
    timer.addStep(TickStage::PendingTicks, &Step<'b'>);
    timer.addStep(TickStage::PendingEod, &Step<'c'>);
    timer.addStep(TickStage::PendingTicks, &Step<'d'>);
    timer.addStep(TickStage::PendingEod, &Step<'a'>);  // already there: stays where it is
    EXPECT_EQ((std::vector<std::string>{"b", "d", "c", "a"}), Tick());
}

TEST_F(CacheTimerSteps, ChangesMadeDuringATickCountFromTheNext) {
    timer.addStep(TickStage::PendingTicks, &RemoveBAndAddC);
    timer.addStep(TickStage::PendingEod, &Step<'b'>);
    EXPECT_EQ((std::vector<std::string>{"x", "b"}), Tick());
    EXPECT_EQ((std::vector<std::string>{"x", "c"}), Tick());
}

TEST_F(CacheTimerSteps, AThrowingStepLeavesTheTimerReadyForTheNextTick) {
    timer.addStep(TickStage::PendingTicks, &Throw);
    timer.addStep(TickStage::PendingEod, &Step<'a'>);
    const uint32_t lastTick = timer.lastTick();
    EXPECT_THROW(Tick(), std::runtime_error);
    EXPECT_TRUE(g_ran.empty());
    EXPECT_FALSE(timer.busy());
    EXPECT_EQ(lastTick, timer.lastTick());  // the tick did not finish

    timer.removeStep(&Throw);
    EXPECT_EQ((std::vector<std::string>{"a"}), Tick());
    EXPECT_EQ(clock.ticks, timer.lastTick());
}

}  // namespace
