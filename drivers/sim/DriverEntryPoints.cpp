// The driver contract's entry points, and the simulation's control calls. Each forwards to
// the one Simulation; none of them calls back: callbacks come from clientDispatch alone.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include <qvnrt/driver.h>

#include "NewsWire.h"
#include "Simulation.h"
#include "qvnsim.h"

namespace {

using qvnsim::Simulation;

// Copies as much of `text` as fits, always terminated; the result is the length copied.
int CopyText(const char* text, char* buffer, long length) {
    if (buffer == nullptr || length <= 0 || text == nullptr) return 0;
    const size_t copied = std::min(std::strlen(text), static_cast<size_t>(length - 1));
    std::memcpy(buffer, text, copied);
    buffer[copied] = '\0';
    return static_cast<int>(copied);
}

// Field-access shape: the error word says whether the value exists.
void SetError(long* error, long value) {
    if (error != nullptr) *error = value;
}

constexpr long kNoSuchValue = -4;

// Properties of clientGetPropertyLong beyond 13.
enum SimProperty : int {
    kPropSecurityCount = 1,  // securities in the universe
    kPropNow = 2,            // simulated time, seconds since 1970
    kPropSteps = 3,          // steps taken
    kPropStepSeconds = 4,    // simulated seconds a step
};

}  // namespace

extern "C" {

long clientOpenServer(const char* /*firstText*/, const char* /*secondText*/,
                      NetworkCallback callback, unsigned long /*connectBuffer*/,
                      unsigned long /*connectNumber*/, unsigned long changeStamp, int /*rights*/,
                      int connectMode) {
    return Simulation::Instance().Open(callback, changeStamp, connectMode);
}

void clientCloseServer(void) {
    Simulation::Instance().Close();
}

long clientGetPropertyLong(RTProperties property, long /*argument*/) {
    Simulation& sim = Simulation::Instance();
    switch (static_cast<int>(property)) {
        case RTPROP_NEWS_WHOLE_SYMBOL_LIST:
            return 1;  // a symbol search goes in one request
        case kPropSecurityCount: {
            long count = 0;
            for (const qvnsim::Security& s : sim.universe().Securities()) count += s.visible;
            return count;
        }
        case kPropNow:
            return static_cast<long>(sim.Now());
        case kPropSteps:
            return sim.Steps();
        case kPropStepSeconds:
            return sim.Config().stepSeconds;
        default:
            return 0;
    }
}

// 1: the driver's name, 2: its version, 3: the settings in words.
int clientGetPropertyString(int property, char* buffer, int length, char* /*extra*/) {
    switch (property) {
        case 1:
            return CopyText("Quorvane market simulation", buffer, length);
        case 2:
            return CopyText("1.0", buffer, length);
        case 3:
            return CopyText(Simulation::Instance().Describe().c_str(), buffer, length);
        default:
            return 0;
    }
}

// Called in two shapes (see driver.h), told apart by the field number. Exchange fields
// 500 to 508 are the field-access shape: the value comes back in the pointer's bits and
// the third argument is the error word. Anything else is the plain shape: (int exchange,
// int property, long defaultValue), where only the low 32 bits of `exchange` are set.
void* clientGetExchangeLong(long exchange, int field, long* error) {
    const qvnsim::Universe& universe = Simulation::Instance().universe();
    if (field >= RTEXFIELD_INDEX && field <= RTEXFIELD_CURRENCY) {
        const qvnsim::Exchange* e = universe.FindExchange(exchange);
        long value = 0;
        bool found = e != nullptr;
        if (found) {
            switch (field) {
                case RTEXFIELD_INDEX:
                    value = e->number;
                    break;
                case RTEXFIELD_START_HOUR:
                    value = e->openHour;
                    break;
                case RTEXFIELD_START_MIN:
                    value = e->openMinute;
                    break;
                case RTEXFIELD_CLOSE_HOUR:
                    value = e->closeHour;
                    break;
                case RTEXFIELD_CLOSE_MIN:
                    value = e->closeMinute;
                    break;
                default:
                    found = false;
                    break;  // a text field
            }
        }
        SetError(error, found ? 0 : kNoSuchValue);
        return reinterpret_cast<void*>(static_cast<intptr_t>(value));
    }
    const long defaultValue = reinterpret_cast<long>(error);
    const qvnsim::Exchange* e = universe.FindExchange(static_cast<int>(exchange));
    long value = defaultValue;
    if (e != nullptr && field == RTEXPROP_ZONE) value = e->zone;
    if (e != nullptr && field == RTEXPROP_DELAY) value = e->delayMinutes;
    return reinterpret_cast<void*>(static_cast<intptr_t>(value));
}

// The same two shapes for text. Field-access: (long exchange, int field, char* buffer,
// unsigned short length, long* error). Plain: (int exchange, int property, char* buffer,
// int length, char* defaultText); a length above 65535 is read as its low 16 bits, which
// only ever shortens the copy.
unsigned short clientGetExchangeString(long exchange, int field, char* buffer,
                                       unsigned short length, long* error) {
    const qvnsim::Universe& universe = Simulation::Instance().universe();
    if (field >= RTEXFIELD_INDEX && field <= RTEXFIELD_CURRENCY) {
        const qvnsim::Exchange* e = universe.FindExchange(exchange);
        const char* text = nullptr;
        if (e != nullptr) {
            switch (field) {
                case RTEXFIELD_SUFFIX:
                    text = e->suffix;
                    break;
                case RTEXFIELD_SHORT_NAME:
                    text = e->shortName;
                    break;
                case RTEXFIELD_LONG_NAME:
                    text = e->longName;
                    break;
                case RTEXFIELD_CURRENCY:
                    text = e->currency;
                    break;
                default:
                    break;  // a number
            }
        }
        SetError(error, text != nullptr ? 0 : kNoSuchValue);
        if (text == nullptr) {
            if (buffer != nullptr && length > 0) buffer[0] = '\0';
            return 0;
        }
        return static_cast<unsigned short>(CopyText(text, buffer, length));
    }
    const char* defaultText = reinterpret_cast<const char*>(error);
    const qvnsim::Exchange* e = universe.FindExchange(static_cast<int>(exchange));
    const char* text = e != nullptr && field == RTEXPROP_NAME ? e->longName : defaultText;
    return static_cast<unsigned short>(CopyText(text, buffer, length));
}

unsigned long clientReqSecurities(const char* symbols, int /*assetType*/, const char* fields,
                                  SecurityCallback callback, unsigned long user, int streaming,
                                  int count, ServiceLimit /*limit*/) {
    return Simulation::Instance().RequestQuotes(symbols, fields, callback, user, streaming != 0,
                                                count);
}

unsigned long clientReqRankedList(int list, int selector1, int selector2, SecurityCallback callback,
                                  unsigned long user, ServiceLimit /*limit*/) {
    return Simulation::Instance().RequestRankedList(list, selector1, selector2, callback, user);
}

unsigned long clientReqSecurityList(char* symbol, int assetType, unsigned char* fields,
                                    RTSec_OptionFilter* filter, SecurityCallback callback,
                                    unsigned long user, int /*always1*/, ServiceLimit /*limit*/) {
    return Simulation::Instance().RequestSymbolList(
        symbol, assetType, fields, reinterpret_cast<const QvnSimOptionFilter*>(filter), callback,
        user);
}

void clientCloseEvent(unsigned long request) {
    Simulation::Instance().CloseRequest(request);
}

int clientModifySecurity(unsigned long request, char* fields) {
    return Simulation::Instance().Modify(request, fields);
}

int clientChangeEvent(void* /*event*/, unsigned long /*value*/) {
    return 0;
}

// A plugin has no window of its own; the preferences are the settings, so they are shown
// on standard error.
void DisplayPreferencesDialog(void* /*parentWindow*/) {
    const std::string text = Simulation::Instance().Describe();
    std::fputs(text.c_str(), stderr);
}

unsigned long clientReqEodRecords(const char* symbol, int /*assetType*/, EODDATA* request,
                                  EodCallback callback, unsigned long user, int streaming,
                                  ServiceLimit /*limit*/) {
    return Simulation::Instance().RequestEod(
        symbol, reinterpret_cast<const QvnSimEodRequest*>(request), callback, user, streaming != 0);
}

unsigned long clientReqTickBars(const char* symbol, int /*assetType*/, TICKDATA* request,
                                TickCallback callback, unsigned long user, ServiceLimit /*limit*/) {
    return Simulation::Instance().RequestTicks(symbol, request, callback, user);
}

unsigned long clientReqNewsStory(unsigned long storyKey, unsigned char /*source*/,
                                 StoryCallback callback, unsigned long user,
                                 ServiceLimit /*limit*/) {
    return Simulation::Instance().RequestStory(storyKey, callback, user);
}

unsigned long clientReqNewsHeadlines(char* searchText, int byKeyword, int caseSensitive,
                                     int wholeWords, int maxHeadlines, unsigned char* sources,
                                     int sourceCount, long startTime, long endTime,
                                     HeadlineCallback callback, unsigned long user, int live,
                                     ServiceLimit /*limit*/) {
    qvnsim::NewsQuery query;
    query.search = searchText != nullptr ? searchText : "";
    query.byKeyword = byKeyword != 0;
    query.caseSensitive = caseSensitive != 0;
    query.wholeWords = wholeWords != 0;
    query.maxHeadlines = maxHeadlines > 0 ? std::min(maxHeadlines, 500) : 50;
    if (sources != nullptr && sourceCount > 0) query.sources.assign(sources, sources + sourceCount);
    query.start = startTime;
    query.end = endTime;
    return Simulation::Instance().RequestHeadlines(query, live != 0, callback, user);
}

// what 0: the source's name, 1: its short code. Result: the length copied, 0 for a source
// the simulation does not have (1 to 3).
int clientGetNewsSource(int source, int what, char* buffer, int length) {
    const char* text = what == 0   ? qvnsim::NewsWire::SourceName(source)
                       : what == 1 ? qvnsim::NewsWire::SourceCode(source)
                                   : nullptr;
    if (text == nullptr) {
        if (buffer != nullptr && length > 0) buffer[0] = '\0';
        return 0;
    }
    return CopyText(text, buffer, length);
}

unsigned long clientReqSessionInfo(char* symbol, int /*assetType*/, SessionCallback callback,
                                   unsigned long user) {
    return Simulation::Instance().RequestSessions(symbol, callback, user);
}

int clientGetPollFd(void) {
    return Simulation::Instance().PollFd();
}

void clientDispatch(void) {
    Simulation::Instance().Dispatch();
}

int qvnsim_Configure(const char* settings) {
    return Simulation::Instance().Configure(settings) ? 1 : 0;
}

int qvnsim_RaiseEvent(int event, long argument) {
    return Simulation::Instance().RaiseEvent(event, argument) ? 1 : 0;
}

int qvnsim_SecurityChange(const char* symbol, char kind) {
    return Simulation::Instance().SecurityChange(symbol, kind) ? 1 : 0;
}

long qvnsim_Now(void) {
    return static_cast<long>(Simulation::Instance().Now());
}

long qvnsim_Steps(void) {
    return Simulation::Instance().Steps();
}

const char* qvnsim_Symbol(int index) {
    const std::vector<qvnsim::Security>& all = Simulation::Instance().universe().Securities();
    int seen = 0;
    for (const qvnsim::Security& s : all) {
        if (!s.visible) continue;
        if (seen++ == index) return s.symbol.c_str();
    }
    return nullptr;
}

}  // extern "C"
