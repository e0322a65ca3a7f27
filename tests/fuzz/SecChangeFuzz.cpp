// "secmaint.dat" as any file may hold it. Beyond not crashing: after a batch is stored,
// every change of the batch is found again under its symbol and time.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include <qvnrt/RTSecChangeDB.h>

#include "store/RTSecChangeDB.h"
#include "store/StoreState.h"
#include "tests/fuzz/FuzzHome.h"

namespace {

const char* const kSymbols[] = {"IBM", "MSFT", "A", "ZZZZZZZZZZZZZZZ"};

// A change whose time and kind come from the input's last bytes, so that the batch meets
// the stored records at places the file chooses.
RTSecChange ChangeFor(const char* symbol, const uint8_t* data, size_t size, size_t salt) {
    RTSecChange change{};
    std::strncpy(change.symbol, symbol, sizeof change.symbol - 1);
    uint32_t time = static_cast<uint32_t>(salt * 977);
    if (size >= 4) std::memcpy(&time, data + size - 4, sizeof time);
    change.time = time + static_cast<uint32_t>(salt);
    change.kind = static_cast<char>('A' + salt);  // never 'S': the cache is not under test
    for (size_t i = 0; i < sizeof change.rest; ++i) change.rest[i] = static_cast<uint8_t>(salt + i);
    return change;
}

bool Holds(const RTSecChange& wanted) {
    const auto [first, last] = GetRTSecChangeInfo(wanted.symbol, wanted.time);
    for (const RTSecChange* it = first; it != last; ++it) {
        if (std::memcmp(it, &wanted, sizeof wanted) == 0) return true;
    }
    return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string path = qvnrt::fuzz::FuzzHome() + "/secmaint.dat";
    qvnrt::fuzz::WriteFileOrDie(path, data, size);
    RTSecCache::Store().changeDB().close();

    const long stamp = GetRTSecChangeTimestamp();
    // Lookups are binary searches: only a sorted file promises what they find.
    const auto [begin, end] = GetRTSecChangeRecords();
    if (!std::is_sorted(begin, end, RTSecCache::SecChangeLess)) {
        RTSecCache::Store().changeDB().close();
        return 0;
    }
    for (const char* symbol : kSymbols) {
        const auto [first, last] = GetRTSecChangeInfo(symbol, 0);
        for (const RTSecChange* it = first; it != last; ++it) {
            if (std::strncmp(it->symbol, symbol, sizeof it->symbol) != 0) std::abort();
        }
    }

    RTSecChange batch[sizeof kSymbols / sizeof *kSymbols];
    for (size_t i = 0; i < sizeof batch / sizeof *batch; ++i) {
        batch[i] = ChangeFor(kSymbols[i], data, size, i);
    }
    const bool usable = RTSecCache::Store().changeDB().usable();
    const long next = stamp == 7 ? 8 : 7;
    SetRTSecChangeInfo(next, static_cast<int>(sizeof batch / sizeof *batch), batch);
    if (usable) {
        if (GetRTSecChangeTimestamp() != next) std::abort();
        for (const RTSecChange& change : batch) {
            if (!Holds(change)) std::abort();
        }
    }
    RTSecCache::Store().changeDB().close();
    return 0;
}
