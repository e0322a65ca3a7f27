#include "server/CacheTimer.h"

#include <algorithm>

#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTServer.h>

#include "platform/Clock.h"
#include "store/StoreState.h"

namespace qvnrt::server {
namespace {

constexpr unsigned kTimerMilliseconds = 300;
constexpr uint32_t kMinimumTickGap = 150;
constexpr unsigned kTimerMessage = 0x113;  // the timer message of the Windows build

}  // namespace

CacheTimer& TheCacheTimer() {
    static CacheTimer timer;
    return timer;
}

CacheTimer::~CacheTimer() {
    if (m_timer && m_loop == &GetMainLoop()) m_loop->removeTimer(m_timer);
}

void CacheTimer::addStep(TickStage stage, TickStep step) {
    if (!step) return;
    const auto same = [step](const Step& known) { return known.run == step; };
    if (std::any_of(m_steps.begin(), m_steps.end(), same)) return;
    const auto after = std::upper_bound(
        m_steps.begin(), m_steps.end(), stage,
        [](TickStage wanted, const Step& known) { return wanted < known.stage; });
    m_steps.insert(after, Step{stage, step});
}

void CacheTimer::removeStep(TickStep step) {
    std::erase_if(m_steps, [step](const Step& known) { return known.run == step; });
}

void CacheTimer::start() {
    if (m_timer) return;
    m_loop = &GetMainLoop();
    m_timer = m_loop->addTimer(kTimerMilliseconds, [] {
        RTSecCache::CacheTimerProc(nullptr, kTimerMessage, 0, platform::TickCount());
    });
}

void CacheTimer::tick(uint32_t systemTime) {
    RTSecCache::Store().refreshClock();
    if (m_busy || systemTime - m_lastTick < kMinimumTickGap) return;
    // Listeners hear the heartbeat before the busy flag is set: a listener's nested loop may
    // come back in up to here.
    RTServer::s_listeners.raiseEvent(&RTServer_Event::OnHeartBeatTick);
    m_busy = true;
    struct ClearBusy {
        bool& busy;
        ~ClearBusy() { busy = false; }
    } clearBusy{m_busy};
    // A copy: a step may add or remove steps while it runs.
    const std::vector<Step> steps = m_steps;
    for (const Step& step : steps) step.run();
    m_lastTick = platform::TickCount();
}

}  // namespace qvnrt::server

namespace RTSecCache {

void CacheTimerProc(HWND, unsigned int, uintptr_t, uint32_t systemTime) {
    qvnrt::server::TheCacheTimer().tick(systemTime);
}

}  // namespace RTSecCache
