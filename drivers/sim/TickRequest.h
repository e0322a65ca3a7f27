// Intraday history and live data: one-minute bars (weight -1, RTINTRADAY_PRICEREC, type 4)
// or plain trades (weight 1, TICKREC, type 1).
//
// History goes newest first in packets that are sent newest first, and ends with the empty
// call (count 0, data null, live 0). An open-ended request (end 0) that asks for live data
// then gets, at every step, the new records oldest first with live 1. Record times are
// seconds since 1970; a minute bar carries the first second of its minute, and a live bar
// holds only the trades of its step, so that bars add up.
#pragma once

#include <vector>

#include "Market.h"
#include "Request.h"
#include "SimConfig.h"

namespace qvnsim {

class TickRequest : public Request {
public:
    static constexpr size_t kPacketRecords = 500;
    static constexpr int64_t kMinuteReach = 30 * 86400;  // an open start reaches this far
    static constexpr int64_t kTickReach = 5 * 86400;

    TickRequest(const Simulation& sim, uint32_t handle, unsigned long user, TickCallback callback,
                const Security* security, const TICKDATA& request, LiveMinutes liveMinutes);

    bool Continues() const override { return m_live && m_security != nullptr; }
    void Step(Simulation& sim, int64_t from, int64_t to) override;

protected:
    void MakeAnswer(Simulation& sim) override;

private:
    bool Bars() const { return m_weight < 0; }
    // Sends records that are in packet order already, `kPacketRecords` a packet.
    template <typename Record>
    bool SendPackets(Simulation& sim, const std::vector<Record>& records, int live, int type);

    TickCallback m_callback;
    const Security* m_security;
    int64_t m_start;  // seconds since 1970, 0 for an open start
    int64_t m_end;    // 0 for up to now
    int m_weight;
    bool m_live;
    LiveMinutes m_liveMinutes;
};

}  // namespace qvnsim
