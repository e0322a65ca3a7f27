// The store's process-wide state: the security cache's settings, the clock that stamps its
// records, the one SecCache and the security change database. One object, built when the library is loaded (so the
// default directory is the working directory at load) and destroyed at unload, which
// closes the files.
#pragma once

#include <ctime>

#include <qvnrt/TickCache.h>
#include <qvnrt/compat/CString.h>

#include "store/RTSecChangeDB.h"
#include "store/SecCache.h"

namespace RTSecCache {

class StoreState {
public:
    // The start-up defaults: on, "cache" below the working directory, 5 days.
    StoreState();
    StoreState(const StoreState&) = delete;
    StoreState& operator=(const StoreState&) = delete;

    // What RTServer::InitCache sets. Counts only before the files open: they open once.
    void configure(bool enabled, const char* directory, int keepDays);
    // Off for the rest of the session; the files could not be mapped.
    void disable() { m_enabled = false; }

    bool enabled() const { return m_enabled; }
    const CString& directory() const { return m_directory; }
    // How long a symbol's .tik file lives after its last commit.
    unsigned long keepSeconds() const { return m_keepSeconds; }

    // The cache's clock: time(NULL) as last read, at the files' opening and at each call of
    // the cache timer. Records are stamped with it, not with the time of the moment.
    time_t now() const { return m_now; }
    void refreshClock();

    SecCache& secCache() { return m_secCache; }
    // "secmaint.dat", opened by the first GetRTSecChangeTimestamp, closed at unload.
    RTSecChangeDB& changeDB() { return m_changeDB; }
    // History records the tick stores have handed to their owners, by origin.
    qvnrt::TickCacheCounts& tickCounts() { return m_tickCounts; }

private:
    bool m_enabled = false;
    CString m_directory;
    unsigned long m_keepSeconds = 0;
    time_t m_now = 0;
    SecCache m_secCache;
    RTSecChangeDB m_changeDB;
    qvnrt::TickCacheCounts m_tickCounts;
};

// The store's one state object.
StoreState& Store();

}  // namespace RTSecCache
