#include "FakeState.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/eventfd.h>
#include <unistd.h>

namespace qvnfake {

namespace {

// Lives as long as the shared object, across resets.
struct EventFd {
    int fd = -1;
    ~EventFd() {
        if (fd >= 0) ::close(fd);
    }
};

EventFd g_eventFd;

void Drain() {
    if (g_eventFd.fd < 0) return;
    uint64_t ignored;
    while (::read(g_eventFd.fd, &ignored, sizeof(ignored)) < 0 && errno == EINTR) {
    }
}

}  // namespace

State& TheState() {
    static State state;
    return state;
}

void Reset() {
    // Moved out before it is dropped: a release function may call back into the fake, and
    // must find it already fresh.
    State old = std::move(TheState());
    TheState() = State();
    Drain();
}

std::optional<long long> TakeScriptedResult(const std::string& entry) {
    State& state = TheState();
    const auto script = state.results.find(entry);
    if (script == state.results.end()) return std::nullopt;
    if (!script->second.once.empty()) {
        const long long result = script->second.once.front();
        script->second.once.pop_front();
        return result;
    }
    return script->second.always;
}

unsigned long StartRequest(const char* entry, CallbackKind kind, void* callback,
                           unsigned long user, unsigned long span) {
    State& state = TheState();
    unsigned long handle;
    if (const std::optional<long long> scripted = TakeScriptedResult(entry)) {
        handle = static_cast<unsigned long>(*scripted);
    } else {
        handle = state.nextHandle;
        state.nextHandle += span;
    }
    if (callback) state.latestCallback[kind] = callback;
    if (handle != 0) {
        for (unsigned long i = 0; i < span; ++i) {
            state.requests[handle + i] = Request{entry, kind, callback, user, true};
        }
    }
    return handle;
}

int CopyOut(const std::string& text, char* buffer, long length) {
    if (!buffer || length <= 0) return 0;
    const size_t copied = std::min(text.size(), static_cast<size_t>(length - 1));
    std::memcpy(buffer, text.data(), copied);
    buffer[copied] = '\0';
    return static_cast<int>(copied);
}

int PollFd() {
    if (g_eventFd.fd < 0) g_eventFd.fd = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    return g_eventFd.fd;
}

void Signal() {
    const int fd = PollFd();
    if (fd < 0) return;
    const uint64_t one = 1;
    while (::write(fd, &one, sizeof(one)) < 0 && errno == EINTR) {
    }
}

void Dispatch() {
    State& state = TheState();
    ++state.dispatchCount;
    Drain();
    // What was queued before this call is delivered now; what its deliveries queue waits
    // for the next call, as a driver's fresh events would.
    for (size_t due = state.queue.size(); due > 0 && !state.queue.empty(); --due) {
        std::shared_ptr<Closure> next = std::move(state.queue.front());
        state.queue.pop_front();
        if (next->run) next->run(next->context);
    }
    if (!state.queue.empty()) Signal();
}

// ---- Recorder -----------------------------------------------------------------------------

Recorder& Recorder::number(const char* name, long long value) {
    m_call.args.push_back(Arg{name, FAKE_ARG_NUMBER, static_cast<uint64_t>(value), {}});
    return *this;
}

Recorder& Recorder::unsignedNumber(const char* name, unsigned long long value) {
    m_call.args.push_back(Arg{name, FAKE_ARG_NUMBER, value, {}});
    return *this;
}

Recorder& Recorder::pointer(const char* name, const void* value) {
    return unsignedNumber(name, reinterpret_cast<uintptr_t>(value));
}

Recorder& Recorder::text(const char* name, const void* text) {
    if (!text) return bytes(name, nullptr, 0);
    return bytes(name, text, std::strlen(static_cast<const char*>(text)));
}

Recorder& Recorder::bytes(const char* name, const void* data, size_t length) {
    if (!data) {
        m_call.args.push_back(Arg{name, FAKE_ARG_NULL, 0, {}});
    } else {
        m_call.args.push_back(
            Arg{name, FAKE_ARG_BYTES, 0, std::string(static_cast<const char*>(data), length)});
    }
    return *this;
}

Recorder& Recorder::symbolRun(const char* name, const char* symbols, int count) {
    if (!symbols) return bytes(name, nullptr, 0);
    // `count` symbols back to back, each with its terminator.
    size_t length = 0;
    for (int i = 0; i < count; ++i) length += std::strlen(symbols + length) + 1;
    return bytes(name, symbols, length);
}

void Recorder::commitAndRunHook(long long result) {
    const std::string entry = m_call.entry;
    State& state = TheState();
    state.log.push_back(std::move(m_call));
    const auto hook = state.hooks.find(entry);
    if (hook == state.hooks.end()) return;
    // Held for the call: the hook may replace or remove itself.
    const std::shared_ptr<Closure> running = hook->second;
    running->hook(running->context, result);
}

long long Recorder::finish(long long result) {
    m_call.hasResult = true;
    m_call.result = result;
    commitAndRunHook(result);
    return result;
}

void Recorder::finish() { commitAndRunHook(0); }

}  // namespace qvnfake
