// Date in New York (zone 18) against abseil's time zone library and glibc's localtime_r and
// mktime: taking an instant apart into its wall-clock fields, and making one from them.
// 1987 to 2006 only: the years in which the three agree on New York's daylight rules.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <vector>

#include <absl/time/civil_time.h>
#include <absl/time/time.h>
#include <benchmark/benchmark.h>

#include <qvnrt/Date.h>

#include "bench/peers/PeerComparison.h"

namespace {

constexpr uint8_t kNewYork = 18;
constexpr const char* kNewYorkName = "America/New_York";
constexpr size_t kSamples = 4096;  // a power of two

struct Fields {
    uint32_t month, day, year, hour, minute, second;
};

// Unix times spread over 1987-01-01 to 2006-12-31, New York time.
std::vector<int64_t> UnixTimes() {
    std::mt19937 random(42);
    std::uniform_int_distribution<int64_t> any(536475600, 1167627599);
    std::vector<int64_t> times(kSamples);
    for (int64_t& time : times) time = any(random);
    return times;
}

std::vector<Fields> FieldsOf(const std::vector<int64_t>& times) {
    std::vector<Fields> fields(times.size());
    for (size_t i = 0; i < times.size(); ++i) {
        Fields& f = fields[i];
        Date(static_cast<uint32_t>(times[i] + EPOCH_1970))
            .getMDYHMS(f.month, f.day, f.year, f.hour, f.minute, f.second, kNewYork);
    }
    return fields;
}

absl::TimeZone NewYork() {
    absl::TimeZone zone;
    if (!absl::LoadTimeZone(kNewYorkName, &zone)) {
        std::fprintf(stderr, "abseil cannot load %s\n", kNewYorkName);
        std::exit(1);
    }
    return zone;
}

// The three must read a sample alike, or the race is between different answers: samples
// on which any of them differs are replaced, and their number is said.
bool Agree(int64_t time, const absl::TimeZone& zone) {
    Fields f;
    Date(static_cast<uint32_t>(time + EPOCH_1970))
        .getMDYHMS(f.month, f.day, f.year, f.hour, f.minute, f.second, kNewYork);
    const absl::CivilSecond civil = absl::ToCivilSecond(absl::FromUnixSeconds(time), zone);
    const time_t unix = static_cast<time_t>(time);
    struct tm local;
    localtime_r(&unix, &local);
    return civil.year() == int(f.year) && civil.month() == int(f.month) &&
           civil.day() == int(f.day) && civil.hour() == int(f.hour) &&
           civil.minute() == int(f.minute) && local.tm_year + 1900 == int(f.year) &&
           local.tm_mon + 1 == int(f.month) && local.tm_mday == int(f.day) &&
           local.tm_hour == int(f.hour) && local.tm_min == int(f.minute);
}

void KeepAgreed(std::vector<int64_t>& times, const absl::TimeZone& zone) {
    size_t replaced = 0;
    for (int64_t& time : times) {
        while (!Agree(time, zone)) {
            ++replaced;
            time += 86400;
        }
    }
    if (replaced) std::fprintf(stderr, "%zu samples read differently and were moved a day on\n", replaced);
}

}  // namespace

int main(int argc, char** argv) {
    setenv("TZ", kNewYorkName, 1);
    tzset();
    const absl::TimeZone zone = NewYork();
    std::vector<int64_t> times = UnixTimes();
    KeepAgreed(times, zone);
    const std::vector<Fields> fields = FieldsOf(times);

    benchmark::RegisterBenchmark("Date take apart, New York/qvnrt", [&](benchmark::State& state) {
        Date date;
        size_t i = 0;
        for (auto _ : state) {
            date.m_value = static_cast<uint32_t>(times[i++ & (kSamples - 1)] + EPOCH_1970);
            Fields f;
            date.getMDYHMS(f.month, f.day, f.year, f.hour, f.minute, f.second, kNewYork);
            benchmark::DoNotOptimize(f);
        }
        state.SetItemsProcessed(state.iterations());
    });
    benchmark::RegisterBenchmark("Date take apart, New York/abseil", [&](benchmark::State& state) {
        size_t i = 0;
        for (auto _ : state) {
            const absl::Time time = absl::FromUnixSeconds(times[i++ & (kSamples - 1)]);
            benchmark::DoNotOptimize(absl::ToCivilSecond(time, zone));
        }
        state.SetItemsProcessed(state.iterations());
    });
    benchmark::RegisterBenchmark("Date take apart, New York/glibc", [&](benchmark::State& state) {
        size_t i = 0;
        for (auto _ : state) {
            const time_t time = static_cast<time_t>(times[i++ & (kSamples - 1)]);
            struct tm local;
            benchmark::DoNotOptimize(localtime_r(&time, &local));
        }
        state.SetItemsProcessed(state.iterations());
    });
    benchmark::RegisterBenchmark("Date make, New York/qvnrt", [&](benchmark::State& state) {
        const Date date;
        size_t i = 0;
        for (auto _ : state) {
            const Fields& f = fields[i++ & (kSamples - 1)];
            benchmark::DoNotOptimize(
                date.makeValue(f.month, f.day, f.year, f.hour, f.minute, f.second, kNewYork));
        }
        state.SetItemsProcessed(state.iterations());
    });
    benchmark::RegisterBenchmark("Date make, New York/abseil", [&](benchmark::State& state) {
        size_t i = 0;
        for (auto _ : state) {
            const Fields& f = fields[i++ & (kSamples - 1)];
            const absl::CivilSecond civil(f.year, f.month, f.day, f.hour, f.minute, f.second);
            benchmark::DoNotOptimize(absl::ToUnixSeconds(zone.At(civil).pre));
        }
        state.SetItemsProcessed(state.iterations());
    });
    benchmark::RegisterBenchmark("Date make, New York/glibc", [&](benchmark::State& state) {
        size_t i = 0;
        for (auto _ : state) {
            const Fields& f = fields[i++ & (kSamples - 1)];
            struct tm local = {};
            local.tm_year = static_cast<int>(f.year) - 1900;
            local.tm_mon = static_cast<int>(f.month) - 1;
            local.tm_mday = static_cast<int>(f.day);
            local.tm_hour = static_cast<int>(f.hour);
            local.tm_min = static_cast<int>(f.minute);
            local.tm_sec = static_cast<int>(f.second);
            local.tm_isdst = -1;
            benchmark::DoNotOptimize(mktime(&local));
        }
        state.SetItemsProcessed(state.iterations());
    });
    return qvnrt::bench::RunComparisons(argc, argv);
}
