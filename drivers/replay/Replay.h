// The replay driver's state: the connection, the replay clock, the symbols' files and the
// open requests. Every callback is made from inside Dispatch.
//
// The clock stands at the configured start when the connection opens and then runs at the
// configured speed on the monotonic wall clock (or, at speed 0, one fast step a dispatch,
// with the descriptor kept readable). Without a start nothing is replayed: the clock stands
// after every record, so that all data is history.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>

#include <qvnrt/driver.h>

#include "Listing.h"
#include "PollSource.h"
#include "ReplayConfig.h"
#include "Requests.h"
#include "SymbolData.h"

namespace qvnreplay {

class Replay {
public:
    static Replay& Instance();

    long Open(NetworkCallback callback);
    void Close();
    int PollFd() { return m_poll.Fd(); }
    void Dispatch();

    unsigned long RequestQuotes(const char* symbols, const char* fields, SecurityCallback callback,
                                unsigned long user, bool streaming, int count);
    unsigned long RequestHistory(const char* symbol, const TICKDATA* request, TickCallback callback,
                                 unsigned long user);
    unsigned long RequestEod(const char* symbol, const void* request, EodCallback callback,
                             unsigned long user);
    unsigned long RequestSessions(const char* symbol, SessionCallback callback,
                                  unsigned long user);
    void CloseRequest(unsigned long handle);
    int Modify(unsigned long handle, const char* fields);

    bool Configure(const char* settings);

    const ReplayConfig& Config() { return Loaded().config; }
    const Listing& listing() { return *Loaded().listing; }
    int64_t Now() const { return m_now; }
    bool Replaying() { return Loaded().config.start.has_value(); }
    uint64_t Generation() const { return m_generation; }

private:
    struct World {
        ReplayConfig config;
        std::unique_ptr<Listing> listing;
        std::map<std::string, std::unique_ptr<SymbolData>> symbols;
    };

    Replay() = default;
    World& Loaded();
    SymbolData* Lookup(const char* symbol);
    uint32_t Reserve(int count);
    unsigned long Add(std::shared_ptr<Request> request);
    void DropRequests();
    void MoveClock();

    std::unique_ptr<World> m_world;
    PollSource m_poll;
    NetworkCallback m_network = nullptr;
    bool m_open = false;
    bool m_inDispatch = false;
    bool m_timeEventDue = false;
    uint64_t m_generation = 0;
    uint32_t m_nextHandle = 1000;
    int64_t m_now = 0;
    int64_t m_wallStartMs = 0;
    std::map<uint32_t, std::shared_ptr<Request>> m_requests;
    std::deque<std::shared_ptr<Request>> m_unanswered;
};

}  // namespace qvnreplay
