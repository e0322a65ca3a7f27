// The registry store, user.reg, as a user or another program may leave it. Beyond not
// crashing: every value reads the same before and after a write, and a second write of
// the same change gives the same file (what the writer emits, the reader takes back).
#include <cstdint>
#include <string>

#include "platform/Registry.h"
#include "tests/fuzz/FuzzHome.h"

namespace {

constexpr const char* kKey = "Software\\Quorvane\\RealTime";
constexpr const char* kNames[] = {"RealTime DLL", "Last Private Profile", "DispStyle0", "", "a"};

std::string Snapshot(const qvnrt::platform::RegistryKey& key) {
    std::string seen;
    for (const char* name : kNames) {
        std::string text;
        uint32_t number = 0;
        seen += key.QueryString(name, text) ? "s" + text : "-";
        seen += key.QueryDword(name, number) ? "d" + std::to_string(number) : "-";
        seen += '\n';
    }
    return seen;
}

std::string ReadStore() {
    std::string bytes;
    if (FILE* file = std::fopen(qvnrt::platform::RegistryFilePath().c_str(), "rb")) {
        char chunk[4096];
        for (size_t got; (got = std::fread(chunk, 1, sizeof(chunk), file)) > 0;) bytes.append(chunk, got);
        std::fclose(file);
    }
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qvnrt::fuzz::FuzzHome();
    qvnrt::fuzz::WriteFileOrDie(qvnrt::platform::RegistryFilePath(), data, size);
    const auto key = qvnrt::platform::RegistryKey::Open(kKey);
    if (!key) return 0;
    const std::string before = Snapshot(*key);
    if (!key->SetString("fuzz probe", "1")) return 0;
    if (Snapshot(*key) != before) std::abort();  // a write lost or changed a value
    const std::string written = ReadStore();
    if (!key->SetString("fuzz probe", "2") || !key->SetString("fuzz probe", "1")) std::abort();
    if (ReadStore() != written) std::abort();  // the reader did not take back what was written
    return 0;
}
