// The requests that the replay answers, each under its handle. The first answer is made in
// the first clientDispatch after the request; a request that goes on (a quote stream, a
// live history) then follows the replay clock at every dispatch until it is closed.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <qvnrt/driver.h>

#include "SymbolData.h"

namespace qvnreplay {

class Replay;

class Request {
public:
    Request(uint32_t handle, unsigned long user, SymbolData* data)
        : m_handle(handle), m_user(user), m_data(data) {}
    virtual ~Request() = default;
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    uint32_t Handle() const { return m_handle; }
    bool Closed() const { return m_closed; }
    void Close() { m_closed = true; }
    // Ties the request to the connection that took it: it stops when that one ends.
    void Bind(uint64_t generation) { m_generation = generation; }
    bool KnowsSymbol() const { return m_data != nullptr; }

    // The first answer; m_data is null for a symbol that the directory does not know, and
    // the answer then says so.
    virtual void Answer(Replay& replay) = 0;
    // The replay clock moved from `from` (excluded) to `to`.
    virtual void Advance(Replay& /*replay*/, int64_t /*from*/, int64_t /*to*/) {}
    virtual bool Continues() const { return false; }

protected:
    // False once a callback closed this request or the connection.
    bool Alive(const Replay& replay) const;

    uint32_t m_handle;
    unsigned long m_user;
    SymbolData* m_data;
    uint64_t m_generation = 0;
    bool m_closed = false;
};

class QuoteRequest : public Request {
public:
    QuoteRequest(uint32_t handle, unsigned long user, SymbolData* data, SecurityCallback callback,
                 std::string fields, bool streaming)
        : Request(handle, user, data), m_callback(callback), m_fields(std::move(fields)),
          m_streaming(streaming) {}
    void Answer(Replay& replay) override;
    void Advance(Replay& replay, int64_t from, int64_t to) override;
    bool Continues() const override { return m_streaming; }
    // New fields go out in full at the next dispatch.
    void SetFields(std::string fields);

private:
    struct Value {
        int type = 0;
        int32_t integer = 0;
        float single = 0;
        double real = 0;
        std::string text;
        bool operator==(const Value&) const = default;
    };
    void Send(Replay& replay, bool everything);
    bool Encode(int field, const QuoteState& quote, Value& value) const;

    SecurityCallback m_callback;
    std::string m_fields;
    bool m_streaming;
    std::map<int, Value> m_sent;
};

class HistoryRequest : public Request {
public:
    HistoryRequest(uint32_t handle, unsigned long user, SymbolData* data, TickCallback callback,
                   const TICKDATA& request);
    void Answer(Replay& replay) override;
    void Advance(Replay& replay, int64_t from, int64_t to) override;
    bool Continues() const override { return m_live; }

private:
    // The records of [first, last] in packets: newest first as history, oldest first as
    // live data. False once a callback closed the request.
    bool Send(Replay& replay, int64_t first, int64_t last, bool live);
    const SeriesFile* File() const;

    TickCallback m_callback;
    bool m_bars;
    int64_t m_start;
    int64_t m_end;
    bool m_live;
};

class EodRequest : public Request {
public:
    EodRequest(uint32_t handle, unsigned long user, SymbolData* data, EodCallback callback,
               uint32_t start, uint32_t end, int maxRecords)
        : Request(handle, user, data), m_callback(callback), m_start(start), m_end(end),
          m_maxRecords(maxRecords) {}
    void Answer(Replay& replay) override;

private:
    EodCallback m_callback;
    uint32_t m_start;
    uint32_t m_end;
    int m_maxRecords;
};

class SessionRequest : public Request {
public:
    SessionRequest(uint32_t handle, unsigned long user, SymbolData* data, SessionCallback callback)
        : Request(handle, user, data), m_callback(callback) {}
    void Answer(Replay& replay) override;

private:
    SessionCallback m_callback;
};

}  // namespace qvnreplay
