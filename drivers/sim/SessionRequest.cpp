#include "SessionRequest.h"

#include <vector>

#include "Simulation.h"

namespace qvnsim {

SessionRequest::SessionRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                               SessionCallback callback, const Security* security)
    : Request(sim, handle, user), m_callback(callback), m_security(security) {}

void SessionRequest::MakeAnswer(Simulation& sim) {
    if (m_security == nullptr) {
        m_callback(Handle(), -1, nullptr, nullptr, m_user);
        return;
    }
    const TradingCalendar& calendar = sim.universe().CalendarOf(*m_security);
    // Copies: the callee gets writable records that live through the call.
    SESSION_INFO rules = calendar.Rules();
    std::vector<uint8_t> holidays = calendar.HolidayRecord();
    m_callback(Handle(), 0, &rules, holidays.data(), m_user);
}

}  // namespace qvnsim
