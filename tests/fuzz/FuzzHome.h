// What every fuzz target shares: a configuration and host directory of its own in memory
// (/dev/shm when there is one), so that the library's files go there, and a host that
// keeps message boxes quiet.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#include <qvnrt/host.h>

namespace qvnrt::fuzz {

class QuietHost : public UiHost {
public:
    int MessageBox(const char*, const char*, unsigned, unsigned) override { return 1; }  // IDOK
    int RunModal(Panel&) override { return 2; }  // IDCANCEL
    void BeginWaitCursor() override {}
    void EndWaitCursor() override {}
    bool OpenUrl(const char*) override { return false; }
};

// Made once per process; the directory is set for the config and the host directory both.
inline const std::string& FuzzHome() {
    static const std::string home = [] {
        std::string pattern = (::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
        pattern += "/qvnrt-fuzz-XXXXXX";
        if (!::mkdtemp(pattern.data())) std::abort();
        // The directory lives in memory: gone with the run, as libFuzzer ends through exit().
        // Its name is kept apart from `home`, which is destroyed before the handler runs.
        static const std::string* const made = new std::string(pattern);
        std::atexit([] { std::filesystem::remove_all(*made); });
        ::setenv("QVNRT_HOME", pattern.c_str(), 1);
        ::setenv("QVNRT_APP_DIR", pattern.c_str(), 1);
        static QuietHost host;
        SetUiHost(&host);
        return pattern;
    }();
    return home;
}

inline void WriteFileOrDie(const std::string& path, const uint8_t* data, size_t size) {
    ::unlink(path.c_str());
    FILE* file = std::fopen(path.c_str(), "wb");
    if (!file || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) std::abort();
}

}  // namespace qvnrt::fuzz
