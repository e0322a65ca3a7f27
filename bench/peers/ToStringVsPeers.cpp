// CDoubleToFractRep::ToString in two decimals against snprintf("%.2f") and
// fmt::format("{:.2f}"), the two a caller would otherwise reach for.
#include <cstdio>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <qvnrt/CDoubleToFractRep.h>

#include "bench/peers/PeerComparison.h"

namespace {

// A spread of prices, so that no branch is always predicted.
constexpr int kPriceCount = 1024;  // a power of two

double Price(int i) { return (i * 7919 % 2000000 - 1000000) / 100.0; }

void Own(benchmark::State& state) {
    CDoubleToFractRep rep;
    rep.m_displayType = DISP_DEC2;
    int i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(rep.ToString(Price(i++ & (kPriceCount - 1))));
    state.SetItemsProcessed(state.iterations());
}

void Snprintf(benchmark::State& state) {
    char buffer[64];
    int i = 0;
    for (auto _ : state) {
        std::snprintf(buffer, sizeof(buffer), "%.2f", Price(i++ & (kPriceCount - 1)));
        benchmark::DoNotOptimize(buffer);
    }
    state.SetItemsProcessed(state.iterations());
}

void FmtFormat(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(fmt::format("{:.2f}", Price(i++ & (kPriceCount - 1))));
    state.SetItemsProcessed(state.iterations());
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::RegisterBenchmark("ToString two decimals/qvnrt", Own);
    benchmark::RegisterBenchmark("ToString two decimals/snprintf", Snprintf);
    benchmark::RegisterBenchmark("ToString two decimals/fmt", FmtFormat);
    return qvnrt::bench::RunComparisons(argc, argv);
}
