#include "bench/peers/PeerComparison.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

namespace qvnrt::bench {
namespace {

// The console report as usual, keeping each benchmark's rate on the side.
class RateCollector : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            const auto rate = run.counters.find("items_per_second");
            if (rate == run.counters.end()) continue;
            const std::string name = run.benchmark_name();
            const size_t slash = name.rfind('/');
            if (slash == std::string::npos) continue;
            m_rates[name.substr(0, slash)].emplace_back(name.substr(slash + 1), rate->second.value);
        }
    }

    // comparison -> (contender, items a second), in the order run
    std::map<std::string, std::vector<std::pair<std::string, double>>> m_rates;
};

}  // namespace

int RunComparisons(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    RateCollector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::Shutdown();

    const char* tablePath = std::getenv("QVNRT_PEER_TABLE");
    FILE* table = tablePath && *tablePath ? std::fopen(tablePath, "a") : nullptr;
    std::printf("\n");
    for (const auto& [comparison, contenders] : collector.m_rates) {
        double own = 0;
        for (const auto& [contender, rate] : contenders) {
            if (contender == kOwnContender) own = rate;
        }
        if (own <= 0) continue;
        for (const auto& [contender, rate] : contenders) {
            if (contender == kOwnContender || rate <= 0) continue;
            std::printf("%-40s qvnrt %9.2f M/s  %-10s %9.2f M/s  ratio %6.2f\n", comparison.c_str(),
                        own / 1e6, contender.c_str(), rate / 1e6, own / rate);
            if (table) {
                std::fprintf(table, "%s\t%s\t%.0f\t%.0f\t%.3f\n", comparison.c_str(),
                             contender.c_str(), own, rate, own / rate);
            }
        }
    }
    if (table) std::fclose(table);
    return 0;
}

}  // namespace qvnrt::bench
