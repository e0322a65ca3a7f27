// One open request of the library's, under its handle. A request is answered from the
// first clientDispatch after it was made, and a continuing one (a stream, a live history,
// a ranked list) then takes part in every simulation step until it is closed.
#pragma once

#include <cstdint>

#include <qvnrt/driver.h>

namespace qvnsim {

class Simulation;

class Request {
public:
    Request(const Simulation& sim, uint32_t handle, unsigned long user);
    virtual ~Request() = default;
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    uint32_t Handle() const { return m_handle; }
    bool Closed() const { return m_closed; }
    void Close() { m_closed = true; }
    bool Answered() const { return m_answered; }

    // Makes the first answer. Every callback is made from inside clientDispatch.
    void Answer(Simulation& sim);
    // One simulation step, from `from` (excluded) to `to`, both on the simulated clock.
    virtual void Step(Simulation& /*sim*/, int64_t /*from*/, int64_t /*to*/) {}
    // Whether the request goes on after its answer.
    virtual bool Continues() const { return false; }

protected:
    virtual void MakeAnswer(Simulation& sim) = 0;
    // False once the request was closed, or the connection closed, by a callback: a
    // request stops at the first callback after which this is false.
    bool Alive(const Simulation& sim) const;

    unsigned long m_user;

private:
    uint32_t m_handle;
    uint64_t m_generation;
    bool m_closed = false;
    bool m_answered = false;
};

}  // namespace qvnsim
