// An RTSecurity that records every intraday callback with copies of its records, and opens
// its conversions to tests; plus the record builders the intraday tests share.
#pragma once

#include <cstring>
#include <vector>

#include <qvnrt/CSessionInfo.h>
#include <qvnrt/RTSecurity.h>

namespace qvnrt::test {

struct TickCall {
    unsigned long handle;
    int count, done, isNew, type;
    std::vector<RTINTRADAY_PRICEREC> bars;  // type 4
    std::vector<TICKREC> ticks;             // type 1
    std::vector<TICKBARREC> tickBars;       // type 3
};

class IntradayOwner : public RTSecurity {
public:
    using RTSecurity::ConvertHistTicksToTickBars;
    using RTSecurity::ConvertMinuteBarsToOrigRequest;
    using RTSecurity::ConvertNewMinuteBars;
    using RTSecurity::ConvertNewTicksToTickBars;
    using RTSecurity::FilterNewTicks;
    using RTSecurity::FilterTickDataToOrigRequest;
    using RTSecurity::FindEdges;

    bool ReqTickCallback(unsigned long handle, int count, int done, int isNew, int type,
                         void* data) override {
        TickCall call{handle, count, done, isNew, type, {}, {}, {}};
        if (data && count > 0) {
            if (type == RTREC_INTRADAY_PRICEREC) call.bars = Copy<RTINTRADAY_PRICEREC>(data, count);
            if (type == RTREC_TICKREC) call.ticks = Copy<TICKREC>(data, count);
            if (type == RTREC_TICKBARREC) call.tickBars = Copy<TICKBARREC>(data, count);
        }
        calls.push_back(std::move(call));
        return true;
    }

    // Holds the rules (and holidays, may be null) as a session security would.
    void UseRules(const SESSION_INFO& rules, const HOLIDAYS_INFO* holidays = nullptr) {
        auto* session = new CSessionInfo(&rules);
        auto* table = holidays ? new CHolidaysInfo(holidays) : nullptr;
        setSessHolInfo(session, table, 0);
        session->Free();  // the security holds the only reference now
        if (table) table->Free();
    }

    // Every bar of type 4 told so far, in order.
    std::vector<RTINTRADAY_PRICEREC> AllBars() const {
        std::vector<RTINTRADAY_PRICEREC> out;
        for (const TickCall& call : calls) out.insert(out.end(), call.bars.begin(), call.bars.end());
        return out;
    }

    std::vector<TickCall> calls;

private:
    template <class T>
    static std::vector<T> Copy(void* data, int count) {
        std::vector<T> out(static_cast<size_t>(count));
        std::memcpy(out.data(), data, sizeof(T) * out.size());
        return out;
    }
};

inline uint32_t ToTimeT(uint32_t date) { return date - EPOCH_1970; }

inline RTINTRADAY_PRICEREC Minute(uint32_t date, int32_t volume, float open, float close,
                                  float high, float low) {
    return RTINTRADAY_PRICEREC{ToTimeT(date), volume, open, close, high, low};
}

inline TICKREC Tick(uint32_t date, int32_t volume, float price, uint8_t flag = 0) {
    TICKREC tick;
    tick.time = ToTimeT(date);
    tick.volume = volume;
    tick.price = price;
    tick.flag = flag;
    return tick;
}

}  // namespace qvnrt::test
