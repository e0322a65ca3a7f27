// The conversions of intraday data: one-minute history to 7-minute bars, live minutes one
// packet at a time, and ticks to 100-tick bars. Rates are input records per second; the
// bytes that the conversions allocate are counted through wrapped malloc and realloc.
//
// bench/compare_pandas.py runs the first of these beside pandas' resample on the same bars.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include <qvnrt/CSessionInfo.h>
#include <qvnrt/Date.h>
#include <qvnrt/RTSecurity.h>

#include "BenchHistory.h"

extern "C" {
void* __real_malloc(size_t size);
void* __real_realloc(void* pointer, size_t size);
size_t g_allocatedBytes = 0;
void* __wrap_malloc(size_t size) {
    g_allocatedBytes += size;
    return __real_malloc(size);
}
void* __wrap_realloc(void* pointer, size_t size) {
    g_allocatedBytes += size;
    return __real_realloc(pointer, size);
}
}

namespace {

using qvnrt::bench::HistoryMinutes;
using qvnrt::bench::HistoryTicks;

constexpr int kMillion = 1000000;

// An owner that takes every packet and keeps nothing.
class Sink : public RTSecurity {
public:
    explicit Sink(int weight) {
        SESSION_INFO rules = qvnrt::bench::NineThirtyToFour();
        auto* session = new CSessionInfo(&rules);
        setSessHolInfo(session, nullptr, 0);
        session->Free();
        m_origRequest.weight = static_cast<int16_t>(weight);
        m_plainRequest.weight = weight < 0 ? -1 : 1;
        m_bConvert = 1;
    }
    bool ReqTickCallback(unsigned long, int count, int, int, int, void* data) override {
        records += count;
        benchmark::DoNotOptimize(data);
        return true;
    }
    void Restart() {
        CloseTick();
        m_bConvert = 1;
    }
    long records = 0;
};

template <class Record>
void SendHistory(Sink& sink, std::vector<Record>& records, int type, size_t packet) {
    for (size_t at = 0; at < records.size(); at += packet) {
        const size_t count = std::min(packet, records.size() - at);
        sink.ReqTickCallbackHelper2(0, static_cast<int>(count), 0, type, records.data() + at);
    }
    sink.ReqTickCallbackHelper2(0, 0, 0, type, nullptr);
}

void BM_HistoryMinutesToSevenMinuteBars(benchmark::State& state) {
    std::vector<RTINTRADAY_PRICEREC> minutes = HistoryMinutes(kMillion);  // newest first
    Sink sink(-7);
    const size_t packet = static_cast<size_t>(state.range(0));
    g_allocatedBytes = 0;
    for (auto _ : state) {
        sink.Restart();
        SendHistory(sink, minutes, RTREC_INTRADAY_PRICEREC, packet);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(minutes.size()));
    state.counters["bars_out"] = static_cast<double>(sink.records) / state.iterations();
    state.counters["bytes_allocated"] = static_cast<double>(g_allocatedBytes) / state.iterations();
}
BENCHMARK(BM_HistoryMinutesToSevenMinuteBars)->Arg(500)->Arg(kMillion)->Unit(benchmark::kMillisecond);

void BM_LiveMinutesOnePacketEach(benchmark::State& state) {
    std::vector<RTINTRADAY_PRICEREC> minutes = HistoryMinutes(kMillion);
    std::reverse(minutes.begin(), minutes.end());  // live: oldest first
    Sink sink(-7);
    size_t at = 0;
    g_allocatedBytes = 0;
    for (auto _ : state) {
        if (at == minutes.size()) {
            state.PauseTiming();
            sink.Restart();
            at = 0;
            state.ResumeTiming();
        }
        sink.ReqTickCallbackHelper2(0, 1, 1, RTREC_INTRADAY_PRICEREC, &minutes[at++]);
    }
    state.SetItemsProcessed(state.iterations());
    state.counters["bytes_allocated"] = static_cast<double>(g_allocatedBytes) / state.iterations();
}
BENCHMARK(BM_LiveMinutesOnePacketEach);

void BM_TicksToHundredTickBars(benchmark::State& state) {
    std::vector<TICKREC> ticks = HistoryTicks(kMillion);  // newest first
    Sink sink(100);
    g_allocatedBytes = 0;
    for (auto _ : state) {
        sink.Restart();
        SendHistory(sink, ticks, RTREC_TICKREC, static_cast<size_t>(state.range(0)));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(ticks.size()));
    state.counters["bars_out"] = static_cast<double>(sink.records) / state.iterations();
    state.counters["bytes_allocated"] = static_cast<double>(g_allocatedBytes) / state.iterations();
}
BENCHMARK(BM_TicksToHundredTickBars)->Arg(500)->Arg(kMillion)->Unit(benchmark::kMillisecond);

}  // namespace
