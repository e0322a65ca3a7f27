// A symbol's .tik file as any disk may hold it: the bytes are the SQLite database at the
// symbol's tick path, opened through the compound file, with a tick store and a minute store
// on it, each serving a request for everything while offline. Beyond not crashing: what the
// stores serve is newest first, and the file they leave behind serves the same again.
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "store/CompoundFile.h"
#include "store/IntradayStore.h"
#include "store/StoreState.h"
#include "store/TickFilePath.h"
#include "tests/fuzz/FuzzHome.h"

namespace {

using RTSecCache::StoreOwner;

constexpr const char* kSymbol = "IBM";

// Offline: every span asked is refused, so a request is served from the file alone.
class OfflineLink final : public RTSecCache::IntradayLink, public RTSecCache::SpanRequester {
public:
    bool connected() override { return false; }
    uint32_t handleOf(StoreOwner) override { return 0; }
    void closeRequest(uint32_t) override {}
    bool ready(StoreOwner) override { return true; }
    void send(StoreOwner, int count, int live, int type, const void* data) override {
        if (count < 0 || (count > 0 && !data)) std::abort();
        const size_t size = type == RTREC_TICKREC ? sizeof(TICKREC) : sizeof(RTSecCache::MinuteBar);
        for (int i = 0; i < count; ++i) {
            uint32_t time;
            std::memcpy(&time, static_cast<const unsigned char*>(data) + size * static_cast<size_t>(i),
                        sizeof time);
            if (!live && !times.empty() && time > times.back()) std::abort();  // newest first
            times.push_back(time);
        }
    }
    uint32_t ask(uint32_t, uint32_t) override { return 0; }

    std::vector<uint32_t> times;
};

// The times that each store served, ticks then minute bars.
std::vector<uint32_t> Serve(const std::string& path) {
    auto file = RTSecCache::CompoundFile::open(path);
    if (!file) return {};
    OfflineLink ticks;
    OfflineLink minutes;
    {
        RTSecCache::TickStore tickStore(*file, ticks);
        RTSecCache::MinuteStore minuteStore(*file, minutes);
        int owner = 0;
        tickStore.request(&owner, 0, 0, 0, ticks);
        minuteStore.request(&owner, 0, 0, 0, minutes);
    }
    file->commit();
    ticks.times.push_back(0);  // a separator that no served time equals after a tick
    ticks.times.insert(ticks.times.end(), minutes.times.begin(), minutes.times.end());
    return ticks.times;
}

const std::string& TickPath() {
    static const std::string path = [] {
        const std::string directory = qvnrt::fuzz::FuzzHome() + "/cache";
        RTSecCache::Store().configure(true, directory.c_str(), 5);
        std::string tik = RTSecCache::tickFilePath(kSymbol);
        std::filesystem::create_directories(std::filesystem::path(tik).parent_path());
        return tik;
    }();
    return path;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string& path = TickPath();
    std::filesystem::remove(path + "-journal");
    std::filesystem::remove(path + "-wal");
    std::filesystem::remove(path + "-shm");
    qvnrt::fuzz::WriteFileOrDie(path, data, size);
    const std::vector<uint32_t> first = Serve(path);
    if (Serve(path) != first) std::abort();
    return 0;
}
