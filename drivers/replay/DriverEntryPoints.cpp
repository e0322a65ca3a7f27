// The driver contract's entry points and the replay's control calls. Each forwards to the
// one Replay; none calls back: callbacks come from clientDispatch alone. What a data
// directory cannot hold (ranked lists, symbol lists, news) is refused with handle 0.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

#include <qvnrt/driver.h>

#include "Replay.h"
#include "qvnreplay.h"

namespace {

using qvnreplay::Replay;

int CopyText(const char* text, char* buffer, long length) {
    if (buffer == nullptr || length <= 0 || text == nullptr) return 0;
    const size_t copied = std::min(std::strlen(text), static_cast<size_t>(length - 1));
    std::memcpy(buffer, text, copied);
    buffer[copied] = '\0';
    return static_cast<int>(copied);
}

void SetError(long* error, long value) {
    if (error != nullptr) *error = value;
}

constexpr long kNoSuchValue = -4;

}  // namespace

extern "C" {

long clientOpenServer(const char* /*firstText*/, const char* /*secondText*/,
                      NetworkCallback callback, unsigned long /*connectBuffer*/,
                      unsigned long /*connectNumber*/, unsigned long /*changeStamp*/,
                      int /*rights*/, int /*connectMode*/) {
    return Replay::Instance().Open(callback);
}

void clientCloseServer(void) {
    Replay::Instance().Close();
}

long clientGetPropertyLong(RTProperties property, long /*argument*/) {
    return static_cast<int>(property) == RTPROP_NEWS_WHOLE_SYMBOL_LIST ? 1 : 0;
}

// 1: the driver's name, 2: its version, 3: the data directory.
int clientGetPropertyString(int property, char* buffer, int length, char* /*extra*/) {
    switch (property) {
        case 1:
            return CopyText("Quorvane replay of a data directory", buffer, length);
        case 2:
            return CopyText("1.0", buffer, length);
        case 3:
            return CopyText(Replay::Instance().Config().dataDir.c_str(), buffer, length);
        default:
            return 0;
    }
}

// Two shapes, told apart by the field number (see driver.h).
void* clientGetExchangeLong(long exchange, int field, long* error) {
    const qvnreplay::Listing& listing = Replay::Instance().listing();
    if (field >= RTEXFIELD_INDEX && field <= RTEXFIELD_CURRENCY) {
        const qvnreplay::ListedExchange* e = listing.FindExchange(exchange);
        long value = 0;
        bool found = e != nullptr;
        if (found) {
            switch (field) {
                case RTEXFIELD_INDEX: value = e->number; break;
                case RTEXFIELD_START_HOUR: value = e->openHour; break;
                case RTEXFIELD_START_MIN: value = e->openMinute; break;
                case RTEXFIELD_CLOSE_HOUR: value = e->closeHour; break;
                case RTEXFIELD_CLOSE_MIN: value = e->closeMinute; break;
                default: found = false; break;  // a text field
            }
        }
        SetError(error, found ? 0 : kNoSuchValue);
        return reinterpret_cast<void*>(static_cast<intptr_t>(value));
    }
    const long defaultValue = reinterpret_cast<long>(error);
    const qvnreplay::ListedExchange* e = listing.FindExchange(static_cast<int>(exchange));
    long value = defaultValue;
    if (e != nullptr && field == RTEXPROP_ZONE) value = e->zone;
    if (e != nullptr && field == RTEXPROP_DELAY) value = e->delayMinutes;
    return reinterpret_cast<void*>(static_cast<intptr_t>(value));
}

unsigned short clientGetExchangeString(long exchange, int field, char* buffer,
                                       unsigned short length, long* error) {
    const qvnreplay::Listing& listing = Replay::Instance().listing();
    if (field >= RTEXFIELD_INDEX && field <= RTEXFIELD_CURRENCY) {
        const qvnreplay::ListedExchange* e = listing.FindExchange(exchange);
        const std::string* text = nullptr;
        if (e != nullptr) {
            switch (field) {
                case RTEXFIELD_SUFFIX: text = &e->suffix; break;
                case RTEXFIELD_SHORT_NAME: text = &e->shortName; break;
                case RTEXFIELD_LONG_NAME: text = &e->longName; break;
                case RTEXFIELD_CURRENCY: text = &e->currency; break;
                default: break;  // a number
            }
        }
        SetError(error, text != nullptr ? 0 : kNoSuchValue);
        if (text == nullptr) {
            if (buffer != nullptr && length > 0) buffer[0] = '\0';
            return 0;
        }
        return static_cast<unsigned short>(CopyText(text->c_str(), buffer, length));
    }
    const char* defaultText = reinterpret_cast<const char*>(error);
    const qvnreplay::ListedExchange* e = listing.FindExchange(static_cast<int>(exchange));
    const char* text = e != nullptr && field == RTEXPROP_NAME ? e->longName.c_str() : defaultText;
    return static_cast<unsigned short>(CopyText(text, buffer, length));
}

unsigned long clientReqSecurities(const char* symbols, int /*assetType*/, const char* fields,
                                  SecurityCallback callback, unsigned long user, int streaming,
                                  int count, ServiceLimit /*limit*/) {
    return Replay::Instance().RequestQuotes(symbols, fields, callback, user, streaming != 0, count);
}

unsigned long clientReqRankedList(int, int, int, SecurityCallback, unsigned long, ServiceLimit) {
    return 0;
}

unsigned long clientReqSecurityList(char*, int, unsigned char*, RTSec_OptionFilter*,
                                    SecurityCallback, unsigned long, int, ServiceLimit) {
    return 0;
}

void clientCloseEvent(unsigned long request) {
    Replay::Instance().CloseRequest(request);
}

int clientModifySecurity(unsigned long request, char* fields) {
    return Replay::Instance().Modify(request, fields);
}

int clientChangeEvent(void* /*event*/, unsigned long /*value*/) {
    return 0;
}

// A plugin has no window; its preferences are its settings, shown on standard error.
void DisplayPreferencesDialog(void* /*parentWindow*/) {
    const qvnreplay::ReplayConfig& config = Replay::Instance().Config();
    std::fprintf(stderr, "qvnreplay: data directory %s, speed %g, packets of %d records\n",
                 config.dataDir.c_str(), config.speed, config.packetRecords);
}

unsigned long clientReqEodRecords(const char* symbol, int /*assetType*/, EODDATA* request,
                                  EodCallback callback, unsigned long user, int /*streaming*/,
                                  ServiceLimit /*limit*/) {
    return Replay::Instance().RequestEod(symbol, request, callback, user);
}

unsigned long clientReqTickBars(const char* symbol, int /*assetType*/, TICKDATA* request,
                                TickCallback callback, unsigned long user, ServiceLimit /*limit*/) {
    return Replay::Instance().RequestHistory(symbol, request, callback, user);
}

unsigned long clientReqNewsStory(unsigned long, unsigned char, StoryCallback, unsigned long,
                                 ServiceLimit) {
    return 0;
}

unsigned long clientReqNewsHeadlines(char*, int, int, int, int, unsigned char*, int, long, long,
                                     HeadlineCallback, unsigned long, int, ServiceLimit) {
    return 0;
}

int clientGetNewsSource(int /*source*/, int /*what*/, char* buffer, int length) {
    if (buffer != nullptr && length > 0) buffer[0] = '\0';
    return 0;
}

unsigned long clientReqSessionInfo(char* symbol, int /*assetType*/, SessionCallback callback,
                                   unsigned long user) {
    return Replay::Instance().RequestSessions(symbol, callback, user);
}

int clientGetPollFd(void) {
    return Replay::Instance().PollFd();
}

void clientDispatch(void) {
    Replay::Instance().Dispatch();
}

int qvnreplay_Configure(const char* settings) {
    return Replay::Instance().Configure(settings) ? 1 : 0;
}

long qvnreplay_Now(void) {
    return static_cast<long>(Replay::Instance().Now());
}

}  // extern "C"
