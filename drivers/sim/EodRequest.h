// End-of-day history: RTPRICEREC batches, newest batch first, each batch in ascending order
// of date, then the end mark (count 0). When streaming, the day that is trading goes out
// again, one record a batch, whenever it changes.
//
// A record's date is the Date value of noon GMT on its trading day; `first` is the open,
// `second` the high, `third` the low and `value` the volume.
#pragma once

#include <vector>

#include "Market.h"
#include "Request.h"

namespace qvnsim {

class EodRequest : public Request {
public:
    static constexpr int kDefaultRecords = 250;
    static constexpr int kMostRecords = 2500;
    static constexpr int kBatchRecords = 100;

    EodRequest(const Simulation& sim, uint32_t handle, unsigned long user, EodCallback callback,
               const Security* security, uint32_t startDate, uint32_t endDate, int maxRecords,
               bool streaming);

    bool Continues() const override { return m_streaming && m_security != nullptr; }
    void Step(Simulation& sim, int64_t from, int64_t to) override;

protected:
    void MakeAnswer(Simulation& sim) override;

private:
    RTPRICEREC Record(const DailyBar& bar) const;
    // Whether the day's last session is still to end at `when`.
    bool DayOpen(Simulation& sim, int64_t day, int64_t when) const;

    EodCallback m_callback;
    const Security* m_security;
    uint32_t m_startDate;
    uint32_t m_endDate;
    int m_maxRecords;
    bool m_streaming;
    DailyBar m_lastSent;
    bool m_lastSentOpen = false;
};

}  // namespace qvnsim
