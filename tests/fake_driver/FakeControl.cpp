// The fake_ control functions that tests call through dlsym.
#include <memory>

#include "FakeDriverApi.h"
#include "FakeState.h"

using qvnfake::CallbackKind;
using qvnfake::Closure;
using qvnfake::State;
using qvnfake::TheState;

namespace {

const qvnfake::Call* CallAt(int call) {
    const auto& log = TheState().log;
    return (call >= 0 && static_cast<size_t>(call) < log.size()) ? &log[call] : nullptr;
}

const qvnfake::Arg* ArgAt(int call, int arg) {
    const qvnfake::Call* found = CallAt(call);
    if (!found || arg < 0 || static_cast<size_t>(arg) >= found->args.size()) return nullptr;
    return &found->args[arg];
}

// The callback for a request: the one stored with the handle, or, when the test names a
// user of its own and the handle is unknown, the latest one of that kind.
struct Target {
    void* callback = nullptr;
    unsigned long user = 0;
};

Target TargetFor(unsigned long request, CallbackKind kind, int withUser, unsigned long user) {
    State& state = TheState();
    Target target;
    const auto found = state.requests.find(request);
    if (found != state.requests.end() && found->second.kind == kind) {
        target = {found->second.callback, found->second.user};
    } else if (withUser) {
        const auto latest = state.latestCallback.find(kind);
        if (latest != state.latestCallback.end()) target.callback = latest->second;
    }
    if (withUser) target.user = user;
    return target;
}

template <class Callback, class... Args>
int Fire(unsigned long request, CallbackKind kind, int withUser, unsigned long user,
         int* result, Args... args) {
    const Target target = TargetFor(request, kind, withUser, user);
    if (!target.callback) return 0;
    const int answer = reinterpret_cast<Callback>(target.callback)(request, args..., target.user);
    if (result) *result = answer;
    return 1;
}

}  // namespace

extern "C" {

int fake_call_count(void) { return static_cast<int>(TheState().log.size()); }

const char* fake_call_name(int call) {
    const qvnfake::Call* found = CallAt(call);
    return found ? found->entry.c_str() : nullptr;
}

int fake_call_has_result(int call) {
    const qvnfake::Call* found = CallAt(call);
    return found && found->hasResult ? 1 : 0;
}

long long fake_call_result(int call) {
    const qvnfake::Call* found = CallAt(call);
    return found ? found->result : 0;
}

int fake_call_arg_count(int call) {
    const qvnfake::Call* found = CallAt(call);
    return found ? static_cast<int>(found->args.size()) : 0;
}

const char* fake_call_arg_name(int call, int arg) {
    const qvnfake::Arg* found = ArgAt(call, arg);
    return found ? found->name.c_str() : nullptr;
}

int fake_call_arg_kind(int call, int arg) {
    const qvnfake::Arg* found = ArgAt(call, arg);
    return found ? found->kind : FAKE_ARG_NONE;
}

unsigned long long fake_call_arg_number(int call, int arg) {
    const qvnfake::Arg* found = ArgAt(call, arg);
    return found ? found->number : 0;
}

const char* fake_call_arg_bytes(int call, int arg, size_t* length) {
    const qvnfake::Arg* found = ArgAt(call, arg);
    const bool hasBytes = found && found->kind == FAKE_ARG_BYTES;
    if (length) *length = hasBytes ? found->bytes.size() : 0;
    return hasBytes ? found->bytes.data() : nullptr;
}

void fake_clear_log(void) { TheState().log.clear(); }

void fake_set_result(const char* entry, long long result) {
    if (entry) TheState().results[entry].always = result;
}

void fake_push_result(const char* entry, long long result) {
    if (entry) TheState().results[entry].once.push_back(result);
}

void fake_clear_result(const char* entry) {
    if (entry) TheState().results.erase(entry);
}

void fake_set_next_handle(unsigned long handle) { TheState().nextHandle = handle; }

void fake_set_property_long(int property, long value) { TheState().propertyLong[property] = value; }

void fake_set_property_string(int property, const char* text) {
    TheState().propertyString[property] = text ? text : "";
}

void fake_set_exchange_long(long exchange, int field, long value, long error) {
    TheState().exchangeLong[{exchange, field}] = {value, {}, error};
}

void fake_set_exchange_string(long exchange, int field, const char* text, long error) {
    TheState().exchangeString[{exchange, field}] = {0, text ? text : "", error};
}

void fake_set_news_source(int source, int what, const char* text) {
    TheState().newsSources[{source, what}] = text ? text : "";
}

void fake_set_hook(const char* entry, fake_hook_fn fn, void* context, fake_release_fn release) {
    if (!entry) {
        if (release) release(context);
        return;
    }
    auto& hooks = TheState().hooks;
    if (!fn) {
        hooks.erase(entry);
        if (release) release(context);
        return;
    }
    auto closure = std::make_shared<Closure>();
    closure->hook = fn;
    closure->release = release;
    closure->context = context;
    hooks[entry] = std::move(closure);
}

int fake_has_network_callback(void) { return TheState().network ? 1 : 0; }

const char* fake_handle_entry(unsigned long handle) {
    const auto& requests = TheState().requests;
    const auto found = requests.find(handle);
    return found == requests.end() ? nullptr : found->second.entry.c_str();
}

unsigned long fake_handle_user(unsigned long handle) {
    const auto& requests = TheState().requests;
    const auto found = requests.find(handle);
    return found == requests.end() ? 0 : found->second.user;
}

int fake_handle_open(unsigned long handle) {
    const auto& requests = TheState().requests;
    const auto found = requests.find(handle);
    return found != requests.end() && found->second.open ? 1 : 0;
}

int fake_fire_network(int event, void* data) {
    const NetworkCallback callback = TheState().network;
    if (!callback) return 0;
    callback(event, data);
    return 1;
}

int fake_fire_security(unsigned long request, int status, int field, int dataType, void* data,
                       int withUser, unsigned long user, int* result) {
    return Fire<SecurityCallback>(request, CallbackKind::kSecurity, withUser, user, result, status,
                                  field, dataType, data);
}

int fake_fire_eod(unsigned long request, int count, int flags, RTPRICEREC* records, int withUser,
                  unsigned long user, int* result) {
    return Fire<EodCallback>(request, CallbackKind::kEod, withUser, user, result, count, flags,
                             records);
}

int fake_fire_tick(unsigned long request, int count, int live, int type, void* data,
                   int withUser, unsigned long user, int* result) {
    return Fire<TickCallback>(request, CallbackKind::kTick, withUser, user, result, count, live,
                              type, data);
}

int fake_fire_session(unsigned long request, int status, SESSION_INFO* rules, void* holidays,
                      int withUser, unsigned long user, int* result) {
    return Fire<SessionCallback>(request, CallbackKind::kSession, withUser, user, result, status,
                                 rules, holidays);
}

int fake_fire_headline(unsigned long request, int count, unsigned long articleID,
                       char* headline, unsigned char sourceId, char* sourceName, long dateTime,
                       int history, int withUser, unsigned long user, int* result) {
    return Fire<HeadlineCallback>(request, CallbackKind::kHeadline, withUser, user, result,
                                  count, articleID, headline, sourceId, sourceName, dateTime,
                                  history);
}

int fake_fire_story(unsigned long request, int status, unsigned long articleID, char* story,
                    int withUser, unsigned long user, int* result) {
    return Fire<StoryCallback>(request, CallbackKind::kStory, withUser, user, result, status,
                               articleID, story);
}

void fake_queue(void (*run)(void* context), fake_release_fn release, void* context) {
    auto closure = std::make_shared<Closure>();
    closure->run = run;
    closure->release = release;
    closure->context = context;
    TheState().queue.push_back(std::move(closure));
    qvnfake::Signal();
}

int fake_pending(void) { return static_cast<int>(TheState().queue.size()); }

int fake_dispatch_count(void) { return TheState().dispatchCount; }

int fake_poll_fd(void) { return qvnfake::PollFd(); }

void fake_reset(void) { qvnfake::Reset(); }

}  // extern "C"
