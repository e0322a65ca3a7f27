// History requests to the replay driver over a file of 10 million ticks, generated once per
// run: records delivered per second, and the process's resident memory, which should stay
// small because the file is mapped and walked, never loaded.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <benchmark/benchmark.h>

#include <qvnrt/driver.h>

namespace {

constexpr long kTicks = 10'000'000;
constexpr int64_t kFirst = 1704207600;  // 2024-01-02 15:00 UTC
constexpr uint32_t kEpoch = EPOCH_1970;

// A line of /proc/self/status in kilobytes: VmRSS (all resident memory), RssAnon (what the
// process allocated) or RssFile (pages of mapped files, which the kernel can take back).
long StatusKb(const char* key) {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind(key, 0) == 0) return std::atol(line.c_str() + std::strlen(key) + 1);
    }
    return 0;
}

void CountMemory(benchmark::State& state) {
    state.counters["resident_MB"] = static_cast<double>(StatusKb("VmRSS")) / 1024.0;
    state.counters["anon_MB"] = static_cast<double>(StatusKb("RssAnon")) / 1024.0;
    state.counters["file_MB"] = static_cast<double>(StatusKb("RssFile")) / 1024.0;
}

// One tick a second, round the clock: the span of a request is its number of ticks.
class TickFile {
public:
    TickFile() {
        m_dir = std::filesystem::temp_directory_path() / "qvnreplay-bench";
        std::filesystem::create_directories(m_dir);
        const std::filesystem::path file = m_dir / "BIG.ticks.csv";
        if (!std::filesystem::exists(file)) {
            std::FILE* out = std::fopen(file.c_str(), "w");
            std::fputs("time,price,volume,flag\n", out);
            for (long i = 0; i < kTicks; ++i) {
                std::fprintf(out, "%lld,%.2f,%ld,0\n", static_cast<long long>(kFirst + i),
                             100.0 + static_cast<double>(i % 1000) / 100.0, 100 + i % 50);
            }
            std::fclose(out);
        }
    }
    std::string Dir() const { return m_dir.string(); }

private:
    std::filesystem::path m_dir;
};

struct Driver {
    Driver() {
        handle = dlopen(QVNREPLAY_PATH, RTLD_NOW | RTLD_LOCAL);
        configure = reinterpret_cast<int (*)(const char*)>(dlsym(handle, "qvnreplay_Configure"));
        open = reinterpret_cast<clientOpenServer_t>(dlsym(handle, "clientOpenServer"));
        close = reinterpret_cast<clientCloseServer_t>(dlsym(handle, "clientCloseServer"));
        reqTicks = reinterpret_cast<clientReqTickBars_t>(dlsym(handle, "clientReqTickBars"));
        dispatch = reinterpret_cast<clientDispatch_t>(dlsym(handle, "clientDispatch"));
        Reopen();
    }
    // Forgets the files read so far: the next request opens and checks the file again.
    void Reopen() {
        static TickFile file;
        close();
        configure(("data_dir=" + file.Dir() + ";packet_records=1000").c_str());
        open("", "", [](int, void*) {}, 65536, 1, 0, 0, 1);
    }
    void* handle;
    int (*configure)(const char*);
    clientOpenServer_t open;
    clientCloseServer_t close;
    clientReqTickBars_t reqTicks;
    clientDispatch_t dispatch;
};

Driver& TheDriver() {
    static Driver driver;
    return driver;
}

long g_delivered = 0;
int CountTicks(unsigned long, int count, int, int, void*, unsigned long) {
    g_delivered += count > 0 ? count : 0;
    return 1;
}

// The first request for a symbol maps its file and checks every line once.
void BM_OpenAndCheck(benchmark::State& state) {
    Driver& driver = TheDriver();
    for (auto _ : state) {
        state.PauseTiming();
        driver.Reopen();
        state.ResumeTiming();
        TICKDATA request{};
        request.weight = 1;
        request.start = static_cast<uint32_t>(kFirst + kEpoch);
        request.end = request.start;
        driver.reqTicks("BIG", 98, &request, &CountTicks, 1, 0);
        driver.dispatch();
    }
    state.counters["lines/s"] = benchmark::Counter(static_cast<double>(kTicks) * state.iterations(),
                                                   benchmark::Counter::kIsRate);
    CountMemory(state);
}
BENCHMARK(BM_OpenAndCheck)->Iterations(2)->Unit(benchmark::kMillisecond);

// A span of `state.range(0)` seconds (ticks) in the middle of the file, asked for again and
// again at moving places so that the search does its work every time.
void BM_TickHistory(benchmark::State& state) {
    Driver& driver = TheDriver();
    const int64_t span = state.range(0);
    long delivered = 0;
    int64_t at = kFirst + kTicks / 3;
    for (auto _ : state) {
        TICKDATA request{};
        request.weight = 1;
        request.start = static_cast<uint32_t>(at + kEpoch);
        request.end = static_cast<uint32_t>(at + span - 1 + kEpoch);
        g_delivered = 0;
        driver.reqTicks("BIG", 98, &request, &CountTicks, 1, 0);
        driver.dispatch();
        delivered += g_delivered;
        at = kFirst + (at - kFirst + 7919) % (kTicks - span);
    }
    state.counters["records/s"] = benchmark::Counter(static_cast<double>(delivered),
                                                     benchmark::Counter::kIsRate);
    CountMemory(state);
}
BENCHMARK(BM_TickHistory)->Arg(1)->Arg(1000)->Arg(100000)->Arg(kTicks / 2)->Unit(benchmark::kMillisecond);

}  // namespace
