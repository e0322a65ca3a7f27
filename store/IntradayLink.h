// What an intraday store needs from the layers above it, filled in by them: the store keeps
// records, blocks and times, and knows its subscribers only as opaque owners. The driver,
// the connection and the owners' notifications are reached through this interface alone.
#pragma once

#include <cstdint>

namespace RTSecCache {

// An owner of a store request, as the store sees it: an address it compares and passes back.
using StoreOwner = void*;

class IntradayLink {
public:
    virtual ~IntradayLink() = default;
    virtual bool connected() = 0;
    // The owner's driver handle, 0 when it holds none.
    virtual uint32_t handleOf(StoreOwner owner) = 0;
    // Closes a driver request (the owner's copy of the handle is the owner's business).
    virtual void closeRequest(uint32_t handle) = 0;
    // True when the owner takes live records now; otherwise they wait in the store.
    virtual bool ready(StoreOwner owner) = 0;
    // Hands records to the owner: newest first for history (live 0), oldest first for live
    // records (live 1); count 0 with null data ends the owner's request.
    virtual void send(StoreOwner owner, int count, int live, int type, const void* data) = 0;
};

// Asks the driver for the span [from, to] in store times (to 0: up to the present) for the
// owner of the request being made; returns the handle, 0 when none was given.
class SpanRequester {
public:
    virtual uint32_t ask(uint32_t from, uint32_t to) = 0;

protected:
    ~SpanRequester() = default;
};

}  // namespace RTSecCache
