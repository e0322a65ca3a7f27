// The fake driver's memory: what was called, what to answer, and whom to call back.
// Everything lives in one process-wide object of the shared library; it starts no thread.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "FakeDriverApi.h"

namespace qvnfake {

struct Arg {
    std::string name;
    int kind = FAKE_ARG_NONE;
    uint64_t number = 0;
    std::string bytes;
};

struct Call {
    std::string entry;
    std::vector<Arg> args;
    bool hasResult = false;
    long long result = 0;
};

// The kinds of callback a request can carry; a fire function calls only its own kind.
enum class CallbackKind { kSecurity, kEod, kTick, kSession, kHeadline, kStory };

struct Request {
    std::string entry;
    CallbackKind kind;
    void* callback;
    unsigned long user;
    bool open;
};

struct ResultScript {
    std::deque<long long> once;
    std::optional<long long> always;
};

// A test's context, released once nothing can run it any more.
struct Closure {
    void (*run)(void*) = nullptr;
    fake_hook_fn hook = nullptr;
    fake_release_fn release = nullptr;
    void* context = nullptr;
    ~Closure() {
        if (release) release(context);
    }
};

struct ExchangeAnswer {
    long value = 0;
    std::string text;
    long error = 0;
};

struct State {
    std::vector<Call> log;
    std::map<std::string, ResultScript> results;
    std::map<std::string, std::shared_ptr<Closure>> hooks;
    unsigned long nextHandle = 1;
    NetworkCallback network = nullptr;
    std::map<unsigned long, Request> requests;
    std::map<CallbackKind, void*> latestCallback;
    std::map<int, long> propertyLong;
    std::map<int, std::string> propertyString;
    std::map<std::pair<long, int>, ExchangeAnswer> exchangeLong;
    std::map<std::pair<long, int>, ExchangeAnswer> exchangeString;
    std::map<std::pair<int, int>, std::string> newsSources;
    std::deque<std::shared_ptr<Closure>> queue;
    int dispatchCount = 0;
};

State& TheState();
// Clears everything. The dispatch descriptor stays open, since the library may be watching
// it, and is left unreadable.
void Reset();

// The scripted result of an entry, consuming a one-shot one; nullopt for the default.
std::optional<long long> TakeScriptedResult(const std::string& entry);

// Records the request's callback under `span` consecutive handles from `handle` and
// returns the handle: the scripted one, or the next free one by default.
unsigned long StartRequest(const char* entry, CallbackKind kind, void* callback,
                           unsigned long user, unsigned long span);

// Copies text into a caller's buffer of `length` bytes, cut to leave room for the NUL;
// returns the number of characters copied. A null buffer or no room copies nothing.
int CopyOut(const std::string& text, char* buffer, long length);

// The descriptor of the dispatch pair, made on first use; -1 on failure.
int PollFd();
void Signal();
void Dispatch();

// Builds one log entry while an entry point runs.
class Recorder {
public:
    explicit Recorder(const char* entry) { m_call.entry = entry; }

    Recorder& number(const char* name, long long value);
    Recorder& unsignedNumber(const char* name, unsigned long long value);
    Recorder& pointer(const char* name, const void* value);
    template <class Fn>
    Recorder& function(const char* name, Fn* fn) {
        return pointer(name, reinterpret_cast<const void*>(fn));
    }
    Recorder& text(const char* name, const void* text);  // bytes up to the NUL
    Recorder& bytes(const char* name, const void* data, size_t length);  // null: FAKE_ARG_NULL
    Recorder& symbolRun(const char* name, const char* symbols, int count);

    // Logs the call with its result, runs the entry's hook, and hands the result back.
    long long finish(long long result);
    void finish();

private:
    void commitAndRunHook(long long result);
    Call m_call;
};

}  // namespace qvnfake
