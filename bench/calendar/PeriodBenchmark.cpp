// addPeriods by one-minute bars on a 9:30 to 16:00 session in zone 18: the fast walk (no
// holidays, and a table of full holidays) and the general walk (a table with shortened days),
// for 1 to 1,000,000 bars, against stepping the bars one at a time. Reports heap allocations
// per walk (allocs_per_op; the walks are meant to make none).
#include <qvnrt/Date.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/support/AllocationCounter.h"

namespace {

SESSION_INFO PlainSession() {
    SESSION_INFO info;
    std::memset(&info, 0, sizeof(info));
    info.size = 38;
    info.bSession[0] = 1;
    info.tradeDays[0] = 'D';
    info.sStartTime[0] = 9 << 8 | 30;
    info.sEndTime[0] = 16 << 8;
    info.chTimeZone = 18;
    info.bIsFirstSessionSameDay = 1;
    info.bSingleSessionStandard = 1;
    info.dailyPeriod = 'D';
    return info;
}

// New Year, Independence Day and Christmas of 1995 to 2034, and with `shortened` the 24th of
// December ending at 13:00.
std::vector<unsigned char> Holidays(bool shortened) {
    std::vector<HOLIDAY_ROW> rows;
    for (int year = 1995; year <= 2034; ++year) {
        rows.push_back({0, 1, 1, static_cast<int16_t>(year), 4, 0xFFFF});
        rows.push_back({0, 7, 4, static_cast<int16_t>(year), 4, 0xFFFF});
        if (shortened) rows.push_back({0, 12, 24, static_cast<int16_t>(year), 0, 13 << 8});
        rows.push_back({0, 12, 25, static_cast<int16_t>(year), 4, 0xFFFF});
    }
    std::vector<unsigned char> bytes(4 + sizeof(HOLIDAY_ROW) * rows.size());
    auto* table = reinterpret_cast<HOLIDAYS_INFO*>(bytes.data());
    table->sNumHolidays = static_cast<int16_t>(rows.size());
    table->bAreAllHolidaysFull = !shortened;
    std::memcpy(table->rows, rows.data(), sizeof(HOLIDAY_ROW) * rows.size());
    return bytes;
}

// Sixty-four bar starts spread over 2000 and 2001.
std::vector<uint32_t> Starts() {
    std::vector<uint32_t> starts;
    const Date maker;
    for (int k = 0; k < 64; ++k) {
        const uint32_t month = 1 + k % 12, day = 3 + (k * 7) % 24, year = 2000 + k % 2;
        starts.push_back(maker.makeValue(month, day, year, 10 + k % 5, (k * 13) % 60, 0, 18));
    }
    return starts;
}

enum class Walk { kFast, kFastFullHolidays, kGeneral };

void AddMinuteBars(benchmark::State& state, Walk walk) {
    const int count = static_cast<int>(state.range(0));
    SESSION_INFO session = PlainSession();
    std::vector<unsigned char> table = Holidays(walk == Walk::kGeneral);
    HOLIDAYS_INFO* holidays =
        walk == Walk::kFast ? nullptr : reinterpret_cast<HOLIDAYS_INFO*>(table.data());
    const std::vector<uint32_t> starts = Starts();
    size_t i = 0;
    const long before = qvnrt::bench::Allocations();
    for (auto _ : state) {
        Date date(starts[i++ & 63]);
        date.m_timeZone = 18;
        date.addPeriods(count, 'I', -1, &session, holidays, 18);
        benchmark::DoNotOptimize(date.m_value);
    }
    state.counters["allocs_per_op"] = benchmark::Counter(
        static_cast<double>(qvnrt::bench::Allocations() - before), benchmark::Counter::kAvgIterations);
    state.counters["bars_per_second"] = benchmark::Counter(
        static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK_CAPTURE(AddMinuteBars, fast, Walk::kFast)->Arg(1)->Arg(100)->Arg(10000)->Arg(1000000);
BENCHMARK_CAPTURE(AddMinuteBars, fast_full_holidays, Walk::kFastFullHolidays)
    ->Arg(1)
    ->Arg(100)
    ->Arg(10000)
    ->Arg(1000000);
BENCHMARK_CAPTURE(AddMinuteBars, general, Walk::kGeneral)
    ->Arg(1)
    ->Arg(100)
    ->Arg(10000)
    ->Arg(1000000);

// The cost that long walks avoid: the same count of bars, one addPeriods(1) at a time.
void StepMinuteBarsOneByOne(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    SESSION_INFO session = PlainSession();
    std::vector<unsigned char> table = Holidays(true);
    auto* holidays = reinterpret_cast<HOLIDAYS_INFO*>(table.data());
    const std::vector<uint32_t> starts = Starts();
    size_t i = 0;
    for (auto _ : state) {
        Date date(starts[i++ & 63]);
        date.m_timeZone = 18;
        for (int k = 0; k < count; ++k) date.addPeriods(1, 'I', -1, &session, holidays, 18);
        benchmark::DoNotOptimize(date.m_value);
    }
    state.counters["bars_per_second"] = benchmark::Counter(
        static_cast<double>(count), benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(StepMinuteBarsOneByOne)->Arg(100)->Arg(10000);

}  // namespace
