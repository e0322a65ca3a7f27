// ToString against the plain snprintf("%.2f") that a caller would otherwise use.
#include <benchmark/benchmark.h>

#include <cstdio>

#include <qvnrt/CDoubleToFractRep.h>

namespace {

// A spread of prices, so that no branch is always predicted.
constexpr int kPriceCount = 1024;
double g_prices[kPriceCount];
const bool g_filled = [] {
    for (int i = 0; i < kPriceCount; ++i) g_prices[i] = (i * 7919 % 2000000 - 1000000) / 100.0;
    return true;
}();

void BM_Snprintf2f(benchmark::State& state) {
    char buffer[64];
    int i = 0;
    for (auto _ : state) {
        std::snprintf(buffer, sizeof(buffer), "%.2f", g_prices[i++ & (kPriceCount - 1)]);
        benchmark::DoNotOptimize(buffer);
    }
}
BENCHMARK(BM_Snprintf2f);

void BM_ToString(benchmark::State& state) {
    CDoubleToFractRep rep;
    rep.m_displayType = static_cast<E_DISPTYPE>(state.range(0));
    rep.m_fractionFormat = static_cast<E_FRACTFORMAT>(state.range(1));
    int i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(rep.ToString(g_prices[i++ & (kPriceCount - 1)]));
    }
}
// Two decimals (the like-for-like case), eighths, automatic fractions and quarter-32nds,
// each in the long and the short layout.
BENCHMARK(BM_ToString)
    ->ArgsProduct({{DISP_DEC2, DISP_8THS, DISP_AUTO_FRACT, DISP_32NDS_QTR_A},
                   {FRACTFORMAT_LONG, FRACTFORMAT_SHORT}});

}  // namespace
