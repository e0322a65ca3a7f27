#include "store/SecCache.h"

#include <cstring>
#include <iostream>
#include <string>

#include "platform/Directories.h"
#include "store/SecCacheEntry.h"
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

}  // namespace

SecCache::SecCache()
    : cache<SecData1>(kSec1Signature, kGrowthStep),
      m_sec2(kSec2Signature, kGrowthStep),
      m_sec3(kSec3Signature, kGrowthStep) {}

SecCache::~SecCache() {
    m_map.forEach([](SecData1*, SecCacheEntry*& entry) {
        delete entry;
        entry = nullptr;
    });
    m_map.clear();
}

bool SecCache::ensureOpen() {
    if (isOpen()) return true;
    if (m_opened) return false;  // tried once this session, and failed
    m_opened = true;
    StoreState& store = Store();
    store.refreshClock();
    const std::string directory = store.directory().str();
    qvnrt::platform::MakeDirectory(directory);
    open((directory + "/Sec1.dat").c_str());
    m_sec2.open((directory + "/Sec2.dat").c_str());
    if (!isOpen() || !m_sec2.view()) {
        // The start-up scan needs both views; without them the cache is off for the session.
        std::clog << "\n !!! Cache : disabled for this session: the files in " << directory
                  << " cannot be mapped" << std::endl;
        store.disable();
        return false;
    }
    scan();
    return true;
}

// Rebuilds the free list of Sec1.dat in index order and fills the map, aging .tik files on
// the way. Sec2.dat's free list lives on from its header.
void SecCache::scan() {
    CacheFileHeader& head = *header();
    const StoreState& store = Store();
    int32_t previousFree = -1;
    int32_t freeSlots = 0;
    for (int32_t index = 0; index < head.capacity; ++index) {
        auto* record = static_cast<SecData1*>(slot(index));
        if (record->symbol[0] == '\0') {
            if (previousFree < 0) {
                head.freeHead = index;
            } else {
                setLink(previousFree, index);
            }
            previousFree = index;
            ++freeSlots;
            continue;
        }
        record->symbol[kSymbolLength] = '\0';  // a damaged key still ends inside its field
        m_map.insert(record);
        if (record->tikSize != 0 &&
            static_cast<unsigned long>(store.now() - record->tikTime) > store.keepSeconds()) {
            qvnrt::platform::DeleteFile(tickFilePath(record->symbol));
            record->tikSize = 0;
        }
    }
    // The free slots chained above: capacity less the records in use. (Counting the chain,
    // not the map's nodes, keeps a damaged file with two records of one symbol from sending
    // allocation past the end of the chain.)
    head.freeCount = freeSlots;
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

SecData2* SecCache::secData2(int32_t& index) {
    auto* sec2Header = m_sec2.header();
    if (!sec2Header) return nullptr;
    // An index outside the file (Sec2.dat lost or restarted) is as good as none.
    if (index < 0 || index >= sec2Header->capacity) {
        SecData2* record = m_sec2.allocate();
        if (!record) return nullptr;
        record->first = -1;
        record->field41[0] = '\0';
        record->field42[0] = '\0';
        index = static_cast<int32_t>((reinterpret_cast<unsigned char*>(record) -
                                      static_cast<unsigned char*>(m_sec2.view()) -
                                      kHeaderSize) /
                                     sizeof(SecData2));
        return record;
    }
    return static_cast<SecData2*>(m_sec2.slot(index));
}

void SecCache::rebase(void* newBase, void* oldBase) {
    m_map.rebase(static_cast<char*>(newBase) - static_cast<char*>(oldBase));
}

SecCacheEntry* SecCache::acquire(const char* symbol) {
    // A record's first byte 0 marks a free slot, so there is no record for an empty symbol.
    if (!isOpen() || !symbol || !*symbol) return nullptr;
    const SecCacheMap::Node node = nodeOf(symbol);
    if (!node) return nullptr;
    if (!*node.entry) *node.entry = new SecCacheEntry(node.record);
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
}

SecData2* SecCacheEntry::secData2() { return Store().secCache().secData2(m_record->secData2Index); }

}  // namespace RTSecCache
