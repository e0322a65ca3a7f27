// A test's handle on the scriptable fake driver.
//
// The library loads the fake with dlopen(RTLD_LOCAL); this class opens the same file again,
// which yields the same instance, and drives it through its fake_ control functions:
//
//   qvnrt::test::FakeDriver fake;                 // QVNFAKE_PATH, state cleared
//   RTServer::SetDLLName(QVNFAKE_PATH);
//   ... LoadRTServer, Connect, OpenSecurity ...
//   const auto request = fake.last("clientReqSecurities");
//   EXPECT_EQ(std::vector<std::string>{"IBM"}, request.symbols());
//   fake.fireSecurityDouble(request.result, RTFIELD_LAST, 101.5);
//   fake.fireSecurityEnd(request.result);
//
// Test programs get the paths of the four builds through qvnrt_use_fake_driver() in CMake:
// QVNFAKE_PATH, QVNFAKE_NO_DISPLAY_PATH, QVNFAKE_NO_CHANGE_PATH, QVNFAKE_DISPATCH_PATH.
#pragma once

#include <dlfcn.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "FakeDriverApi.h"

namespace qvnrt::test {

struct FakeArg {
    std::string name;
    int kind = FAKE_ARG_NONE;  // FAKE_ARG_NUMBER, FAKE_ARG_BYTES or FAKE_ARG_NULL
    uint64_t number = 0;
    std::string bytes;
};

// One recorded entry point call, copied out of the fake.
class FakeCall {
public:
    std::string name;
    bool hasResult = false;
    long long result = 0;  // the value the entry returned; for a request, its handle
    std::vector<FakeArg> args;

    bool has(std::string_view argName) const { return find(argName) != nullptr; }

    // Throws std::out_of_range when the call has no such argument.
    const FakeArg& arg(std::string_view argName) const {
        if (const FakeArg* found = find(argName)) return *found;
        throw std::out_of_range(name + " has no argument " + std::string(argName));
    }
    // A signed argument (int, long).
    long long integer(std::string_view argName) const {
        return static_cast<long long>(arg(argName).number);
    }
    // An unsigned argument, a handle, a user value, or a pointer's address.
    uint64_t number(std::string_view argName) const { return arg(argName).number; }
    template <class T = void>
    T* pointer(std::string_view argName) const {
        return reinterpret_cast<T*>(static_cast<uintptr_t>(arg(argName).number));
    }
    // The copied bytes of a text, field string, symbol run or record; empty for null.
    std::string text(std::string_view argName) const { return arg(argName).bytes; }
    bool isNull(std::string_view argName) const { return arg(argName).kind == FAKE_ARG_NULL; }

    // The symbols of clientReqSecurities, one string each.
    std::vector<std::string> symbols() const {
        std::vector<std::string> out;
        const std::string& run = arg("symbols").bytes;
        for (size_t at = 0; at < run.size();) {
            const size_t end = run.find('\0', at);
            out.push_back(run.substr(at, end - at));
            at = end == std::string::npos ? run.size() : end + 1;
        }
        return out;
    }
    // The request record of clientReqTickBars, as it was at the call.
    TICKDATA tickData() const {
        const std::string& bytes = arg("request").bytes;
        if (bytes.size() != sizeof(TICKDATA)) throw std::out_of_range(name + ": no TICKDATA");
        TICKDATA record;
        std::memcpy(&record, bytes.data(), sizeof(record));
        return record;
    }

private:
    const FakeArg* find(std::string_view argName) const {
        for (const FakeArg& a : args) {
            if (a.name == argName) return &a;
        }
        return nullptr;
    }
};

class FakeDriver {
public:
    enum class Start {
        kFresh,      // clears the fake's state now, and again (with the hooks) at destruction
        kKeepState,  // a second view on a fake that a fresh one already set up
    };

    explicit FakeDriver(const std::string& path, Start start = Start::kFresh)
        : m_owner(start == Start::kFresh) {
        m_library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!m_library) {
            const char* error = ::dlerror();
            throw std::runtime_error("cannot open the fake driver: " +
                                     std::string(error ? error : path));
        }
        Bind();
        if (m_owner) m_api.fake_reset();
    }
#ifdef QVNFAKE_PATH
    FakeDriver() : FakeDriver(QVNFAKE_PATH) {}
#endif
    ~FakeDriver() {
        // The hooks and queued calls hold this test's closures; none may outlive it.
        if (m_owner) m_api.fake_reset();
        ::dlclose(m_library);
    }
    FakeDriver(const FakeDriver&) = delete;
    FakeDriver& operator=(const FakeDriver&) = delete;

    // ---- The log ----------------------------------------------------------------------

    int callCount() const { return m_api.fake_call_count(); }
    FakeCall call(int index) const {
        FakeCall call;
        const char* name = m_api.fake_call_name(index);
        if (!name) throw std::out_of_range("no call " + std::to_string(index));
        call.name = name;
        call.hasResult = m_api.fake_call_has_result(index) != 0;
        call.result = m_api.fake_call_result(index);
        const int count = m_api.fake_call_arg_count(index);
        for (int i = 0; i < count; ++i) {
            FakeArg arg;
            arg.name = m_api.fake_call_arg_name(index, i);
            arg.kind = m_api.fake_call_arg_kind(index, i);
            arg.number = m_api.fake_call_arg_number(index, i);
            size_t length = 0;
            if (const char* bytes = m_api.fake_call_arg_bytes(index, i, &length)) {
                arg.bytes.assign(bytes, length);
            }
            call.args.push_back(std::move(arg));
        }
        return call;
    }
    std::vector<FakeCall> calls() const {
        std::vector<FakeCall> out;
        for (int i = 0; i < callCount(); ++i) out.push_back(call(i));
        return out;
    }
    std::vector<FakeCall> calls(std::string_view entry) const {
        std::vector<FakeCall> out;
        for (int i = 0; i < callCount(); ++i) {
            if (entry == m_api.fake_call_name(i)) out.push_back(call(i));
        }
        return out;
    }
    // Entry names in call order.
    std::vector<std::string> names() const {
        std::vector<std::string> out;
        for (int i = 0; i < callCount(); ++i) out.emplace_back(m_api.fake_call_name(i));
        return out;
    }
    int count(std::string_view entry) const {
        int n = 0;
        for (int i = 0; i < callCount(); ++i) n += entry == m_api.fake_call_name(i) ? 1 : 0;
        return n;
    }
    // The latest call of an entry; throws std::out_of_range when there was none.
    FakeCall last(std::string_view entry) const {
        for (int i = callCount() - 1; i >= 0; --i) {
            if (entry == m_api.fake_call_name(i)) return call(i);
        }
        throw std::out_of_range("no call of " + std::string(entry));
    }
    void clearLog() { m_api.fake_clear_log(); }

    // ---- Answers ----------------------------------------------------------------------

    // Every later call of the entry returns `result` (a request: that handle; 0 refuses).
    void setResult(const std::string& entry, long long result) {
        m_api.fake_set_result(entry.c_str(), result);
    }
    // The next call only; queued one-shot results come before a set one.
    void pushResult(const std::string& entry, long long result) {
        m_api.fake_push_result(entry.c_str(), result);
    }
    void clearResult(const std::string& entry) { m_api.fake_clear_result(entry.c_str()); }
    void setNextHandle(unsigned long handle) { m_api.fake_set_next_handle(handle); }
    void setPropertyLong(int property, long value) {
        m_api.fake_set_property_long(property, value);
    }
    void setPropertyString(int property, const std::string& text) {
        m_api.fake_set_property_string(property, text.c_str());
    }
    // `field` is an exchange field (500 to 508) or, for the plain shape, a property.
    void setExchangeLong(long exchange, int field, long value, long error = 0) {
        m_api.fake_set_exchange_long(exchange, field, value, error);
    }
    void setExchangeString(long exchange, int field, const std::string& text, long error = 0) {
        m_api.fake_set_exchange_string(exchange, field, text.c_str(), error);
    }
    void setNewsSource(int source, int what, const std::string& text) {
        m_api.fake_set_news_source(source, what, text.c_str());
    }

    // Runs `hook` inside every call of the entry, after it is logged and before it returns,
    // with the entry's result (0 for a void entry). A hook may fire callbacks, as a driver
    // that answers inside the request would.
    void onCall(const std::string& entry, std::function<void(long long result)> hook) {
        if (!hook) {
            clearHook(entry);
            return;
        }
        using Hook = std::function<void(long long)>;
        m_api.fake_set_hook(
            entry.c_str(),
            [](void* context, long long result) { (*static_cast<Hook*>(context))(result); },
            new Hook(std::move(hook)), [](void* context) { delete static_cast<Hook*>(context); });
    }
    void clearHook(const std::string& entry) {
        m_api.fake_set_hook(entry.c_str(), nullptr, nullptr, nullptr);
    }

    // ---- Requests ---------------------------------------------------------------------

    bool hasNetworkCallback() const { return m_api.fake_has_network_callback() != 0; }
    // The entry that started the request, or nullopt for an unknown handle.
    std::optional<std::string> entryOf(unsigned long handle) const {
        const char* entry = m_api.fake_handle_entry(handle);
        return entry ? std::optional<std::string>(entry) : std::nullopt;
    }
    unsigned long userOf(unsigned long handle) const { return m_api.fake_handle_user(handle); }
    bool isOpen(unsigned long handle) const { return m_api.fake_handle_open(handle) != 0; }

    // ---- Callbacks --------------------------------------------------------------------
    // Each returns the callback's result, or nullopt when there was no callback to call.
    // The ...WithUser forms pass `user` in place of the stored one (null or foreign users).

    bool fireNetwork(int event, void* data = nullptr) {
        return m_api.fake_fire_network(event, data) != 0;
    }
    bool connectionLost(int reason) {
        return fireNetwork(RTNET_CONNECTION_LOST, reinterpret_cast<void*>(intptr_t{reason}));
    }
    bool connected(long value, long result) {
        RTNetConnectResult data{value, result};
        return fireNetwork(RTNET_CONNECTED, &data);
    }

    std::optional<int> fireSecurity(unsigned long request, int status, int field, int dataType,
                                    void* data) {
        return Result(m_api.fake_fire_security, request, status, field, dataType, data, 0, 0ul);
    }
    std::optional<int> fireSecurityWithUser(unsigned long request, int status, int field,
                                            int dataType, void* data, unsigned long user) {
        return Result(m_api.fake_fire_security, request, status, field, dataType, data, 1, user);
    }
    std::optional<int> fireSecurityDouble(unsigned long request, int field, double value) {
        return fireSecurity(request, 0, field, RTDATA_DOUBLE, &value);
    }
    std::optional<int> fireSecurityFloat(unsigned long request, int field, float value) {
        return fireSecurity(request, 0, field, RTDATA_FLOAT, &value);
    }
    std::optional<int> fireSecurityInt(unsigned long request, int field, int32_t value) {
        return fireSecurity(request, 0, field, RTDATA_INT, &value);
    }
    std::optional<int> fireSecurityText(unsigned long request, int field, std::string text) {
        return fireSecurity(request, 0, field, RTDATA_TEXT, text.data());
    }
    // Field 0: the end of a batch.
    std::optional<int> fireSecurityEnd(unsigned long request, int status = 0) {
        return fireSecurity(request, status, RTFIELD_END, 0, nullptr);
    }

    std::optional<int> fireEod(unsigned long request, int count, int flags, RTPRICEREC* records) {
        return Result(m_api.fake_fire_eod, request, count, flags, records, 0, 0ul);
    }
    std::optional<int> fireEodWithUser(unsigned long request, int count, int flags,
                                       RTPRICEREC* records, unsigned long user) {
        return Result(m_api.fake_fire_eod, request, count, flags, records, 1, user);
    }
    std::optional<int> fireTick(unsigned long request, int count, int live, int type, void* data) {
        return Result(m_api.fake_fire_tick, request, count, live, type, data, 0, 0ul);
    }
    std::optional<int> fireTickWithUser(unsigned long request, int count, int live, int type,
                                        void* data, unsigned long user) {
        return Result(m_api.fake_fire_tick, request, count, live, type, data, 1, user);
    }
    std::optional<int> fireSession(unsigned long request, int status, SESSION_INFO* rules,
                                   void* holidays) {
        return Result(m_api.fake_fire_session, request, status, rules, holidays, 0, 0ul);
    }
    std::optional<int> fireSessionWithUser(unsigned long request, int status, SESSION_INFO* rules,
                                           void* holidays, unsigned long user) {
        return Result(m_api.fake_fire_session, request, status, rules, holidays, 1, user);
    }
    std::optional<int> fireHeadline(unsigned long request, int count, unsigned long articleID,
                                    char* headline, unsigned char sourceId, char* sourceName,
                                    long dateTime, int history) {
        return Result(m_api.fake_fire_headline, request, count, articleID, headline, sourceId,
                      sourceName, dateTime, history, 0, 0ul);
    }
    std::optional<int> fireHeadlineWithUser(unsigned long request, int count,
                                            unsigned long articleID, char* headline,
                                            unsigned char sourceId, char* sourceName,
                                            long dateTime, int history, unsigned long user) {
        return Result(m_api.fake_fire_headline, request, count, articleID, headline, sourceId,
                      sourceName, dateTime, history, 1, user);
    }
    std::optional<int> fireStory(unsigned long request, int status, unsigned long articleID,
                                 char* story) {
        return Result(m_api.fake_fire_story, request, status, articleID, story, 0, 0ul);
    }
    std::optional<int> fireStoryWithUser(unsigned long request, int status,
                                         unsigned long articleID, char* story,
                                         unsigned long user) {
        return Result(m_api.fake_fire_story, request, status, articleID, story, 1, user);
    }

    // ---- Deferred delivery (the dispatch build) ---------------------------------------

    // Runs `fn` inside the next clientDispatch; the poll descriptor is readable meanwhile.
    // Whatever `fn` fires reaches the library from inside clientDispatch.
    void queue(std::function<void()> fn) {
        auto* held = new std::function<void()>(std::move(fn));
        m_api.fake_queue([](void* context) { (*static_cast<std::function<void()>*>(context))(); },
                         [](void* context) { delete static_cast<std::function<void()>*>(context); },
                         held);
    }
    int pending() const { return m_api.fake_pending(); }
    int dispatchCount() const { return m_api.fake_dispatch_count(); }
    int pollFd() const { return m_api.fake_poll_fd(); }

    void reset() { m_api.fake_reset(); }
    void* library() const { return m_library; }

private:
// clang-format off
#define QVNFAKE_CONTROL_FUNCTIONS(X)                                                          \
    X(fake_call_count) X(fake_call_name) X(fake_call_has_result) X(fake_call_result)          \
    X(fake_call_arg_count) X(fake_call_arg_name) X(fake_call_arg_kind)                        \
    X(fake_call_arg_number) X(fake_call_arg_bytes) X(fake_clear_log)                          \
    X(fake_set_result) X(fake_push_result) X(fake_clear_result) X(fake_set_next_handle)       \
    X(fake_set_property_long) X(fake_set_property_string) X(fake_set_exchange_long)           \
    X(fake_set_exchange_string) X(fake_set_news_source) X(fake_set_hook)                      \
    X(fake_has_network_callback) X(fake_handle_entry) X(fake_handle_user) X(fake_handle_open) \
    X(fake_fire_network) X(fake_fire_security) X(fake_fire_eod) X(fake_fire_tick)             \
    X(fake_fire_session) X(fake_fire_headline) X(fake_fire_story)                             \
    X(fake_queue) X(fake_pending) X(fake_dispatch_count) X(fake_poll_fd) X(fake_reset)
    // clang-format on

    struct Api {
#define QVNFAKE_DECLARE(name) decltype(&::name) name = nullptr;
        QVNFAKE_CONTROL_FUNCTIONS(QVNFAKE_DECLARE)
#undef QVNFAKE_DECLARE
    };

    void Bind() {
#define QVNFAKE_BIND(name)                                                          \
    m_api.name = reinterpret_cast<decltype(m_api.name)>(::dlsym(m_library, #name)); \
    if (!m_api.name) {                                                              \
        ::dlclose(m_library);                                                       \
        throw std::runtime_error("the fake driver lacks " #name);                   \
    }
        QVNFAKE_CONTROL_FUNCTIONS(QVNFAKE_BIND)
#undef QVNFAKE_BIND
    }
#undef QVNFAKE_CONTROL_FUNCTIONS

    template <class Fire, class... Args>
    static std::optional<int> Result(Fire fire, Args... args) {
        int result = 0;
        if (!fire(args..., &result)) return std::nullopt;
        return result;
    }

    void* m_library = nullptr;
    bool m_owner;
    Api m_api;
};

}  // namespace qvnrt::test
