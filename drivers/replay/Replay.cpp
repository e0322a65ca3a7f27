#include "Replay.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>

#include "CivilDate.h"
#include "qvnreplay.h"

namespace qvnreplay {

namespace {

constexpr uint32_t kFirstHandle = 1000;
constexpr int kMostSymbolsPerRequest = 100000;
constexpr int kTimerMs = 100;
// Without a start the clock stands here: after any record, and still a valid time.
constexpr int64_t kAfterEverything = std::numeric_limits<int32_t>::max();

int64_t MonotonicMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

// A symbol mapped through the symbol map arrives as two names on two lines: the first counts.
std::string FirstLineTrimmed(const char* text) {
    std::string line(text);
    line = line.substr(0, line.find('\n'));
    while (!line.empty() && std::isspace(static_cast<unsigned char>(line.back()))) line.pop_back();
    size_t first = 0;
    while (first < line.size() && std::isspace(static_cast<unsigned char>(line[first]))) ++first;
    return line.substr(first);
}

}  // namespace

Replay& Replay::Instance() {
    static Replay replay;
    return replay;
}

Replay::World& Replay::Loaded() {
    if (!m_world) {
        m_world = std::make_unique<World>();
        m_world->config = ReplayConfig::FromEnvironment();
        m_world->listing = std::make_unique<Listing>(m_world->config.dataDir);
        m_now = m_world->config.start.value_or(kAfterEverything);
    }
    return *m_world;
}

bool Replay::Configure(const char* settings) {
    if (m_open || m_inDispatch) return false;
    auto world = std::make_unique<World>();
    world->config = ReplayConfig::FromEnvironment();
    const bool good = settings == nullptr || world->config.Apply(settings, "qvnreplay_Configure");
    world->listing = std::make_unique<Listing>(world->config.dataDir);
    m_now = world->config.start.value_or(kAfterEverything);
    m_world = std::move(world);
    return good;
}

long Replay::Open(NetworkCallback callback) {
    World& world = Loaded();
    if (m_open) return RTOPEN_LOCAL;
    if (callback == nullptr) return RTOPEN_REFUSED;
    DropRequests();
    m_network = callback;
    m_open = true;
    ++m_generation;
    m_now = world.config.start.value_or(kAfterEverything);
    m_wallStartMs = MonotonicMs();
    // A replay tells its clock as the server time, from the first dispatch (nothing is called
    // back from here) and then at every replayed minute. Without a replay there is no clock
    // worth telling: the library keeps its own.
    m_timeEventDue = world.config.start.has_value();
    m_poll.Signal();
    if (world.config.start && world.config.speed > 0) m_poll.Arm(kTimerMs);
    return RTOPEN_LOCAL;
}

void Replay::Close() {
    DropRequests();
    m_network = nullptr;
    m_open = false;
    ++m_generation;
    m_poll.Arm(0);
    m_poll.Drain();
}

void Replay::DropRequests() {
    for (auto& entry : m_requests) entry.second->Close();
    m_requests.clear();
    m_unanswered.clear();
}

void Replay::MoveClock() {
    const ReplayConfig& config = Config();
    if (!config.start) return;
    if (config.speed > 0) {
        const double elapsed = static_cast<double>(MonotonicMs() - m_wallStartMs) / 1000.0;
        m_now = std::max(m_now, *config.start + static_cast<int64_t>(elapsed * config.speed));
    } else {
        m_now += config.fastStepSeconds;
    }
}

void Replay::Dispatch() {
    // A callback that runs a loop of its own may land here again; the outer pass does the
    // work and the inner one only quiets the descriptor.
    m_poll.Drain();
    if (m_inDispatch || !m_open) return;
    m_inDispatch = true;
    struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{m_inDispatch};
    const uint64_t generation = m_generation;

    if (m_timeEventDue) {
        m_timeEventDue = false;
        long serverTime = static_cast<long>(m_now);
        m_network(RTNET_SERVER_TIME, &serverTime);
        if (m_generation != generation) return;
    }
    std::deque<std::shared_ptr<Request>> due;
    due.swap(m_unanswered);
    for (const std::shared_ptr<Request>& request : due) {
        if (request->Closed()) continue;
        request->Answer(*this);
        if (m_generation != generation) return;
        if (!request->Continues() || !request->KnowsSymbol()) {
            const auto found = m_requests.find(request->Handle());
            if (found != m_requests.end() && found->second == request) m_requests.erase(found);
        }
    }

    const int64_t from = m_now;
    MoveClock();
    m_timeEventDue = FloorDiv(from, 60) != FloorDiv(m_now, 60);
    if (m_now != from) {
        std::vector<std::shared_ptr<Request>> live;
        for (const auto& entry : m_requests) live.push_back(entry.second);
        for (const std::shared_ptr<Request>& request : live) {
            if (request->Closed()) continue;
            request->Advance(*this, from, m_now);
            if (m_generation != generation) return;
        }
    }
    // At speed 0 the loop's own pace drives the clock: stay readable while anything follows it.
    // The server time of a new minute waits for the next dispatch, whenever that comes.
    if (!m_unanswered.empty() || (Config().start && Config().speed == 0 && !m_requests.empty())) {
        m_poll.Signal();
    }
}

uint32_t Replay::Reserve(int count) {
    if (m_nextHandle > 0xFFFFFFF0u - static_cast<uint32_t>(count)) m_nextHandle = kFirstHandle;
    const uint32_t first = m_nextHandle;
    m_nextHandle += static_cast<uint32_t>(count);
    return first;
}

unsigned long Replay::Add(std::shared_ptr<Request> request) {
    const uint32_t handle = request->Handle();
    request->Bind(m_generation);
    m_requests[handle] = request;
    m_unanswered.push_back(std::move(request));
    m_poll.Signal();
    return handle;
}

SymbolData* Replay::Lookup(const char* symbol) {
    if (symbol == nullptr) return nullptr;
    const std::string name = FirstLineTrimmed(symbol);
    // A name that could leave the data directory is no symbol.
    if (name.empty() || name.size() > 15 || name.find('/') != std::string::npos ||
        name[0] == '.') {
        return nullptr;
    }
    World& world = Loaded();
    auto found = world.symbols.find(name);
    if (found == world.symbols.end()) {
        found = world.symbols
                    .emplace(name, std::make_unique<SymbolData>(world.config.dataDir, name,
                                                                world.listing->Find(name)))
                    .first;
    }
    return found->second->Known() ? found->second.get() : nullptr;
}

unsigned long Replay::RequestQuotes(const char* symbols, const char* fields,
                                    SecurityCallback callback, unsigned long user, bool streaming,
                                    int count) {
    if (!m_open || symbols == nullptr || callback == nullptr || count <= 0 ||
        count > kMostSymbolsPerRequest) {
        return 0;
    }
    static const char kDefaultFields[] = {RTFIELD_SYMBOL, RTFIELD_NAME, RTFIELD_ASSET_TYPE,
                                          RTFIELD_LAST, RTFIELD_PREV_CLOSE, RTFIELD_EXCHANGE,
                                          RTFIELD_HIGH, RTFIELD_LOW, RTFIELD_TOTAL_VOLUME,
                                          RTFIELD_VOLUME, RTFIELD_QUOTE_TIME,
                                          RTFIELD_DISPLAY_STYLE, 0};
    const std::string fieldString = fields != nullptr && *fields ? fields : kDefaultFields;
    const uint32_t first = Reserve(count);
    const char* symbol = symbols;
    for (int i = 0; i < count; ++i) {
        Add(std::make_shared<QuoteRequest>(first + static_cast<uint32_t>(i), user, Lookup(symbol),
                                           callback, fieldString, streaming));
        symbol += std::strlen(symbol) + 1;
    }
    return first;
}

unsigned long Replay::RequestHistory(const char* symbol, const TICKDATA* request,
                                     TickCallback callback, unsigned long user) {
    if (!m_open || symbol == nullptr || request == nullptr || callback == nullptr) return 0;
    // Plain one-minute bars or plain ticks: the library converts anything else itself.
    if (request->weight != -1 && request->weight != 1) return 0;
    return Add(std::make_shared<HistoryRequest>(Reserve(1), user, Lookup(symbol), callback,
                                                *request));
}

unsigned long Replay::RequestEod(const char* symbol, const void* request, EodCallback callback,
                                 unsigned long user) {
    if (!m_open || symbol == nullptr || callback == nullptr) return 0;
    QvnReplayEodRequest wanted{};
    if (request != nullptr) std::memcpy(&wanted, request, sizeof wanted);
    return Add(std::make_shared<EodRequest>(Reserve(1), user, Lookup(symbol), callback,
                                            wanted.start, wanted.end, wanted.maxRecords));
}

unsigned long Replay::RequestSessions(const char* symbol, SessionCallback callback,
                                      unsigned long user) {
    if (!m_open || symbol == nullptr || callback == nullptr) return 0;
    return Add(std::make_shared<SessionRequest>(Reserve(1), user, Lookup(symbol), callback));
}

void Replay::CloseRequest(unsigned long handle) {
    const auto found = m_requests.find(static_cast<uint32_t>(handle));
    if (found == m_requests.end() || found->first != handle) return;
    found->second->Close();
    m_requests.erase(found);
}

int Replay::Modify(unsigned long handle, const char* fields) {
    const auto found = m_requests.find(static_cast<uint32_t>(handle));
    if (found == m_requests.end() || found->first != handle) return 0;
    auto* quote = dynamic_cast<QuoteRequest*>(found->second.get());
    if (quote == nullptr || fields == nullptr) return 0;
    quote->SetFields(fields);
    m_unanswered.push_back(found->second);
    m_poll.Signal();
    return 1;
}

}  // namespace qvnreplay
