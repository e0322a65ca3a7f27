// Configuration files at the sizes users reach: a registry store of tens of thousands of
// values read as start-up reads it, a profile of 200,000 keys, a map of 100,000 pairs.
#include <string>

#include <benchmark/benchmark.h>

#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/CSymbolMap.h>

#include "platform/Registry.h"
#include "support/RecordingUiHost.h"
#include "support/TempDir.h"

namespace {

// Start-up reads a handful of values, each through its own open of the key.
void BM_RegistryStartUpReads(benchmark::State& state) {
    qvnrt::test::IsolatedHome home;
    std::string store = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\n";
    for (int i = 0; i < state.range(0); ++i) {
        store += "\"Value" + std::to_string(i) + "\"=\"text " + std::to_string(i) + "\"\n";
    }
    home.config().write("user.reg", store);
    for (auto _ : state) {
        for (int read = 0; read < 15; ++read) {
            auto key = qvnrt::platform::RegistryKey::Open("Software\\Quorvane\\RealTime");
            std::string value;
            benchmark::DoNotOptimize(key && key->QueryString("Value" + std::to_string(read), value));
        }
    }
}
BENCHMARK(BM_RegistryStartUpReads)->Arg(50000)->Unit(benchmark::kMillisecond);

void BM_ProfileRead(benchmark::State& state) {
    qvnrt::test::IsolatedHome home;
    std::string text = "[S]\n";
    for (int i = 0; i < state.range(0); ++i) {
        text += "key" + std::to_string(i) + " = value " + std::to_string(i) + "\n";
    }
    home.host().write("big.txt", text);
    const std::string path = home.host().file("big.txt");
    for (auto _ : state) {
        CPrivateProfile profile(path.c_str());
        benchmark::DoNotOptimize(profile.GetValue("S", "key7", 0));
    }
}
BENCHMARK(BM_ProfileRead)->Arg(200000)->Unit(benchmark::kMillisecond);

void BM_SymbolMapLoad(benchmark::State& state) {
    qvnrt::test::TempDir dir;
    qvnrt::test::RecordingUiHost ui;
    std::string text = "1.0\nA,B\n";
    for (int i = 0; i < state.range(0); ++i) {
        text += "SYM" + std::to_string(i) + ",OTHER" + std::to_string(i) + "\n";
    }
    dir.write("A_B.smd", text);
    std::string directory = dir.path();
    char a[] = "A", b[] = "B";
    for (auto _ : state) {
        CSymbolMap map;
        benchmark::DoNotOptimize(map.LoadMap(directory.data(), a, b, 0));
    }
}
BENCHMARK(BM_SymbolMapLoad)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
