// The tick cache: delivering a long cached minute history to an owner (against a plain
// memcpy of the same bytes, measured in the same run), writing that history into an empty
// cache, and the time to the first record of a request whose middle third is missing.

#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "store/IntradayStore.h"
#include "store/StoreState.h"
#include "support/TempDir.h"

namespace {

using RTSecCache::MinuteBar;
using RTSecCache::MinuteStore;
using Clock = std::chrono::steady_clock;

constexpr uint32_t kStart = 1700000040;  // a minute's start
constexpr int kBars = 1000000;           // about 24 MB
constexpr int kReplyBars = 10000;        // bars per driver packet

// An owner that takes each packet as an application would: copies it out.
class CopyingLink final : public RTSecCache::IntradayLink {
public:
    bool connected() override { return online; }
    uint32_t handleOf(RTSecCache::StoreOwner) override { return handle; }
    void closeRequest(uint32_t) override {}
    bool ready(RTSecCache::StoreOwner) override { return true; }
    void send(RTSecCache::StoreOwner, int count, int, int, const void* data) override {
        if (count <= 0) return;
        if (!first) first = Clock::now();
        const size_t bytes = static_cast<size_t>(count) * sizeof(MinuteBar);
        if (received.size() < used + bytes) received.resize(used + bytes);
        std::memcpy(received.data() + used, data, bytes);
        used += bytes;
    }
    bool online = true;
    uint32_t handle = 0;
    std::vector<unsigned char> received;
    size_t used = 0;
    std::optional<Clock::time_point> first;
};

class Asker final : public RTSecCache::SpanRequester {
public:
    explicit Asker(CopyingLink& link) : m_link(link) {}
    uint32_t ask(uint32_t, uint32_t) override { return m_link.handle = ++m_next; }

private:
    CopyingLink& m_link;
    uint32_t m_next = 0;
};

std::vector<MinuteBar> History(int firstBar, int bars) {
    std::vector<MinuteBar> out(static_cast<size_t>(bars));
    for (int i = 0; i < bars; ++i) {
        const uint32_t time = kStart + 60u * static_cast<uint32_t>(firstBar + bars - 1 - i);
        out[static_cast<size_t>(i)] = {time, 100 + i % 7, 1.0f, 1.5f, 2.0f, 0.5f};
    }
    return out;
}

struct Cache {
    explicit Cache(CopyingLink& link) {
        RTSecCache::Store().configure(true, dir.path().c_str(), 5);
        RTSecCache::Store().refreshClock();
        file = RTSecCache::CompoundFile::open(dir.file("B.tik"));
        store = std::make_unique<MinuteStore>(*file, link);
    }
    qvnrt::test::TempDir dir;
    std::unique_ptr<RTSecCache::CompoundFile> file;
    std::unique_ptr<MinuteStore> store;
};

uint32_t Request(uint32_t storeTime) { return RTSecCache::toRequestTime(storeTime); }

// The driver answers bars [firstBar, firstBar + bars) for owner `owner` in packets.
void Fill(Cache& cache, CopyingLink& link, int firstBar, int bars) {
    static int owner;
    Asker asker(link);
    const uint32_t from = kStart + 60u * static_cast<uint32_t>(firstBar);
    const uint32_t to = from + 60u * static_cast<uint32_t>(bars) - 1;
    cache.store->request(&owner, Request(from), Request(to), 0, asker);
    for (int newest = firstBar + bars; newest > firstBar; newest -= kReplyBars) {
        const int count = std::min(kReplyBars, newest - firstBar);
        std::vector<MinuteBar> packet = History(newest - count, count);
        cache.store->onDriverReply(link.handle, count, 0, RTREC_INTRADAY_PRICEREC, packet.data());
    }
    cache.store->onDriverReply(link.handle, 0, 0, RTREC_INTRADAY_PRICEREC, nullptr);
    cache.store->unsubscribe(&owner, nullptr);
    link.handle = 0;
}

// CPU seconds of this process: on a shared machine wall time counts the others' work too.
double CpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double MemcpySeconds(size_t bytes) {
    std::vector<unsigned char> from(bytes, 1), to(bytes, 0);
    double total = 0;
    constexpr int kRuns = 10;
    for (int i = 0; i < kRuns; ++i) {
        const double start = CpuSeconds();
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::DoNotOptimize(to.data());
        benchmark::ClobberMemory();
        total += CpuSeconds() - start;
    }
    return total / kRuns;
}

void BM_DeliverCachedMinuteBars(benchmark::State& state) {
    CopyingLink link;
    Cache cache(link);
    Fill(cache, link, 0, kBars);
    link.online = false;  // served from the blocks alone
    int owner = 0;
    Asker asker(link);
    double seconds = 0;
    for (auto _ : state) {
        link.used = 0;
        const double start = CpuSeconds();
        cache.store->request(&owner, Request(kStart), Request(kStart + 60u * kBars - 1), 0, asker);
        seconds += CpuSeconds() - start;
        cache.store->unsubscribe(&owner, nullptr);
        if (link.used != kBars * sizeof(MinuteBar)) state.SkipWithError("not every bar arrived");
    }
    const double bytes = static_cast<double>(kBars) * sizeof(MinuteBar);
    state.SetItemsProcessed(state.iterations() * kBars);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
    const double deliveryRate = bytes * static_cast<double>(state.iterations()) / seconds;
    state.counters["memcpy_ratio"] = deliveryRate / (bytes / MemcpySeconds(static_cast<size_t>(bytes)));
}
BENCHMARK(BM_DeliverCachedMinuteBars)->Unit(benchmark::kMillisecond);

void BM_WriteHistoryIntoEmptyCache(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        CopyingLink link;
        auto cache = std::make_unique<Cache>(link);
        state.ResumeTiming();
        Fill(*cache, link, 0, kBars);
        state.PauseTiming();
        cache.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kBars);
    state.SetBytesProcessed(state.iterations() * kBars * static_cast<int64_t>(sizeof(MinuteBar)));
}
BENCHMARK(BM_WriteHistoryIntoEmptyCache)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_FirstRecordWithTheMiddleThirdMissing(benchmark::State& state) {
    CopyingLink link;
    Cache cache(link);
    const int third = kBars / 3;
    Fill(cache, link, 0, third);
    Fill(cache, link, 2 * third, kBars - 2 * third);
    int owner = 0;
    Asker asker(link);
    for (auto _ : state) {
        link.first.reset();
        link.used = 0;
        const auto start = Clock::now();
        cache.store->request(&owner, Request(kStart), Request(kStart + 60u * kBars - 1), 0, asker);
        if (!link.first) state.SkipWithError("no record before the driver's reply");
        state.SetIterationTime(std::chrono::duration<double>(*link.first - start).count());
        cache.store->unsubscribe(&owner, nullptr);
    }
}
BENCHMARK(BM_FirstRecordWithTheMiddleThirdMissing)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace
