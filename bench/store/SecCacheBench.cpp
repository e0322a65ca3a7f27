// The security cache: field updates through the quote callback, written through to the
// record, and the start-up scan of a large Sec1.dat.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "store/SecCache.h"
#include "store/SecData.h"
#include "support/TempDir.h"

namespace {

// One batch of a quote: the fields a quote board streams most, then the end of the batch.
void BM_FieldUpdatesWithWriteThrough(benchmark::State& state) {
    qvnrt::test::TempDir dir;
    RTServer::InitCache(true, dir.path().c_str(), 5, 0);
    RTSecurity security;
    security.OpenRTSec("IBM");
    security.m_request = 1;  // as if the driver had answered the request with handle 1
    const unsigned long user = reinterpret_cast<unsigned long>(&security);
    double last = 100.0;
    float bid = 99.5f, ask = 100.5f;
    int32_t volume = 0, size = 300;
    for (auto _ : state) {
        last += 0.01;
        ++volume;
        RTSecurity::ReqSecCallbackHelper(1, 0, 4, RTDATA_DOUBLE, &last, user);
        RTSecurity::ReqSecCallbackHelper(1, 0, 13, RTDATA_FLOAT, &bid, user);
        RTSecurity::ReqSecCallbackHelper(1, 0, 14, RTDATA_FLOAT, &ask, user);
        RTSecurity::ReqSecCallbackHelper(1, 0, 16, RTDATA_INT, &volume, user);
        RTSecurity::ReqSecCallbackHelper(1, 0, 17, RTDATA_INT, &size, user);
        RTSecurity::ReqSecCallbackHelper(1, 0, 0, 0, nullptr, user);
    }
    state.SetItemsProcessed(state.iterations() * 6);  // field updates, batch end included
    security.m_request = 0;
}
BENCHMARK(BM_FieldUpdatesWithWriteThrough);

// A Sec1.dat of `records` symbols in use, written directly in the file format.
void WriteSec1(const std::string& path, int records) {
    std::vector<unsigned char> header(4096, 0);
    const uint32_t fields[] = {RTSecCache::kSec1Signature, 1, static_cast<uint32_t>(records), 0, 0,
                               0};
    std::memcpy(header.data(), fields, sizeof(fields));
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(header.data()), header.size());
    RTSecCache::SecData1 record;
    for (int i = 0; i < records; ++i) {
        std::memset(&record, 0, sizeof(record));
        std::snprintf(record.symbol, sizeof(record.symbol), "S%07d", i);
        record.secData2Index = -1;
        record.presence = 2;
        out.write(reinterpret_cast<const char*>(&record), sizeof(record));
    }
}

// Opening the files and the scan: what every application start pays. The end (unmapping,
// freeing the map) is left out of the timing and measured below with the start.
void BM_StartUpScan(benchmark::State& state) {
    qvnrt::test::TempDir dir;
    const int records = static_cast<int>(state.range(0));
    WriteSec1(dir.file("Sec1.dat"), records);
    for (auto _ : state) {
        auto cache = std::make_unique<RTSecCache::SecCache>();
        RTServer::InitCache(true, dir.path().c_str(), 5, 0);
        if (!cache->ensureOpen()) state.SkipWithError("the cache did not open");
        benchmark::DoNotOptimize(cache->map().size());
        state.PauseTiming();
        cache.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * records);
}
BENCHMARK(BM_StartUpScan)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void BM_StartUpAndEnd(benchmark::State& state) {
    qvnrt::test::TempDir dir;
    const int records = static_cast<int>(state.range(0));
    WriteSec1(dir.file("Sec1.dat"), records);
    for (auto _ : state) {
        RTSecCache::SecCache cache;  // the scan of one start-up, and its end
        RTServer::InitCache(true, dir.path().c_str(), 5, 0);
        if (!cache.ensureOpen()) state.SkipWithError("the cache did not open");
        benchmark::DoNotOptimize(cache.map().size());
    }
    state.SetItemsProcessed(state.iterations() * records);
}
BENCHMARK(BM_StartUpAndEnd)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
