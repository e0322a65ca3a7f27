// A quote: one batch of the asked fields, then, when streaming, a batch of the fields that
// changed at every step that changed any.
#pragma once

#include <map>
#include <string>

#include "QuoteFields.h"
#include "Request.h"

namespace qvnsim {

class QuoteRequest : public Request {
public:
    // `security` is null for a symbol the simulation does not know: that one is answered
    // with a negative status and ends.
    QuoteRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                 SecurityCallback callback, const Security* security, std::string fields,
                 bool streaming);

    const std::string& Fields() const { return m_fields; }
    void SetFields(std::string fields);
    bool Continues() const override { return m_streaming && m_security != nullptr; }
    void Step(Simulation& sim, int64_t from, int64_t to) override;

protected:
    void MakeAnswer(Simulation& sim) override;

private:
    // Sends the fields whose value differs from the last one sent (all of them when
    // `everything`), then the field 0 that ends the batch if anything was sent.
    void SendBatch(Simulation& sim, bool everything);

    SecurityCallback m_callback;
    const Security* m_security;
    std::string m_fields;
    bool m_streaming;
    std::map<int, FieldValue> m_sent;
};

}  // namespace qvnsim
