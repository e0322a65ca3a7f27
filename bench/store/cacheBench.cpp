// The record files at the size of a large store: a million records.
//
// The files go in the temporary directory (TMPDIR), so the figures depend on what backs it:
// every growth flushes the whole view to the file, which is disk work on a disk.
#include <cstdint>
#include <cstring>
#include <memory>

#include <benchmark/benchmark.h>

#include "store/cache.h"
#include "support/TempDir.h"

namespace {

using qvnrt::test::TempDir;
using RTSecCache::cache;

constexpr int kRecords = 1'000'000;

// Records of the two sizes the store uses: 260 bytes (Sec1.dat) and 72 bytes (Sec2.dat).
template <size_t N>
struct Record {
    Record() : inUse(1), value(0) {}
    char inUse;
    char padding[3];
    uint32_t value;
    char rest[N - 8];
};
static_assert(sizeof(Record<260>) == 260 && sizeof(Record<72>) == 72);

// A new file filled to a million records: allocate with all of its growth (1024 slots, then
// doubling, 11 growths in all). Opening and closing the file are not timed.
template <size_t N>
void BM_AllocateMillion(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto dir = std::make_unique<TempDir>();
        auto file = std::make_unique<cache<Record<N>>>(0x9432e105);
        if (!file->open(dir->file("Sec.dat").c_str())) {
            state.SkipWithError("cannot open the file");
            return;
        }
        state.ResumeTiming();
        for (int i = 0; i < kRecords; ++i) {
            Record<N>* record = file->allocate();
            if (!record) {
                state.SkipWithError("allocate failed");
                return;
            }
            record->value = static_cast<uint32_t>(i);
        }
        state.PauseTiming();
        file.reset();
        dir.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kRecords);
}
BENCHMARK_TEMPLATE(BM_AllocateMillion, 260)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK_TEMPLATE(BM_AllocateMillion, 72)->Unit(benchmark::kMillisecond)->Iterations(3);

// One file of a million 260-byte records, built once and kept for the read benchmarks.
struct MillionRecordFile {
    MillionRecordFile() : file(0x9432e105) {
        file.open(dir.file("Sec1.dat").c_str());
        for (int i = 0; i < kRecords; ++i) file.allocate()->value = static_cast<uint32_t>(i);
    }
    TempDir dir;
    cache<Record<260>> file;
};

MillionRecordFile& Shared() {
    static MillionRecordFile shared;
    return shared;
}

// Reads of one field of records picked at random over the whole file, through the slot
// address, as the security cache reads a record in place.
void BM_RandomRecordRead(benchmark::State& state) {
    auto& file = Shared().file;
    uint64_t seed = 88172645463325252ull;
    uint64_t sum = 0;
    for (auto _ : state) {
        seed ^= seed << 13, seed ^= seed >> 7, seed ^= seed << 17;  // xorshift64
        const auto index = static_cast<int32_t>(seed % kRecords);
        sum += static_cast<const Record<260>*>(file.slot(index))->value;
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RandomRecordRead);

// The same reads in index order, for comparison.
void BM_SequentialRecordRead(benchmark::State& state) {
    auto& file = Shared().file;
    int32_t index = 0;
    uint64_t sum = 0;
    for (auto _ : state) {
        sum += static_cast<const Record<260>*>(file.slot(index))->value;
        if (++index == kRecords) index = 0;
    }
    benchmark::DoNotOptimize(sum);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_SequentialRecordRead);

}  // namespace
