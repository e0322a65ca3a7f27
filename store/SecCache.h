// The security cache: Sec1.dat and Sec2.dat in the cache directory, every field ever
// received for every symbol ever opened, and the library's one timer.
#pragma once

#include <cstdint>
#include <ctime>

#include <qvnrt/compat/CString.h>
#include <qvnrt/host.h>

#include "store/SecCacheMap.h"
#include "store/SecData.h"
#include "store/cache.h"

class RTSec_Base;

namespace RTSecCache {

class SecCacheEntry;

extern bool s_cacheEnabled;
extern CString s_cacheDir;
extern unsigned long s_cacheKeepSeconds;
extern int s_cacheReserved;       // stored, never read
extern time_t s_cacheNow;         // the cache's clock, refreshed by the timer
extern bool s_cacheTimerBusy;
extern uint32_t s_cacheLastTick;  // tick count at the end of the last effective tick

class SecCache : public cache<SecData1> {
public:
    // Sets the start-up defaults: on, "cache" below the working directory, 5 days.
    SecCache();
    ~SecCache() override;

    // Opens the files at the first call; true while they are open. When either cannot be
    // mapped, the cache turns itself off for the session and says so once on std::clog.
    bool ensureOpen();
    bool isOpen() const { return view() != nullptr; }

    // The node of `symbol` (cut to 19 characters), its record made if new; empty when
    // Sec1.dat cannot grow.
    SecCacheMap::Node nodeOf(const char* symbol);
    // Sec2.dat's record at `index`, or a new one (index -1); null when there is none.
    SecData2* secData2(int32_t& index);

    // Moves the map's keys and the entries' records when Sec1.dat's view moved.
    void rebase(void* newBase, void* oldBase) override;

    SecCacheMap& map() { return m_map; }

private:
    void scan();
    void startTimer();

    cache<SecData2> m_sec2;
    cache<SecData3> m_sec3;  // built and never opened
    SecCacheMap m_map;
    qvnrt::MainLoop* m_timerLoop = nullptr;
    qvnrt::MainLoop::TimerId m_timer = 0;
    bool m_opened = false;
};

// The one cache of the library.
SecCache& TheSecCache();

// Binds the security to the symbol's entry, making the record if new. Offline, the stored
// fields of `fieldList` are replayed into the security at once, then OnSecChanged (or
// OnSecClosed for a closed record). Null when the cache is off; the security's binding then
// stays as it was.
SecCacheEntry* openEntry(const char* symbol, RTSec_Base* security, const char* fieldList);
// Releases the security's binding; the entry goes with its last security, its record stays.
void closeEntry(RTSec_Base* security);

}  // namespace RTSecCache
