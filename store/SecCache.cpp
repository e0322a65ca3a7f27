#include "store/SecCache.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <string>
#include <utility>

#include "platform/Directories.h"
#include "platform/MappedFiles.h"
#include "store/SecCacheEntry.h"
#include "store/SecFieldTable.h"
#include "store/StoreState.h"
#include "store/TickFilePath.h"

namespace RTSecCache {
namespace {

constexpr unsigned kGrowthStep = 1024;
constexpr size_t kSymbolLength = 19;

void MakeRecord(SecData1& record, const char* symbol) {
    std::memset(&record, 0, sizeof(record));
    record.secData2Index = -1;
    record.reserved228 = -1;
    std::strncpy(record.symbol, symbol, kSymbolLength);
    record.symbol[kSymbolLength] = '\0';
    record.presence = uint64_t{1} << 1;  // the symbol, field 1
}

// The symbol as the record keeps it: at most 19 characters.
std::string KeyOf(const char* symbol) { return std::string(symbol).substr(0, kSymbolLength); }

// A record file restarted at open drops every record it held: said once, with where the
// old bytes are kept.
void ReportRestart(const _cache& file) {
    if (file.restartReason().empty()) return;
    std::clog << "\n !!! Cache : " << file.fullPath() << " was damaged ("
              << file.restartReason() << "): its records are dropped; "
              << (file.keptAside().empty() ? "the old file could not be kept"
                                           : "the old file is kept as " + file.keptAside())
              << std::endl;
}

}  // namespace

SecCache::SecCache()
    : cache<SecData1>(kSec1Signature, kGrowthStep),
      m_sec2(kSec2Signature, kGrowthStep) {}

SecCache::~SecCache() {
    // Entries still bound at the end are freed here. The walk over a million nodes is
    // skipped when none is left, as at most ends.
    if (m_liveEntries > 0) {
        m_map.forEach([](SecData1*, SecCacheEntry*& entry) {
            delete entry;
            entry = nullptr;
        });
    }
    m_map.clear();
    // Both files closed, Sec2.dat first, before the directory is free for another process:
    // one that took the directory while this one still held a file would attach to it.
    m_sec2.closeCleanly();
    closeCleanly();
    qvnrt::platform::CloseFile(m_directoryLock);
}

bool SecCache::ensureOpen() {
    if (isOpen()) return true;
    if (m_opened) return false;  // tried once this session, and failed
    m_opened = true;
    StoreState& store = Store();
    store.refreshClock();
    const std::string directory = store.directory().str();
    qvnrt::platform::MakeDirectory(directory);
    // One process a cache directory. A second one would attach to the first's files and
    // restamp their headers under it; it runs with its cache off instead. (A directory that
    // cannot be opened at all is reported below, when its files cannot be mapped.)
    bool heldElsewhere = false;
    m_directoryLock = qvnrt::platform::LockDirectory(directory, heldElsewhere);
    if (heldElsewhere) {
        std::clog << "\n !!! Cache : " << directory
                  << " is in use by another process: the cache is off for this session"
                  << std::endl;
        store.disable();
        return false;
    }
    open((directory + "/Sec1.dat").c_str());
    m_sec2.open((directory + "/Sec2.dat").c_str());
    const CacheFileHeader* sec2Header = m_sec2.header();
    m_sec2Claimed.assign(sec2Header ? static_cast<size_t>(std::max(sec2Header->capacity, 0)) : 0, 0);
    if (!isOpen() || !m_sec2.view()) {
        // The start-up scan needs both views; without them the cache is off for the session.
        std::clog << "\n !!! Cache : disabled for this session: the files in " << directory
                  << " cannot be mapped" << std::endl;
        qvnrt::platform::CloseFile(std::exchange(m_directoryLock, -1));
        store.disable();
        return false;
    }
    ReportRestart(*this);
    ReportRestart(m_sec2);
    scan();
    return true;
}

namespace {

// Writes `value` only where it is not already: a page of the mapped file that is written is
// dirty and goes back to disk, and a start-up that rewrote every record of a 260 MB file
// with the bytes it held would cost seconds of write-back.
template <class T>
void Keep(T& place, T value) {
    if (place != value) place = value;
}

}  // namespace

// Rebuilds the free list of Sec1.dat in index order and fills the map, aging .tik files on
// the way. Sec2.dat's free list lives on from its header.
//
// One pass in file order, with the kernel told so. The map's table is sized once from the
// capacity, each symbol is hashed once, and records go in by batches whose table slots
// were prefetched while the batch was read, so the misses of a table too large for the
// processor's cache overlap instead of following one another.
void SecCache::scan() {
    namespace platform = qvnrt::platform;
    CacheFileHeader& head = *header();
    const int32_t capacity = head.capacity;
    platform::AdviseAccess(view(), mappedSize(), platform::AccessPattern::Sequential);
    m_map.reserve(static_cast<size_t>(capacity));

    constexpr int32_t kBatch = 16;
    SecData1* batch[kBatch];
    uint64_t hashes[kBatch];
    int32_t previousFree = -1;
    int32_t freeSlots = 0;
    int32_t dropped = 0;  // records whose Sec2 index was outside the file or another's
    for (int32_t first = 0; first < capacity; first += kBatch) {
        const int32_t end = std::min(capacity, first + kBatch);
        int32_t inUse = 0;
        for (int32_t index = first; index < end; ++index) {
            auto* record = static_cast<SecData1*>(slot(index));
            if (record->symbol[0] == '\0') {
                if (previousFree < 0) {
                    Keep(head.freeHead, index);
                } else if (link(previousFree) != index) {
                    setLink(previousFree, index);
                }
                previousFree = index;
                ++freeSlots;
                continue;
            }
            Keep(record->symbol[kSymbolLength], '\0');  // a damaged key still ends in its field
            if (record->secData2Index != -1 && !claimSec2(record->secData2Index)) {
                dropSec2(*record);
                ++dropped;
            }
            hashes[inUse] = HashRecordSymbol(*record);
            m_map.prefetch(hashes[inUse]);
            batch[inUse++] = record;
        }
        for (int32_t i = 0; i < inUse; ++i) {
            m_map.insert(batch[i], hashes[i]);
            ageTickFile(*batch[i]);
        }
    }
    // The free slots chained above: capacity less the records in use. (Counting the chain,
    // not the map's nodes, keeps a damaged file with two records of one symbol from sending
    // allocation past the end of the chain.)
    Keep(head.freeCount, freeSlots);
    if (dropped > 0) {
        std::clog << "\n !!! Cache : " << m_sec2.fullPath() << ": " << dropped
                  << " symbols held no record of their own there; their fields from it are dropped"
                  << std::endl;
    }
    platform::AdviseAccess(view(), mappedSize(), platform::AccessPattern::Normal);
}

// A record whose Sec2 index is not its own forgets it, and with it the fields kept there:
// they read as never received until the service sends them again.
void SecCache::dropSec2(SecData1& record) {
    record.secData2Index = -1;
    record.presence &= ~Sec2FieldBits();
}

// A .tik file older than the store keeps data goes, and the record forgets it.
void SecCache::ageTickFile(SecData1& record) {
    if (record.tikSize == 0) return;
    const StoreState& store = Store();
    if (static_cast<unsigned long>(store.now() - record.tikTime) > store.keepSeconds()) {
        qvnrt::platform::DeleteFile(tickFilePath(record.symbol));
        record.tikSize = 0;
    }
}

// A symbol longer than the record keeps is looked up by the part that is kept, so opening
// it again finds its record instead of making another.
SecCacheMap::Node SecCache::nodeOf(const char* symbol) {
    const std::string key = KeyOf(symbol);
    if (const SecCacheMap::Node found = m_map.find(key.c_str())) return found;
    SecData1* record = allocate();
    if (!record) return {};
    MakeRecord(*record, key.c_str());
    return m_map.insert(record);
}

bool SecCache::claimSec2(int32_t index) {
    const CacheFileHeader* sec2Header = m_sec2.header();
    if (!sec2Header || index < 0 || index >= sec2Header->capacity) return false;
    const auto at = static_cast<size_t>(index);
    if (m_sec2Claimed.size() <= at) m_sec2Claimed.resize(static_cast<size_t>(sec2Header->capacity));
    if (m_sec2Claimed[at]) return false;
    m_sec2Claimed[at] = 1;
    return true;
}

SecData2* SecCache::existingSecData2(int32_t index) const {
    const CacheFileHeader* sec2Header = m_sec2.header();
    if (!sec2Header || index < 0 || index >= sec2Header->capacity) return nullptr;
    return static_cast<SecData2*>(m_sec2.slot(index));
}

SecData2* SecCache::allocateSec2(int32_t& index) {
    for (;;) {
        auto* record = static_cast<SecData2*>(m_sec2.allocate());
        if (!record) return nullptr;
        const auto taken = static_cast<int32_t>((reinterpret_cast<unsigned char*>(record) -
                                                 static_cast<unsigned char*>(m_sec2.view()) -
                                                 kHeaderSize) /
                                                sizeof(SecData2));
        if (!claimSec2(taken)) {
            // A free list that hands out a record another symbol holds is damaged: drop it,
            // as a damaged link is dropped, and let the file grow instead.
            m_sec2.header()->freeCount = 0;
            continue;
        }
        // Zero, the link of a slot taken from the free list included, so that no read ever
        // sees the link as field 48.
        std::memset(record, 0, sizeof(*record));
        record->first = -1;
        index = taken;
        return record;
    }
}

SecData2* SecCache::secData2(int32_t& index) {
    // The scan has checked every index read from Sec1.dat; one outside the file now (the
    // file could not grow) is as good as none.
    if (SecData2* record = existingSecData2(index)) return record;
    return allocateSec2(index);
}

void SecCache::rebase(void* newBase, void* oldBase) {
    m_map.rebase(static_cast<char*>(newBase) - static_cast<char*>(oldBase));
}

SecCacheEntry* SecCache::acquire(const char* symbol) {
    // A record's first byte 0 marks a free slot, so there is no record for an empty symbol.
    if (!isOpen() || !symbol || !*symbol) return nullptr;
    const SecCacheMap::Node node = nodeOf(symbol);
    if (!node) return nullptr;
    if (!*node.entry) {
        *node.entry = new SecCacheEntry(node.record);
        ++m_liveEntries;
    }
    SecCacheEntry* entry = *node.entry;
    ++entry->m_refCount;
    return entry;
}

void SecCache::release(SecCacheEntry* entry) {
    if (!entry) return;
    entry->touch();
    if (--entry->m_refCount > 0) return;
    // The last reference: the entry goes, the record stays with all its fields.
    if (const SecCacheMap::Node node = m_map.find(entry->m_record->symbol)) *node.entry = nullptr;
    delete entry;
    --m_liveEntries;
}

SecData2* SecCacheEntry::secData2() { return Store().secCache().secData2(m_record->secData2Index); }

}  // namespace RTSecCache
