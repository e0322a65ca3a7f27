#include "EodRequest.h"

#include <algorithm>
#include <limits>

#include "CivilDate.h"
#include "Simulation.h"

namespace qvnsim {

EodRequest::EodRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                       EodCallback callback, const Security* security, uint32_t startDate,
                       uint32_t endDate, int maxRecords, bool streaming)
    : Request(sim, handle, user),
      m_callback(callback),
      m_security(security),
      m_startDate(startDate),
      m_endDate(endDate),
      m_maxRecords(maxRecords <= 0 ? kDefaultRecords : std::min(maxRecords, kMostRecords)),
      m_streaming(streaming) {}

RTPRICEREC EodRequest::Record(const DailyBar& bar) const {
    RTPRICEREC record{};
    record.date = ToDateValue(bar.day * kSecondsPerDay + 43200);
    record.extra = 0;
    record.first = bar.open;
    record.close = bar.close;
    record.second = bar.high;
    record.third = bar.low;
    record.value =
        static_cast<int32_t>(std::min<int64_t>(bar.volume, std::numeric_limits<int32_t>::max()));
    return record;
}

bool EodRequest::DayOpen(Simulation& sim, int64_t day, int64_t when) const {
    const std::vector<Span> spans = sim.universe().CalendarOf(*m_security).Sessions(day);
    return !spans.empty() && when < spans.back().end;
}

void EodRequest::MakeAnswer(Simulation& sim) {
    if (m_security == nullptr) {
        m_callback(Handle(), -1, 0, nullptr, m_user);
        return;
    }
    Market& market = sim.market();
    const int64_t now = sim.NowFor(*m_security);
    const int64_t firstDay = m_startDate ? DayOf(FromDateValue(m_startDate)) : 0;
    const int64_t lastDay =
        m_endDate ? DayOf(FromDateValue(m_endDate)) : std::numeric_limits<int64_t>::max();
    // Newest first, so the newest days are the ones kept.
    std::vector<RTPRICEREC> records;
    bool lastOpen = false;
    for (const int64_t day : market.TradingDays(*m_security, firstDay, now, 20000)) {
        if (day > lastDay) continue;
        if (records.size() >= static_cast<size_t>(m_maxRecords)) break;
        const bool open = DayOpen(sim, day, now);
        const DailyBar bar =
            open ? market.DailyUntil(*m_security, day, now) : market.Daily(*m_security, day);
        if (!bar.traded) continue;
        if (records.empty()) lastOpen = m_lastSentOpen = open, m_lastSent = bar;
        records.push_back(Record(bar));
    }
    std::reverse(records.begin(), records.end());
    // Batches go newest first; each holds its records oldest first.
    size_t end = records.size();
    bool newest = true;
    while (end > 0) {
        const size_t begin = end > static_cast<size_t>(kBatchRecords) ? end - kBatchRecords : 0;
        const int flags = newest && lastOpen ? 0 : 1;  // bit 0: the batch is final
        m_callback(Handle(), static_cast<int>(end - begin), flags, records.data() + begin, m_user);
        if (!Alive(sim)) return;
        newest = false;
        end = begin;
    }
    m_callback(Handle(), 0, 1, nullptr, m_user);
}

void EodRequest::Step(Simulation& sim, int64_t /*from*/, int64_t to) {
    const int64_t now = to - sim.universe().DelaySeconds(*m_security);
    const std::optional<int64_t> day = sim.universe().CalendarOf(*m_security).CurrentDay(now);
    if (!day) return;
    const DailyBar bar = sim.market().DailyUntil(*m_security, *day, now);
    if (!bar.traded) return;
    const bool open = DayOpen(sim, *day, now);
    // Once more when the day closes, so that its last record goes out as final.
    if (bar.day == m_lastSent.day && bar.trades == m_lastSent.trades && open == m_lastSentOpen) {
        return;
    }
    m_lastSent = bar;
    m_lastSentOpen = open;
    RTPRICEREC record = Record(bar);
    m_callback(Handle(), 1, open ? 0 : 1, &record, m_user);
}

}  // namespace qvnsim
