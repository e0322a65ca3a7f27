// The driver's entry points. Each one records its call, answers as scripted (or with a
// default that lets a library connect and request), and keeps the callbacks it is given.
//
// Variants are built from this file by compile definitions:
//   FAKE_NO_DISPLAY   leaves out DisplayPreferencesDialog
//   FAKE_NO_CHANGE    leaves out clientChangeEvent
//   FAKE_DISPATCH     adds clientGetPollFd and clientDispatch
#include <qvnrt/driver.h>

#include "FakeState.h"

using qvnfake::CallbackKind;
using qvnfake::Recorder;
using qvnfake::StartRequest;
using qvnfake::TakeScriptedResult;
using qvnfake::TheState;

namespace {

constexpr int kFirstExchangeField = RTEXFIELD_INDEX;
constexpr int kLastExchangeField = RTEXFIELD_CURRENCY;

bool IsExchangeField(int field) {
    return field >= kFirstExchangeField && field <= kLastExchangeField;
}

long long ResultOr(const char* entry, long long fallback) {
    const std::optional<long long> scripted = TakeScriptedResult(entry);
    return scripted ? *scripted : fallback;
}

}  // namespace

long clientOpenServer(const char* firstText, const char* secondText, NetworkCallback callback,
                      unsigned long connectBuffer, unsigned long connectNumber,
                      unsigned long changeStamp, int rights, int connectMode) {
    Recorder call("clientOpenServer");
    call.text("firstText", firstText)
        .text("secondText", secondText)
        .function("callback", callback)
        .unsignedNumber("connectBuffer", connectBuffer)
        .unsignedNumber("connectNumber", connectNumber)
        .unsignedNumber("changeStamp", changeStamp)
        .number("rights", rights)
        .number("connectMode", connectMode);
    if (callback) TheState().network = callback;
    return static_cast<long>(call.finish(ResultOr("clientOpenServer", RTOPEN_REMOTE)));
}

void clientCloseServer(void) { Recorder("clientCloseServer").finish(); }

long clientGetPropertyLong(RTProperties property, long argument) {
    Recorder call("clientGetPropertyLong");
    call.number("property", property).number("argument", argument);
    const auto& properties = TheState().propertyLong;
    const auto found = properties.find(property);
    const long fallback = found == properties.end() ? 0 : found->second;
    return static_cast<long>(call.finish(ResultOr("clientGetPropertyLong", fallback)));
}

int clientGetPropertyString(int property, char* buffer, int length, char* extra) {
    Recorder call("clientGetPropertyString");
    call.number("property", property)
        .pointer("buffer", buffer)
        .number("length", length)
        .pointer("extra", extra);
    const auto& properties = TheState().propertyString;
    const auto found = properties.find(property);
    const int copied =
        found == properties.end() ? 0 : qvnfake::CopyOut(found->second, buffer, length);
    return static_cast<int>(call.finish(ResultOr("clientGetPropertyString", copied)));
}

// Called in two shapes (see driver.h); the field number tells which. In the plain shape only
// the low 32 bits of `exchange` were set, and `error` carries the default value.
void* clientGetExchangeLong(long exchange, int field, long* error) {
    Recorder call("clientGetExchangeLong");
    const auto& answers = TheState().exchangeLong;
    if (IsExchangeField(field)) {
        call.number("exchange", exchange).number("field", field).pointer("error", error);
        const auto found = answers.find({exchange, field});
        const long value = found == answers.end() ? 0 : found->second.value;
        if (error) *error = found == answers.end() ? -4 : found->second.error;
        const long long result = call.finish(ResultOr("clientGetExchangeLong", value));
        return reinterpret_cast<void*>(static_cast<intptr_t>(result));
    }
    const int plainExchange = static_cast<int>(exchange);
    const long defaultValue = static_cast<long>(reinterpret_cast<intptr_t>(error));
    call.number("exchange", plainExchange).number("property", field).number("defaultValue",
                                                                             defaultValue);
    const auto found = answers.find({plainExchange, field});
    const long value = found == answers.end() ? defaultValue : found->second.value;
    const long long result = call.finish(ResultOr("clientGetExchangeLong", value));
    return reinterpret_cast<void*>(static_cast<intptr_t>(result));
}

// clientGetExchangeString's plain shape returns an int, its field-access shape an unsigned
// short. The code below returns a whole int, and the exported name is an alias of it, so
// that a caller of the plain shape never reads stray upper bits.
extern "C" int FakeGetExchangeString(long exchange, int field, char* buffer, int length,
                                     void* last) {
    Recorder call("clientGetExchangeString");
    const auto& answers = TheState().exchangeString;
    if (IsExchangeField(field)) {
        const int shortLength = length & 0xFFFF;  // an unsigned short in this shape
        long* error = static_cast<long*>(last);
        call.number("exchange", exchange)
            .number("field", field)
            .pointer("buffer", buffer)
            .number("length", shortLength)
            .pointer("error", error);
        const auto found = answers.find({exchange, field});
        int copied = 0;
        if (found == answers.end()) {
            qvnfake::CopyOut(std::string(), buffer, shortLength);
            if (error) *error = -4;
        } else {
            copied = qvnfake::CopyOut(found->second.text, buffer, shortLength);
            if (error) *error = found->second.error;
        }
        return static_cast<int>(call.finish(ResultOr("clientGetExchangeString", copied)));
    }
    const int plainExchange = static_cast<int>(exchange);
    const char* defaultText = static_cast<const char*>(last);
    call.number("exchange", plainExchange)
        .number("property", field)
        .pointer("buffer", buffer)
        .number("length", length)
        .text("defaultText", defaultText);
    const auto found = answers.find({plainExchange, field});
    const std::string text = found != answers.end() ? found->second.text
                             : defaultText          ? std::string(defaultText)
                                                    : std::string();
    const int copied = qvnfake::CopyOut(text, buffer, length);
    return static_cast<int>(call.finish(ResultOr("clientGetExchangeString", copied)));
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wattribute-alias"
unsigned short clientGetExchangeString(long exchange, int field, char* buffer,
                                       unsigned short length, long* error)
    __attribute__((alias("FakeGetExchangeString")));
#pragma GCC diagnostic pop

unsigned long clientReqSecurities(const char* symbols, int assetType, const char* fields,
                                  SecurityCallback callback, unsigned long user, int streaming,
                                  int count, ServiceLimit limit) {
    Recorder call("clientReqSecurities");
    call.symbolRun("symbols", symbols, count)
        .number("assetType", assetType)
        .text("fields", fields)
        .function("callback", callback)
        .unsignedNumber("user", user)
        .number("streaming", streaming)
        .number("count", count)
        .number("limit", limit);
    // Each symbol is answered under its own handle: the returned one plus its index.
    const unsigned long span = count > 0 ? static_cast<unsigned long>(count) : 1;
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqSecurities", CallbackKind::kSecurity, reinterpret_cast<void*>(callback), user,
        span)));
}

unsigned long clientReqRankedList(int list, int selector1, int selector2,
                                  SecurityCallback callback, unsigned long user,
                                  ServiceLimit limit) {
    Recorder call("clientReqRankedList");
    call.number("list", list)
        .number("selector1", selector1)
        .number("selector2", selector2)
        .function("callback", callback)
        .unsignedNumber("user", user)
        .number("limit", limit);
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqRankedList", CallbackKind::kSecurity, reinterpret_cast<void*>(callback), user,
        1)));
}

unsigned long clientReqSecurityList(char* symbol, int assetType, unsigned char* fields,
                                    RTSec_OptionFilter* filter, SecurityCallback callback,
                                    unsigned long user, int always1, ServiceLimit limit) {
    Recorder call("clientReqSecurityList");
    call.text("symbol", symbol)
        .number("assetType", assetType)
        .text("fields", fields)
        .pointer("filter", filter)
        .function("callback", callback)
        .unsignedNumber("user", user)
        .number("always1", always1)
        .number("limit", limit);
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqSecurityList", CallbackKind::kSecurity, reinterpret_cast<void*>(callback),
        user, 1)));
}

void clientCloseEvent(unsigned long request) {
    Recorder call("clientCloseEvent");
    call.unsignedNumber("request", request);
    auto& requests = TheState().requests;
    const auto found = requests.find(request);
    if (found != requests.end()) found->second.open = false;
    call.finish();
}

int clientModifySecurity(unsigned long request, char* fields) {
    Recorder call("clientModifySecurity");
    call.unsignedNumber("request", request).text("fields", fields);
    return static_cast<int>(call.finish(ResultOr("clientModifySecurity", 1)));
}

#ifndef FAKE_NO_CHANGE
int clientChangeEvent(void* event, unsigned long value) {
    Recorder call("clientChangeEvent");
    call.pointer("event", event).unsignedNumber("value", value);
    return static_cast<int>(call.finish(ResultOr("clientChangeEvent", 0)));
}
#endif

#ifndef FAKE_NO_DISPLAY
void DisplayPreferencesDialog(void* parentWindow) {
    Recorder call("DisplayPreferencesDialog");
    call.pointer("parentWindow", parentWindow);
    call.finish();
}
#endif

unsigned long clientReqEodRecords(const char* symbol, int assetType, EODDATA* request,
                                  EodCallback callback, unsigned long user, int streaming,
                                  ServiceLimit limit) {
    Recorder call("clientReqEodRecords");
    call.text("symbol", symbol)
        .number("assetType", assetType)
        .pointer("request", request)  // opaque to everyone but application and driver
        .function("callback", callback)
        .unsignedNumber("user", user)
        .number("streaming", streaming)
        .number("limit", limit);
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqEodRecords", CallbackKind::kEod, reinterpret_cast<void*>(callback), user, 1)));
}

unsigned long clientReqTickBars(const char* symbol, int assetType, TICKDATA* request,
                                TickCallback callback, unsigned long user, ServiceLimit limit) {
    Recorder call("clientReqTickBars");
    call.text("symbol", symbol)
        .number("assetType", assetType)
        .bytes("request", request, sizeof(TICKDATA))  // by value: the caller reuses it
        .pointer("requestAddress", request)
        .function("callback", callback)
        .unsignedNumber("user", user)
        .number("limit", limit);
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqTickBars", CallbackKind::kTick, reinterpret_cast<void*>(callback), user, 1)));
}

unsigned long clientReqNewsStory(unsigned long storyKey, unsigned char source,
                                 StoryCallback callback, unsigned long user, ServiceLimit limit) {
    Recorder call("clientReqNewsStory");
    call.unsignedNumber("storyKey", storyKey)
        .unsignedNumber("source", source)
        .function("callback", callback)
        .unsignedNumber("user", user)
        .number("limit", limit);
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqNewsStory", CallbackKind::kStory, reinterpret_cast<void*>(callback), user, 1)));
}

unsigned long clientReqNewsHeadlines(char* searchText, int byKeyword, int caseSensitive,
                                     int wholeWords, int maxHeadlines, unsigned char* sources,
                                     int sourceCount, long startTime, long endTime,
                                     HeadlineCallback callback, unsigned long user, int live,
                                     ServiceLimit limit) {
    Recorder call("clientReqNewsHeadlines");
    call.text("searchText", searchText)
        .number("byKeyword", byKeyword)
        .number("caseSensitive", caseSensitive)
        .number("wholeWords", wholeWords)
        .number("maxHeadlines", maxHeadlines)
        .bytes("sources", sources, sourceCount > 0 ? static_cast<size_t>(sourceCount) : 0)
        .number("sourceCount", sourceCount)
        .number("startTime", startTime)
        .number("endTime", endTime)
        .function("callback", callback)
        .unsignedNumber("user", user)
        .number("live", live)
        .number("limit", limit);
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqNewsHeadlines", CallbackKind::kHeadline, reinterpret_cast<void*>(callback),
        user, 1)));
}

int clientGetNewsSource(int source, int what, char* buffer, int length) {
    Recorder call("clientGetNewsSource");
    call.number("source", source).number("what", what).pointer("buffer", buffer).number(
        "length", length);
    const auto& sources = TheState().newsSources;
    const auto found = sources.find({source, what});
    const int copied = found == sources.end() ? 0 : qvnfake::CopyOut(found->second, buffer, length);
    return static_cast<int>(call.finish(ResultOr("clientGetNewsSource", copied)));
}

unsigned long clientReqSessionInfo(char* symbol, int assetType, SessionCallback callback,
                                   unsigned long user) {
    Recorder call("clientReqSessionInfo");
    call.text("symbol", symbol)
        .number("assetType", assetType)
        .function("callback", callback)
        .unsignedNumber("user", user);
    return static_cast<unsigned long>(call.finish(StartRequest(
        "clientReqSessionInfo", CallbackKind::kSession, reinterpret_cast<void*>(callback), user,
        1)));
}

#ifdef FAKE_DISPATCH
int clientGetPollFd(void) {
    Recorder call("clientGetPollFd");
    return static_cast<int>(call.finish(ResultOr("clientGetPollFd", qvnfake::PollFd())));
}

void clientDispatch(void) {
    Recorder("clientDispatch").finish();
    qvnfake::Dispatch();
}
#endif
