// Conversions and steps of Date: how many per second, and how many heap allocations each
// makes (the allocs_per_op counter; the calendar is meant to make none).
#include <qvnrt/Date.h>
#include <qvnrt/host.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/support/AllocationCounter.h"

namespace {

// Instants spread over 1970 to 2035, a third of them in the months of the daylight changes.
std::vector<uint32_t> Instants() {
    std::mt19937 random(42);
    std::uniform_int_distribution<uint32_t> any(EPOCH_1970, EPOCH_1970 + 2000000000u);
    std::vector<uint32_t> values(4096);
    for (size_t i = 0; i < values.size(); ++i) {
        values[i] = any(random);
        if (i % 3 == 0) {
            Date date(values[i]);
            values[i] = date.makeValue(i % 2 ? 4 : 10, 1 + i % 28, date.getYear(ZONE_GMT), i % 24,
                                       0, 0, ZONE_GMT);
        }
    }
    return values;
}

// Counts the allocations made during its life, per iteration of `state`; it must end before
// anything else touches the state's counters, which allocate.
class AllocationCounter {
public:
    explicit AllocationCounter(benchmark::State& state)
        : m_state(state), m_before(qvnrt::bench::Allocations()) {}
    ~AllocationCounter() {
        m_state.counters["allocs_per_op"] =
            benchmark::Counter(static_cast<double>(qvnrt::bench::Allocations() - m_before),
                               benchmark::Counter::kAvgIterations);
    }

private:
    benchmark::State& m_state;
    long m_before;
};

void TakeApart(benchmark::State& state) {
    const uint8_t zone = static_cast<uint8_t>(state.range(0));
    const std::vector<uint32_t> values = Instants();
    Date date;
    size_t i = 0;
    {
        AllocationCounter counter(state);
        for (auto _ : state) {
            date.m_value = values[i++ & 4095];
            uint32_t month, day, year, hour, minute, second;
            date.getMDYHMS(month, day, year, hour, minute, second, zone);
            benchmark::DoNotOptimize(hour + day);
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(TakeApart)->Arg(ZONE_GMT)->Arg(18)->Arg(31)->Arg(ZONE_LOCAL);

void MakeFromFields(benchmark::State& state) {
    const uint8_t zone = static_cast<uint8_t>(state.range(0));
    const std::vector<uint32_t> values = Instants();
    struct F {
        uint32_t month, day, year, hour, minute, second;
    };
    std::vector<F> fields(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
        F& f = fields[i];
        Date(values[i]).getMDYHMS(f.month, f.day, f.year, f.hour, f.minute, f.second, zone);
    }
    const Date date;
    size_t i = 0;
    {
        AllocationCounter counter(state);
        for (auto _ : state) {
            const F& f = fields[i++ & 4095];
            benchmark::DoNotOptimize(
                date.makeValue(f.month, f.day, f.year, f.hour, f.minute, f.second, zone));
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(MakeFromFields)->Arg(ZONE_GMT)->Arg(18)->Arg(ZONE_LOCAL);

// A value taken apart in zone 18 and made again from its fields, with the faithful calendar
// (0) and the modern one (1), whose row comes from the tz database.
void RoundTripByCalendar(benchmark::State& state) {
    qvnrt::SetModernCalendar(state.range(0) != 0);
    const std::vector<uint32_t> values = Instants();
    Date date;
    uint32_t month, day, year, hour, minute, second;
    date.m_value = values[0];
    date.getMDYHMS(month, day, year, hour, minute, second, 18);  // reads the database once
    size_t i = 0;
    {
        AllocationCounter counter(state);
        for (auto _ : state) {
            date.m_value = values[i++ & 4095];
            date.getMDYHMS(month, day, year, hour, minute, second, 18);
            benchmark::DoNotOptimize(date.makeValue(month, day, year, hour, minute, second, 18));
        }
    }
    state.SetItemsProcessed(state.iterations());
    qvnrt::SetModernCalendar(false);
}
BENCHMARK(RoundTripByCalendar)->Arg(0)->Arg(1);

void Steps(benchmark::State& state) {
    const std::vector<uint32_t> values = Instants();
    const char codes[] = {'D', 'W', 'M', 'Y', static_cast<char>(DAYS_ALL)};
    size_t i = 0;
    {
        AllocationCounter counter(state);
        for (auto _ : state) {
            Date date(values[i & 4095]);
            date.stepPeriods(static_cast<int>(i % 11) - 5, codes[i % 5], 18);
            benchmark::DoNotOptimize(date.m_value);
            ++i;
        }
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Steps);

}  // namespace
