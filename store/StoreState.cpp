#include "store/StoreState.h"

#include <string>

#include "platform/Clock.h"
#include "platform/Directories.h"

namespace RTSecCache {
namespace {

constexpr int kDefaultKeepDays = 5;
constexpr unsigned long kSecondsPerDay = 86400;

// Built when the library is loaded.
StoreState g_store;

}  // namespace

StoreState& Store() { return g_store; }

StoreState::StoreState() {
    const std::string directory =
        qvnrt::platform::JoinPath(qvnrt::platform::CurrentDirectory(), "cache");
    configure(true, directory.c_str(), kDefaultKeepDays);
}

void StoreState::configure(bool enabled, const char* directory, int keepDays) {
    m_enabled = enabled;
    m_directory = directory;
    m_keepSeconds = static_cast<unsigned long>(keepDays) * kSecondsPerDay;
}

void StoreState::refreshClock() { m_now = qvnrt::platform::Now(); }

}  // namespace RTSecCache
