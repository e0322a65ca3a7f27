#include "QuoteRequest.h"

#include "Simulation.h"

namespace qvnsim {

QuoteRequest::QuoteRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                           SecurityCallback callback, const Security* security, std::string fields,
                           bool streaming)
    : Request(sim, handle, user),
      m_callback(callback),
      m_security(security),
      m_fields(std::move(fields)),
      m_streaming(streaming) {}

void QuoteRequest::SetFields(std::string fields) {
    m_fields = std::move(fields);
    m_sent.clear();
}

void QuoteRequest::MakeAnswer(Simulation& sim) {
    if (m_security == nullptr) {
        m_callback(Handle(), -1, RTFIELD_END, 0, nullptr, m_user);
        return;
    }
    SendBatch(sim, true);
}

void QuoteRequest::Step(Simulation& sim, int64_t /*from*/, int64_t /*to*/) {
    SendBatch(sim, false);
}

void QuoteRequest::SendBatch(Simulation& sim, bool everything) {
    const Universe& universe = sim.universe();
    const Snapshot snap = sim.market().At(*m_security, sim.NowFor(*m_security));
    const Exchange& exchange = universe.ExchangeOf(*m_security);
    const int sessions = universe.CalendarOf(*m_security).SessionsPerDay();
    bool sent = false;
    // A copy: a callback may change the fields of this very request.
    const std::string fields = m_fields;
    for (const char c : fields) {
        const int field = static_cast<unsigned char>(c);
        if (!QuoteFields::Serves(field)) continue;
        FieldValue value = QuoteFields::Encode(field, *m_security, exchange, sessions, snap);
        auto previous = m_sent.find(field);
        if (!everything && previous != m_sent.end() && previous->second == value) continue;
        m_sent[field] = value;
        m_callback(Handle(), 0, field, value.type, value.Data(), m_user);
        sent = true;
        if (!Alive(sim)) return;
    }
    if (sent || everything) m_callback(Handle(), 0, RTFIELD_END, 0, nullptr, m_user);
}

}  // namespace qvnsim
