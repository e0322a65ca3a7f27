// A driver's packets as any driver may send them: the bytes are read as a short script of
// quote fields, list updates, end-of-day batches and intraday packets, fed to the library's
// callbacks with the cache timer ticked between steps. The cache is on, so that every field
// is also stored in a record; the session is offline, so nothing reaches a driver.
//
// A step is one byte of kind, then what the kind reads. Data shorter than a step asks for is
// padded with zeros.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <vector>

#include <qvnrt/CSessionInfo.h>
#include <qvnrt/Date.h>
#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTSecList.h>
#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "tests/fuzz/FuzzHome.h"

namespace {

// Around 2023-11-14 in seconds since 1970: packet times are put near it, so that they fall
// inside the request and its sessions more often than raw bytes would.
constexpr uint32_t kBaseTime = 1700000000;
constexpr int kMaxSteps = 64;
constexpr int kMaxRecords = 16;
constexpr size_t kLargestRecord = sizeof(TICKBARREC);

class Script {
public:
    Script(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}
    bool done() const { return m_at >= m_size; }
    uint8_t byte() { return m_at < m_size ? m_data[m_at++] : 0; }
    // `count` bytes into `out`, zeros past the end.
    void bytes(void* out, size_t count) {
        const size_t have = std::min(count, m_size - std::min(m_at, m_size));
        std::memcpy(out, m_data + m_at, have);
        std::memset(static_cast<uint8_t*>(out) + have, 0, count - have);
        m_at += have;
    }

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_at = 0;
};

SESSION_INFO DayRules() {
    SESSION_INFO rules{};
    rules.size = 38;
    rules.bSession[0] = 1;
    rules.tradeDays[0] = 0x3e;  // Monday to Friday
    rules.sStartTime[0] = 0x091e;  // 9:30
    rules.sEndTime[0] = 0x1000;    // 16:00
    rules.chTimeZone = 18;
    rules.bIsFirstSessionSameDay = 1;
    rules.bSingleSessionStandard = 1;
    return rules;
}

// An intraday owner whose packets must be converted: five-minute bars, live.
class BarOwner : public RTSecurity {
public:
    BarOwner() {
        const SESSION_INFO rules = DayRules();
        auto* session = new CSessionInfo(&rules);
        setSessHolInfo(session, nullptr, 0);
        session->Free();
        OpenSecurity("IBM", static_cast<RTSecurityType>(0), 0, ServiceLimit{});
        RequestTick(kBaseTime + EPOCH_1970 - 86400 * 3, 0, -5, 1, 0, 0, 0, 0, 0, 0, nullptr, 0,
                    0, 0, 0, ServiceLimit{});
    }
    bool ReqTickCallback(unsigned long, int count, int, int, int type, void* data) override {
        // What the owner is handed must be readable in full.
        if (count > 0 && data) {
            const size_t size = type == RTREC_TICKREC ? sizeof(TICKREC)
                                : type == RTREC_TICKBARREC ? sizeof(TICKBARREC)
                                                           : sizeof(RTINTRADAY_PRICEREC);
            std::vector<uint8_t> copy(size * static_cast<size_t>(count));
            std::memcpy(copy.data(), data, copy.size());
        }
        return true;
    }
    bool ReqEODCallback(unsigned long, int count, int, RTPRICEREC* records) override {
        if (count > 0) {
            std::vector<RTPRICEREC> copy(records, records + count);
        }
        return true;
    }
};

void Setup() {
    static const bool ready = [] {
        const std::string cache = qvnrt::fuzz::FuzzHome() + "/cache";
        ::mkdir(cache.c_str(), 0700);
        RTServer::InitCache(true, cache.c_str(), 5, 0);
        return true;
    }();
    (void)ready;
}

// A quote field: status, field id and type from the script, the value as the next bytes.
void QuoteStep(Script& script, unsigned long request, unsigned long user, bool toList) {
    const int status = static_cast<int8_t>(script.byte());
    const int field = script.byte() % 64;
    static constexpr int kTypes[] = {RTDATA_TEXT, RTDATA_DOUBLE, RTDATA_FLOAT, RTDATA_INT, 0};
    const int type = kTypes[script.byte() % (sizeof kTypes / sizeof *kTypes)];
    char value[40];
    script.bytes(value, sizeof value - 1);
    value[sizeof value - 1] = '\0';
    if (toList) {
        RTSecList::ReqSecCallbackHelper(request, status, field, type, value, user);
    } else {
        RTSecurity::ReqSecCallbackHelper(request, status, field, type, value, user);
    }
}

void EodStep(Script& script, unsigned long user) {
    const int count = script.byte() % (kMaxRecords + 1);
    const int flags = static_cast<int8_t>(script.byte());
    RTPRICEREC records[kMaxRecords];
    script.bytes(records, sizeof(RTPRICEREC) * static_cast<size_t>(count));
    RTSecurity::ReqEODCallbackHelper(0, count, flags, count ? records : nullptr, user);
}

void TickStep(Script& script, BarOwner& owner) {
    static constexpr int kTypes[] = {RTREC_TICKREC, RTREC_INTRADAY_PRICEREC, RTREC_TICKBARREC, 0};
    const int type = kTypes[script.byte() % (sizeof kTypes / sizeof *kTypes)];
    const int isNew = script.byte() & 1;
    const int count = script.byte() % (kMaxRecords + 1);
    const size_t size = type == RTREC_TICKREC ? sizeof(TICKREC)
                        : type == RTREC_TICKBARREC ? sizeof(TICKBARREC)
                                                   : sizeof(RTINTRADAY_PRICEREC);
    std::vector<uint8_t> records(kLargestRecord * kMaxRecords);
    script.bytes(records.data(), size * static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        uint8_t* place = records.data() + size * static_cast<size_t>(i);
        uint32_t time;
        std::memcpy(&time, place, sizeof time);
        time = kBaseTime - 86400 * 2 + time % (86400 * 3);
        std::memcpy(place, &time, sizeof time);
    }
    owner.ReqTickCallbackHelper2(0, count, isNew, type, count ? records.data() : nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Setup();
    Script script(data, size);
    auto owner = std::make_unique<BarOwner>();
    RTSecList list;
    list.SecSymbolList("IBM\0MSFT\0ESZ6\0");
    const auto ownerUser = reinterpret_cast<unsigned long>(owner.get());
    const auto listUser = reinterpret_cast<unsigned long>(&list);
    for (int step = 0; step < kMaxSteps && !script.done(); ++step) {
        switch (script.byte() % 6) {
            case 0: QuoteStep(script, owner->m_request, ownerUser, false); break;
            case 1: {
                // A row's handle, or the list's own request (a service-built list).
                const uint8_t pick = script.byte();
                const int rows = list.m_secArray.GetSize();
                const unsigned long request =
                    rows && pick % 4 ? list.At(pick % rows)->m_request : list.m_request;
                QuoteStep(script, request, listUser, true);
                break;
            }
            case 2: EodStep(script, ownerUser); break;
            case 3: TickStep(script, *owner); break;
            case 4: RTSecCache::CacheTimerProc(nullptr, 0, 0, 0); break;
            case 5: owner->CloseSecurity(); break;
        }
    }
    RTSecCache::CacheTimerProc(nullptr, 0, 0, 0);
    return 0;
}
