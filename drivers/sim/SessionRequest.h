// A security's session rules and holidays: one answer with the SESSION_INFO (size 38) and
// the HOLIDAYS_INFO of its schedule, or a negative status for an unknown symbol.
#pragma once

#include "Request.h"
#include "Universe.h"

namespace qvnsim {

class SessionRequest : public Request {
public:
    SessionRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                   SessionCallback callback, const Security* security);

protected:
    void MakeAnswer(Simulation& sim) override;

private:
    SessionCallback m_callback;
    const Security* m_security;
};

}  // namespace qvnsim
