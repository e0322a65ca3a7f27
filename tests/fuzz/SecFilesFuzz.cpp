// A Sec1.dat and Sec2.dat pair as any disk may hold it: the first four bytes give Sec1.dat's
// length, the rest is split there. The files are opened by a cache of their own and every
// field of a few symbols is read; the sanitizers catch a read outside a record or a mapping.
// Beyond not crashing: a text field never runs past its record.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <sys/stat.h>

#include "store/SecCache.h"
#include "store/SecCacheEntry.h"
#include "store/StoreState.h"
#include "tests/fuzz/FuzzHome.h"

namespace {

// The symbols of the seeds, and one that no seed holds, which makes a new record.
const char* const kSymbols[] = {"IBM", "MSFT", "ESZ6 C4500", "NEW"};
constexpr int kFieldCount = 60;

const std::string& CacheDirectory() {
    static const std::string directory = [] {
        std::string path = qvnrt::fuzz::FuzzHome() + "/cache";
        if (::mkdir(path.c_str(), 0700) != 0) std::abort();
        RTSecCache::Store().configure(true, path.c_str(), 5);
        return path;
    }();
    return directory;
}

void ReadEveryField(RTSecCache::SecCacheEntry& entry) {
    for (int field = 0; field < kFieldCount; ++field) {
        long error = 0;
        (void)entry.getSecInt(field, &error);
        (void)entry.getSecFloat(field, &error);
        if (const char* text = entry.getSecString(field, &error)) {
            // Every text field of a record is shorter than the record itself.
            if (::strnlen(text, sizeof(RTSecCache::SecData1)) == sizeof(RTSecCache::SecData1)) {
                std::abort();
            }
        }
        (void)entry.isPresent(field);
    }
    (void)entry.isClosed();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& directory = CacheDirectory();
    uint32_t sec1Length = 0;
    if (size >= sizeof sec1Length) {
        std::memcpy(&sec1Length, data, sizeof sec1Length);
        data += sizeof sec1Length;
        size -= sizeof sec1Length;
    }
    sec1Length = static_cast<uint32_t>(std::min<size_t>(sec1Length, size));
    qvnrt::fuzz::WriteFileOrDie(directory + "/Sec1.dat", data, sec1Length);
    qvnrt::fuzz::WriteFileOrDie(directory + "/Sec2.dat", data + sec1Length, size - sec1Length);

    RTSecCache::SecCache cache;
    if (!cache.ensureOpen()) std::abort();  // bad bytes restart the files, never the cache
    for (const char* symbol : kSymbols) {
        RTSecCache::SecCacheEntry* entry = cache.acquire(symbol);
        if (!entry) continue;
        ReadEveryField(*entry);
        cache.release(entry);
    }
    return 0;
}
