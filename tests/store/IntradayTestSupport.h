// Intraday stores under test without a driver: a link that records what the store hands its
// owners and what it closes, a span requester that records what it is asked, and tick
// builders. Times are store times (seconds since 1970).
#pragma once

#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "store/IntradayStore.h"
#include "store/StoreState.h"
#include "support/ManualClock.h"
#include "support/TempDir.h"

namespace qvnrt::test {

using RTSecCache::StoreOwner;

struct StoreDelivery {
    StoreOwner owner;
    int count, live, type;
    std::vector<uint32_t> times;
    std::vector<int32_t> volumes;
};

class RecordingLink final : public RTSecCache::IntradayLink {
public:
    bool connected() override { return online; }
    uint32_t handleOf(StoreOwner owner) override { return handles[owner]; }
    void closeRequest(uint32_t handle) override { closed.push_back(handle); }
    bool ready(StoreOwner) override { return true; }
    void send(StoreOwner owner, int count, int live, int type, const void* data) override {
        StoreDelivery delivery{owner, count, live, type, {}, {}};
        const size_t size = type == RTREC_TICKREC ? sizeof(TICKREC) : sizeof(RTSecCache::MinuteBar);
        for (int i = 0; i < count; ++i) {
            const auto* record = static_cast<const unsigned char*>(data) + size * static_cast<size_t>(i);
            uint32_t time;
            int32_t volume;
            std::memcpy(&time, record, 4);
            std::memcpy(&volume, record + 4, 4);
            delivery.times.push_back(time);
            delivery.volumes.push_back(volume);
        }
        sent.push_back(std::move(delivery));
    }

    // Every record time the owner got as history, in order, and how many end calls.
    std::vector<uint32_t> HistoryTimes(StoreOwner owner) const {
        std::vector<uint32_t> times;
        for (const auto& d : sent) {
            if (d.owner == owner && !d.live) times.insert(times.end(), d.times.begin(), d.times.end());
        }
        return times;
    }
    int Ends(StoreOwner owner) const {
        int ends = 0;
        for (const auto& d : sent) ends += d.owner == owner && d.count == 0;
        return ends;
    }

    bool online = true;
    std::map<StoreOwner, uint32_t> handles;
    std::vector<uint32_t> closed;
    std::vector<StoreDelivery> sent;
};

// Gives each span asked a fresh handle, noted as the owner's.
class RecordingRequester final : public RTSecCache::SpanRequester {
public:
    RecordingRequester(RecordingLink& link, StoreOwner owner, uint32_t& nextHandle)
        : m_link(link), m_owner(owner), m_next(nextHandle) {}
    uint32_t ask(uint32_t from, uint32_t to) override {
        asked.emplace_back(from, to);
        return m_link.handles[m_owner] = m_next++;
    }
    std::vector<std::pair<uint32_t, uint32_t>> asked;

private:
    RecordingLink& m_link;
    StoreOwner m_owner;
    uint32_t& m_next;
};

// `count` ticks, newest first, one every `step` seconds, the newest at `newest`.
inline std::vector<TICKREC> TicksDown(uint32_t newest, int count, uint32_t step = 1) {
    std::vector<TICKREC> ticks(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const uint32_t time = newest - static_cast<uint32_t>(i) * step;
        ticks[static_cast<size_t>(i)] = TICKREC{time, static_cast<int32_t>(time % 1000),
                                                static_cast<float>(time % 97), 0};
    }
    return ticks;
}

inline uint32_t RequestTime(uint32_t storeTime) { return RTSecCache::toRequestTime(storeTime); }

}  // namespace qvnrt::test
