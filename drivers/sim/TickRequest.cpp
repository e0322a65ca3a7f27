#include "TickRequest.h"

#include <algorithm>

#include "CivilDate.h"
#include "Simulation.h"

namespace qvnsim {

namespace {

std::vector<RTINTRADAY_PRICEREC> MinuteBars(const std::vector<Trade>& trades) {
    std::vector<RTINTRADAY_PRICEREC> bars;
    for (const Trade& trade : trades) {
        const uint32_t minute = static_cast<uint32_t>(trade.time - trade.time % 60);
        if (bars.empty() || bars.back().time != minute) {
            bars.push_back({minute, 0, trade.price, trade.price, trade.price, trade.price});
        }
        RTINTRADAY_PRICEREC& bar = bars.back();
        bar.volume += trade.volume;
        bar.close = trade.price;
        bar.high = std::max(bar.high, trade.price);
        bar.low = std::min(bar.low, trade.price);
    }
    return bars;
}

std::vector<TICKREC> TickRecords(const std::vector<Trade>& trades) {
    std::vector<TICKREC> ticks;
    ticks.reserve(trades.size());
    for (const Trade& trade : trades) {
        TICKREC tick{};
        tick.time = static_cast<uint32_t>(trade.time);
        tick.volume = trade.volume;
        tick.price = trade.price;
        tick.flag = 0;
        ticks.push_back(tick);
    }
    return ticks;
}

}  // namespace

TickRequest::TickRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                         TickCallback callback, const Security* security, const TICKDATA& request,
                         LiveMinutes liveMinutes)
    : Request(sim, handle, user),
      m_callback(callback),
      m_security(security),
      m_start(FromDateValue(request.start)),
      m_end(FromDateValue(request.end)),
      m_weight(request.weight),
      m_live(request.live != 0 && request.end == 0),
      m_liveMinutes(liveMinutes) {}

template <typename Record>
bool TickRequest::SendPackets(Simulation& sim, const std::vector<Record>& records, int live,
                              int type) {
    for (size_t begin = 0; begin < records.size(); begin += kPacketRecords) {
        const size_t count = std::min(kPacketRecords, records.size() - begin);
        // The contract's data pointer is not const; the callee reads only.
        m_callback(Handle(), static_cast<int>(count), live, type,
                   const_cast<Record*>(records.data() + begin), m_user);
        if (!Alive(sim)) return false;
    }
    return true;
}

void TickRequest::MakeAnswer(Simulation& sim) {
    if (m_security == nullptr) {
        m_callback(Handle(), -1, 0, RTREC_NONE, nullptr, m_user);
        return;
    }
    const int64_t now = sim.NowFor(*m_security);
    int64_t last = now;
    if (m_end != 0) last = std::min(now, Bars() ? m_end - m_end % 60 + 59 : m_end);
    int64_t first = std::max(m_start, last - (Bars() ? kMinuteReach : kTickReach));
    if (Bars()) first -= first % 60;
    const std::vector<Trade> trades =
        first <= last ? sim.market().Trades(*m_security, first, last) : std::vector<Trade>{};
    bool alive = true;
    if (Bars()) {
        std::vector<RTINTRADAY_PRICEREC> bars = MinuteBars(trades);
        std::reverse(bars.begin(), bars.end());
        alive = SendPackets(sim, bars, 0, RTREC_INTRADAY_PRICEREC);
    } else {
        std::vector<TICKREC> ticks = TickRecords(trades);
        std::reverse(ticks.begin(), ticks.end());
        alive = SendPackets(sim, ticks, 0, RTREC_TICKREC);
    }
    if (alive) m_callback(Handle(), 0, 0, RTREC_NONE, nullptr, m_user);
}

void TickRequest::Step(Simulation& sim, int64_t from, int64_t to) {
    const int delay = sim.universe().DelaySeconds(*m_security);
    const std::vector<Trade> trades =
        sim.market().Trades(*m_security, from - delay + 1, to - delay);
    if (trades.empty()) return;
    if (Bars() && m_liveMinutes == LiveMinutes::kBars) {
        SendPackets(sim, MinuteBars(trades), 1, RTREC_INTRADAY_PRICEREC);
    } else {
        SendPackets(sim, TickRecords(trades), 1, RTREC_TICKREC);
    }
}

}  // namespace qvnsim
