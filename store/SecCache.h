// The security cache: Sec1.dat and Sec2.dat in the cache directory, every field ever
// received for every symbol ever opened. It knows symbols, records and fields; binding a
// security object to an entry, and the timer, belong to the layers above.
#pragma once

#include <cstdint>
#include <vector>

#include "store/SecCacheMap.h"
#include "store/SecData.h"
#include "store/cache.h"

namespace RTSecCache {

class SecCacheEntry;

class SecCache : public cache<SecData1> {
public:
    SecCache();
    ~SecCache() override;

    // Opens the files in the store's directory at the first call; true while they are open.
    // When either cannot be mapped, or another process has the directory, the cache turns
    // itself off for the session and says so once on std::clog.
    bool ensureOpen();
    bool isOpen() const { return view() != nullptr; }

    // The node of `symbol` (cut to 19 characters), its record made if new; empty when
    // Sec1.dat cannot grow.
    SecCacheMap::Node nodeOf(const char* symbol);
    // Sec2.dat's record at `index`, or a new one (index -1); null when there is none.
    SecData2* secData2(int32_t& index);
    // Sec2.dat's record at `index` for a read: null when the index names none, never a new one.
    SecData2* existingSecData2(int32_t index) const;

    // The symbol's entry with one more reference, made (with its record) if new; null when
    // the files are not open, the symbol is empty or Sec1.dat cannot grow.
    SecCacheEntry* acquire(const char* symbol);
    // Gives back one reference; the entry goes with its last one, its record stays.
    void release(SecCacheEntry* entry);

    // Moves the map's keys and the entries' records when Sec1.dat's view moved.
    void rebase(void* newBase, void* oldBase) override;

    SecCacheMap& map() { return m_map; }

private:
    void scan();
    // Whether a record's Sec2 index may be used: inside Sec2.dat and no other record's. The
    // first record to claim a slot keeps it.
    bool claimSec2(int32_t index);
    SecData2* allocateSec2(int32_t& index);
    void dropSec2(SecData1& record);
    void ageTickFile(SecData1& record);

    cache<SecData2> m_sec2;
    SecCacheMap m_map;
    bool m_opened = false;
    size_t m_liveEntries = 0;  // entries made and not yet freed
    int m_directoryLock = -1;
    // Sec2.dat's slots that a record of Sec1.dat holds, one flag a slot; a slot handed out by
    // a damaged free list that is already held is refused.
    std::vector<uint8_t> m_sec2Claimed;  // held while the files are open; -1 when not taken
};

}  // namespace RTSecCache
