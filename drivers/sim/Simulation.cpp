#include "Simulation.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "CivilDate.h"
#include "EodRequest.h"
#include "ListRequest.h"
#include "NewsRequests.h"
#include "QuoteFields.h"
#include "QuoteRequest.h"
#include "SessionRequest.h"
#include "SymbolLists.h"
#include "TickRequest.h"
#include "qvnsim.h"

namespace qvnsim {

namespace {

constexpr uint32_t kFirstHandle = 1000;
constexpr int kMostChangesPerEvent = 64;
// Far beyond any list an application keeps; a larger count is taken for a bad argument.
constexpr int kMostSymbolsPerRequest = 100000;

std::string FirstLineTrimmed(const char* text) {
    std::string line(text);
    line = line.substr(0, line.find('\n'));
    const auto blank = [](unsigned char c) { return std::isspace(c) != 0; };
    while (!line.empty() && blank(static_cast<unsigned char>(line.back()))) line.pop_back();
    size_t first = 0;
    while (first < line.size() && blank(static_cast<unsigned char>(line[first]))) ++first;
    return line.substr(first);
}

RTSecChange MakeChange(const std::string& symbol, int64_t time, char kind) {
    RTSecChange change{};
    std::strncpy(change.symbol, symbol.c_str(), sizeof change.symbol - 1);
    change.time = static_cast<uint32_t>(time);
    change.kind = kind;
    return change;
}

}  // namespace

Simulation& Simulation::Instance() {
    static Simulation simulation;
    return simulation;
}

Simulation::World& Simulation::Built() {
    if (!m_world) Rebuild(SimConfig::FromEnvironment());
    return *m_world;
}

void Simulation::Rebuild(const SimConfig& config) {
    ChooseCalendar(config.calendar);  // before the markets make their zone clocks
    auto world = std::make_unique<World>();
    world->config = config;
    const int64_t anchorDay = DayOf(config.start);
    world->universe = std::make_unique<Universe>(anchorDay, config.universe);
    world->market = std::make_unique<Market>(*world->universe, config.seed, anchorDay);
    world->news = std::make_unique<NewsWire>(*world->universe, config.seed);
    world->now = config.start;
    m_world = std::move(world);
    m_nextHandle = kFirstHandle;
}

int64_t Simulation::NowFor(const Security& security) {
    return Now() - universe().DelaySeconds(security);
}

// ---- Connection ---------------------------------------------------------------------------

long Simulation::Open(NetworkCallback callback, unsigned long changeStamp, int connectMode) {
    World& world = Built();
    if (Accepting()) return m_openResult;
    long result = RTOPEN_REFUSED;
    switch (world.config.connect) {
        case ConnectAnswer::kAuto:
            result = connectMode == 1 ? RTOPEN_REMOTE : RTOPEN_PENDING;
            break;
        case ConnectAnswer::kRemote:
            result = RTOPEN_REMOTE;
            break;
        case ConnectAnswer::kLocal:
            result = RTOPEN_LOCAL;
            break;
        case ConnectAnswer::kPending:
            result = RTOPEN_PENDING;
            break;
        case ConnectAnswer::kRefuse:
            result = RTOPEN_REFUSED;
            break;
    }
    if (result == RTOPEN_REFUSED || callback == nullptr) return RTOPEN_REFUSED;

    DropRequests();
    m_events.clear();
    m_network = callback;
    m_state = result == RTOPEN_PENDING ? State::kPending : State::kOpen;
    m_openResult = result;
    ++m_generation;
    m_stepsSinceOpen = 0;
    // Nothing is called back from here: the connection's events wait for clientDispatch.
    if (result == RTOPEN_PENDING) Queue({RTNET_CONNECTED, 0, {}});
    if (world.config.timeEvents) Queue({RTNET_SERVER_TIME, 0, {}});
    if (world.config.changes) {
        std::vector<RTSecChange> log = ChangeLog(changeStamp);
        if (!log.empty()) Queue({RTNET_SECURITY_CHANGE, ChangeLogStamp(), std::move(log)});
    }
    m_poll.Arm(world.config.speedMs);
    return result;
}

// The service's record of corporate changes: a split and a dividend shortly before the
// start. The stamp of the set is two days before the start; a library whose stamp is that
// or later gets nothing.
long Simulation::ChangeLogStamp() {
    return static_cast<long>(Built().config.start - 2 * kSecondsPerDay);
}

std::vector<RTSecChange> Simulation::ChangeLog(unsigned long since) {
    const int64_t start = Built().config.start;
    std::vector<RTSecChange> log;
    if (static_cast<long>(since) >= ChangeLogStamp()) return log;
    const struct {
        const char* symbol;
        int64_t time;
        char kind;
    } kLog[] = {{"HRBR", start - 10 * kSecondsPerDay, 'D'},
                {"BLTN", start - 3 * kSecondsPerDay, 'S'}};
    for (const auto& entry : kLog) {
        if (universe().Find(entry.symbol) != nullptr && entry.time > static_cast<long>(since)) {
            log.push_back(MakeChange(entry.symbol, entry.time, entry.kind));
        }
    }
    return log;
}

void Simulation::Close() {
    DropRequests();
    m_events.clear();
    m_network = nullptr;
    m_state = State::kClosed;
    ++m_generation;
    m_poll.Arm(0);
    m_poll.Drain();
    m_timerTicked = false;
}

int Simulation::PollFd() {
    return m_poll.Fd();
}

void Simulation::DropRequests() {
    for (auto& entry : m_requests) entry.second->Close();
    m_requests.clear();
    m_unanswered.clear();
}

void Simulation::Queue(NetEvent event) {
    m_events.push_back(std::move(event));
    m_poll.Signal();
}

void Simulation::DeliverEvents() {
    // A callback may close the connection (which empties the queue) or raise more events.
    while (!m_events.empty() && m_network != nullptr) {
        NetEvent event = std::move(m_events.front());
        m_events.pop_front();
        DeliverEvent(event);
    }
}

void Simulation::DeliverEvent(NetEvent& event) {
    const NetworkCallback callback = m_network;
    switch (event.event) {
        case RTNET_CONNECTION_LOST:
            callback(RTNET_CONNECTION_LOST,
                     reinterpret_cast<void*>(static_cast<intptr_t>(event.argument)));
            break;
        case RTNET_RIGHTS:
            m_rightsData[0] = event.argument;
            callback(RTNET_RIGHTS, m_rightsData);
            break;
        case RTNET_SERVER_TIME: {
            long serverTime = event.argument != 0 ? event.argument : static_cast<long>(Now());
            callback(RTNET_SERVER_TIME, &serverTime);
            break;
        }
        case RTNET_EOD_PROCESSING: {
            int flag = static_cast<int>(event.argument);
            callback(RTNET_EOD_PROCESSING, event.argument < 0 ? nullptr : &flag);
            break;
        }
        case RTNET_CONNECTED: {
            if (m_state == State::kPending) m_state = State::kOpen;
            RTNetConnectResult connected{Config().serverLimit, event.argument};
            callback(RTNET_CONNECTED, &connected);
            break;
        }
        case RTNET_NO_LIMIT:
            callback(RTNET_NO_LIMIT, nullptr);
            break;
        case RTNET_SECURITY_CHANGE: {
            // A long, an int, then the records from offset 12, in storage aligned for a long.
            const size_t bytes =
                offsetof(RTNetSecChangeBatch, changes) + event.changes.size() * sizeof(RTSecChange);
            std::vector<long> storage(std::max(bytes, sizeof(RTNetSecChangeBatch)) / sizeof(long) +
                                      1);
            auto* batch = reinterpret_cast<RTNetSecChangeBatch*>(storage.data());
            batch->timestamp = event.argument;
            batch->count = static_cast<int>(event.changes.size());
            if (!event.changes.empty()) {
                std::memcpy(reinterpret_cast<char*>(batch) + offsetof(RTNetSecChangeBatch, changes),
                            event.changes.data(), event.changes.size() * sizeof(RTSecChange));
            }
            callback(RTNET_SECURITY_CHANGE, batch);
            break;
        }
        default:
            break;
    }
}

// ---- Dispatch -----------------------------------------------------------------------------

void Simulation::Dispatch() {
    // A callback that runs a loop of its own may land here again; the outer pass finishes
    // the work, and the inner one only quiets the descriptor.
    if (m_inDispatch) {
        m_timerTicked |= m_poll.Drain() > 0;
        return;
    }
    m_inDispatch = true;
    struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{m_inDispatch};

    m_timerTicked |= m_poll.Drain() > 0;
    if (!m_world) return;
    DeliverEvents();
    if (!Accepting()) return;
    const uint64_t generation = m_generation;

    std::deque<std::shared_ptr<Request>> due;
    due.swap(m_unanswered);
    for (const std::shared_ptr<Request>& request : due) {
        if (request->Closed()) continue;
        request->Answer(*this);
        if (m_generation != generation) return;
        if (!request->Closed() && !request->Continues()) Forget(request);
    }

    // The descriptor is also readable when answers wait, and each answer can bring another
    // dispatch: on a timer, only its tick moves the clock, so the simulated time per wall
    // second stays what the settings say however often the library dispatches. A late tick
    // (or several) still moves one step: the clock never catches up in a burst.
    World& world = *m_world;
    if (world.config.speedMs > 0 && !m_timerTicked) {
        if (!m_unanswered.empty() || !m_events.empty()) m_poll.Signal();
        return;
    }
    m_timerTicked = false;
    const int64_t from = world.now;
    world.now += world.config.stepSeconds;
    ++world.steps;
    ++m_stepsSinceOpen;
    std::vector<std::shared_ptr<Request>> live;
    for (const auto& entry : m_requests) {
        if (entry.second->Answered()) live.push_back(entry.second);
    }
    for (const std::shared_ptr<Request>& request : live) {
        if (request->Closed()) continue;
        request->Step(*this, from, world.now);
        if (m_generation != generation) return;
    }

    for (const ScheduledEvent& scheduled : world.config.events) {
        if (scheduled.step == m_stepsSinceOpen) RaiseEvent(scheduled.event, scheduled.argument);
    }
    if (world.config.timeEvents && Accepting() && FloorDiv(from, 60) != FloorDiv(world.now, 60)) {
        Queue({RTNET_SERVER_TIME, 0, {}});
    }
    DeliverEvents();
    if (!m_unanswered.empty() || !m_events.empty()) m_poll.Signal();
}

// ---- Requests -----------------------------------------------------------------------------

uint32_t Simulation::Reserve(int count) {
    // Handles are never 0, and a block of them never wraps.
    if (m_nextHandle > 0xFFFFFFF0u - static_cast<uint32_t>(count)) m_nextHandle = kFirstHandle;
    const uint32_t first = m_nextHandle;
    m_nextHandle += static_cast<uint32_t>(count);
    return first;
}

unsigned long Simulation::Add(std::shared_ptr<Request> request) {
    const uint32_t handle = request->Handle();
    m_requests[handle] = request;
    m_unanswered.push_back(std::move(request));
    m_poll.Signal();
    return handle;
}

void Simulation::Forget(const std::shared_ptr<Request>& request) {
    auto found = m_requests.find(request->Handle());
    if (found != m_requests.end() && found->second == request) m_requests.erase(found);
}

const Security* Simulation::Lookup(const char* symbol) {
    return symbol == nullptr ? nullptr : universe().Find(FirstLineTrimmed(symbol));
}

unsigned long Simulation::RequestQuotes(const char* symbols, const char* fields,
                                        SecurityCallback callback, unsigned long user,
                                        bool streaming, int count) {
    if (!Accepting() || symbols == nullptr || callback == nullptr || count <= 0 ||
        count > kMostSymbolsPerRequest) {
        return 0;
    }
    const std::string fieldString = fields != nullptr ? fields : QuoteFields::DefaultFields();
    const uint32_t first = Reserve(count);
    const char* symbol = symbols;
    for (int i = 0; i < count; ++i) {
        Add(std::make_shared<QuoteRequest>(*this, first + static_cast<uint32_t>(i), user, callback,
                                           Lookup(symbol), fieldString, streaming));
        symbol += std::strlen(symbol) + 1;
    }
    return first;
}

unsigned long Simulation::RequestSymbolList(const char* name, int assetType,
                                            const unsigned char* fields,
                                            const QvnSimOptionFilter* filter,
                                            SecurityCallback callback, unsigned long user) {
    if (!Accepting() || callback == nullptr) return 0;
    const std::string listName = name != nullptr ? FirstLineTrimmed(name) : std::string();
    std::vector<int> rows;
    if (filter != nullptr) {
        rows = OptionChain(universe(), listName, *filter);
    } else if (std::optional<std::vector<int>> list = SymbolList(universe(), listName, assetType)) {
        rows = std::move(*list);
    }
    // An unknown list, or one with no rows, starts no request.
    if (rows.empty()) return 0;
    std::string fieldString = fields != nullptr ? reinterpret_cast<const char*>(fields) : "";
    if (fieldString.empty()) fieldString = {RTFIELD_SYMBOL, RTFIELD_NAME, RTFIELD_ASSET_TYPE};
    return Add(std::make_shared<ListRequest>(*this, Reserve(1), user, callback, std::move(rows),
                                             std::move(fieldString)));
}

unsigned long Simulation::RequestRankedList(int list, int selector1, int selector2,
                                            SecurityCallback callback, unsigned long user) {
    if (!Accepting() || callback == nullptr || list < 1 || list > 4) return 0;
    const int rows = selector2 >= 1 && selector2 <= 50 ? selector2 : 10;
    return Add(std::make_shared<RankedListRequest>(*this, Reserve(1), user, callback, list,
                                                   selector1, rows));
}

unsigned long Simulation::RequestEod(const char* symbol, const QvnSimEodRequest* request,
                                     EodCallback callback, unsigned long user, bool streaming) {
    if (!Accepting() || symbol == nullptr || callback == nullptr) return 0;
    const QvnSimEodRequest wanted = request != nullptr ? *request : QvnSimEodRequest{};
    return Add(std::make_shared<EodRequest>(*this, Reserve(1), user, callback, Lookup(symbol),
                                            wanted.start, wanted.end, wanted.maxRecords,
                                            streaming));
}

unsigned long Simulation::RequestTicks(const char* symbol, const TICKDATA* request,
                                       TickCallback callback, unsigned long user) {
    if (!Accepting() || symbol == nullptr || request == nullptr || callback == nullptr) return 0;
    // The library asks for plain one-minute bars or plain ticks only.
    if (request->weight != -1 && request->weight != 1) return 0;
    return Add(std::make_shared<TickRequest>(*this, Reserve(1), user, callback, Lookup(symbol),
                                             *request, Config().liveMinutes));
}

unsigned long Simulation::RequestSessions(const char* symbol, SessionCallback callback,
                                          unsigned long user) {
    if (!Accepting() || symbol == nullptr || callback == nullptr) return 0;
    return Add(std::make_shared<SessionRequest>(*this, Reserve(1), user, callback, Lookup(symbol)));
}

unsigned long Simulation::RequestHeadlines(const NewsQuery& query, bool live,
                                           HeadlineCallback callback, unsigned long user) {
    if (!Accepting() || callback == nullptr) return 0;
    return Add(std::make_shared<HeadlineRequest>(*this, Reserve(1), user, callback, query, live));
}

unsigned long Simulation::RequestStory(unsigned long articleId, StoryCallback callback,
                                       unsigned long user) {
    if (!Accepting() || callback == nullptr) return 0;
    return Add(std::make_shared<StoryRequest>(*this, Reserve(1), user, callback, articleId));
}

void Simulation::CloseRequest(unsigned long handle) {
    auto found = m_requests.find(static_cast<uint32_t>(handle));
    if (found == m_requests.end() || found->first != handle) return;
    found->second->Close();
    m_requests.erase(found);
}

int Simulation::Modify(unsigned long handle, const char* fields) {
    auto found = m_requests.find(static_cast<uint32_t>(handle));
    if (found == m_requests.end() || found->first != handle) return 0;
    const std::shared_ptr<Request> request = found->second;
    auto* quote = dynamic_cast<QuoteRequest*>(request.get());
    if (quote == nullptr) return 0;
    // New fields are sent in full at the next dispatch; null asks for the same in full.
    if (fields != nullptr)
        quote->SetFields(fields);
    else
        quote->SetFields(quote->Fields());
    if (request->Answered()) {
        m_unanswered.push_back(request);
        m_poll.Signal();
    }
    return 1;
}

// ---- Control ------------------------------------------------------------------------------

bool Simulation::Configure(const char* settings) {
    if (Accepting() || m_inDispatch) return false;
    SimConfig config = SimConfig::FromEnvironment();
    std::string error;
    if (settings != nullptr && !config.Apply(settings, error)) {
        std::fprintf(stderr, "qvnsim: %s\n", error.c_str());
        return false;
    }
    Close();
    Rebuild(config);
    return true;
}

bool Simulation::RaiseEvent(int event, long argument) {
    if (!Accepting()) return false;
    switch (event) {
        case RTNET_CONNECTION_LOST:
            DropRequests();
            m_state = State::kLost;
            ++m_generation;
            m_poll.Arm(0);
            Queue({event, argument, {}});
            return true;
        case RTNET_RIGHTS:
        case RTNET_SERVER_TIME:
        case RTNET_EOD_PROCESSING:
        case RTNET_CONNECTED:
        case RTNET_NO_LIMIT:
            Queue({event, argument, {}});
            return true;
        case RTNET_SECURITY_CHANGE: {
            std::vector<RTSecChange> changes;
            const std::vector<Security>& securities = universe().Securities();
            const long count = std::clamp<long>(argument, 0, kMostChangesPerEvent);
            for (size_t i = 0; changes.size() < static_cast<size_t>(count) && i < securities.size();
                 ++i) {
                if (securities[i].visible)
                    changes.push_back(MakeChange(securities[i].symbol, Now(), 'S'));
            }
            Queue({event, static_cast<long>(Now()), std::move(changes)});
            return true;
        }
        default:
            return false;
    }
}

bool Simulation::SecurityChange(const char* symbol, char kind) {
    if (!Accepting() || symbol == nullptr) return false;
    Queue({RTNET_SECURITY_CHANGE, static_cast<long>(Now()), {MakeChange(symbol, Now(), kind)}});
    return true;
}

std::string Simulation::Describe() {
    const SimConfig& config = Config();
    const CivilDate date = CivilFromDays(DayOf(Now()));
    const int64_t clock = Now() - DayOf(Now()) * kSecondsPerDay;
    int visible = 0;
    for (const Security& s : universe().Securities()) visible += s.visible ? 1 : 0;
    char text[512];
    std::snprintf(text, sizeof text,
                  "qvnsim: seed %llu, %d ms a step of %d simulated seconds, %d securities, "
                  "simulated time %04d-%02d-%02d %02d:%02d:%02d UTC after %ld steps\n",
                  static_cast<unsigned long long>(config.seed), config.speedMs, config.stepSeconds,
                  visible, date.year, date.month, date.day, static_cast<int>(clock / 3600),
                  static_cast<int>(clock / 60 % 60), static_cast<int>(clock % 60), Steps());
    return text;
}

}  // namespace qvnsim
