#include "Request.h"

#include "Simulation.h"

namespace qvnsim {

Request::Request(const Simulation& sim, uint32_t handle, unsigned long user)
    : m_user(user), m_handle(handle), m_generation(sim.Generation()) {}

void Request::Answer(Simulation& sim) {
    m_answered = true;
    MakeAnswer(sim);
}

bool Request::Alive(const Simulation& sim) const {
    return !m_closed && sim.Generation() == m_generation;
}

}  // namespace qvnsim
