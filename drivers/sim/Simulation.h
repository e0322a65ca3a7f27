// The simulation driver's state: the connection, the simulated clock, the open requests
// and the events that wait for the next clientDispatch.
//
// Every callback is made from inside Dispatch. Each Dispatch first makes the answers that
// are due, then moves the simulated clock on by one step and makes that step's live
// updates; so the data depend only on the seed, the requests and the number of Dispatch
// calls, never on the wall clock.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <qvnrt/driver.h>

#include "Market.h"
#include "NewsWire.h"
#include "PollSource.h"
#include "Request.h"
#include "SimConfig.h"

struct QvnSimEodRequest;
struct QvnSimOptionFilter;

namespace qvnsim {

class Simulation {
public:
    static Simulation& Instance();

    // Connection.
    long Open(NetworkCallback callback, unsigned long changeStamp, int connectMode);
    void Close();
    int PollFd();
    void Dispatch();

    // Requests; each returns its handle, 0 when refused.
    unsigned long RequestQuotes(const char* symbols, const char* fields, SecurityCallback callback,
                                unsigned long user, bool streaming, int count);
    unsigned long RequestSymbolList(const char* name, int assetType, const unsigned char* fields,
                                    const QvnSimOptionFilter* filter, SecurityCallback callback,
                                    unsigned long user);
    unsigned long RequestRankedList(int list, int selector1, int selector2,
                                    SecurityCallback callback, unsigned long user);
    unsigned long RequestEod(const char* symbol, const QvnSimEodRequest* request,
                             EodCallback callback, unsigned long user, bool streaming);
    unsigned long RequestTicks(const char* symbol, const TICKDATA* request, TickCallback callback,
                               unsigned long user);
    unsigned long RequestSessions(const char* symbol, SessionCallback callback, unsigned long user);
    unsigned long RequestHeadlines(const NewsQuery& query, bool live, HeadlineCallback callback,
                                   unsigned long user);
    unsigned long RequestStory(unsigned long articleId, StoryCallback callback, unsigned long user);
    void CloseRequest(unsigned long handle);
    int Modify(unsigned long handle, const char* fields);

    // Control calls.
    bool Configure(const char* settings);
    bool RaiseEvent(int event, long argument);
    bool SecurityChange(const char* symbol, char kind);
    std::string Describe();

    // For the requests.
    const SimConfig& Config() { return Built().config; }
    const Universe& universe() { return *Built().universe; }
    Market& market() { return *Built().market; }
    const NewsWire& news() { return *Built().news; }
    int64_t Now() { return Built().now; }
    long Steps() { return Built().steps; }
    uint64_t Generation() const { return m_generation; }
    // A security's clock: the simulated time less the security's delay.
    int64_t NowFor(const Security& security);

private:
    enum class State { kClosed, kPending, kOpen, kLost };

    struct NetEvent {
        int event;
        long argument;
        std::vector<RTSecChange> changes;
    };

    // Everything a configuration decides; rebuilt by Configure.
    struct World {
        SimConfig config;
        std::unique_ptr<Universe> universe;
        std::unique_ptr<Market> market;
        std::unique_ptr<NewsWire> news;
        int64_t now = 0;
        long steps = 0;
    };

    Simulation() = default;
    World& Built();
    void Rebuild(const SimConfig& config);
    bool Accepting() const { return m_state == State::kOpen || m_state == State::kPending; }
    uint32_t Reserve(int count);
    unsigned long Add(std::shared_ptr<Request> request);
    void DropRequests();
    const Security* Lookup(const char* symbol);
    void Forget(const std::shared_ptr<Request>& request);
    void Queue(NetEvent event);
    void DeliverEvents();
    void DeliverEvent(NetEvent& event);
    long ChangeLogStamp();
    std::vector<RTSecChange> ChangeLog(unsigned long since);

    std::unique_ptr<World> m_world;
    PollSource m_poll;
    State m_state = State::kClosed;
    NetworkCallback m_network = nullptr;
    uint64_t m_generation = 0;
    long m_openResult = RTOPEN_REFUSED;
    long m_stepsSinceOpen = 0;
    uint32_t m_nextHandle = 1000;
    bool m_inDispatch = false;
    bool m_timerTicked = false;  // since the last step
    std::map<uint32_t, std::shared_ptr<Request>> m_requests;
    std::deque<std::shared_ptr<Request>> m_unanswered;
    std::deque<NetEvent> m_events;
    long m_rightsData[4] = {};
};

}  // namespace qvnsim
