/*
 * fixed_quotes: a driver plugin that answers every quote request with a fixed price made
 * from the symbol's letters. It shows the least a driver must do:
 *
 * - export every entry point of <qvnrt/driver.h> (those it does not serve answer "no
 *   request": a handle of 0);
 * - never call back from inside a request: the library stores the returned handle only
 *   after clientReqSecurities returns, and drops callbacks with an unknown handle;
 * - use the dispatch extension (clientGetPollFd, clientDispatch), so that every callback
 *   is made on the thread of the library's main loop.
 *
 * It keeps no thread of its own: an eventfd becomes readable when replies are due.
 */
#include <qvnrt/driver.h>

#include <stdint.h>
#include <string.h>
#include <sys/eventfd.h>
#include <unistd.h>

#define MAX_PENDING 64

typedef struct Pending {
    unsigned long handle; /* 0: free slot */
    SecurityCallback callback;
    unsigned long user;
    char symbol[32];
} Pending;

/* For connection events; a real driver raises event 1 when its service goes away. */
static NetworkCallback s_network;
static int s_wakeFd = -1;
static unsigned long s_nextHandle = 1;
static Pending s_pending[MAX_PENDING];

static void Wake(void) {
    uint64_t one = 1;
    if (write(s_wakeFd, &one, sizeof one) < 0) { /* already readable: nothing lost */ }
}

/* The same symbol always gets the same price. */
static double PriceOf(const char* symbol) {
    unsigned sum = 0;
    for (const char* c = symbol; *c; ++c) sum = sum * 31u + (unsigned char)*c;
    return 10.0 + (double)(sum % 99000u) / 100.0;
}

QVN_DRIVER_EXPORT long clientOpenServer(const char* firstText, const char* secondText,
                                        NetworkCallback callback, unsigned long connectBuffer,
                                        unsigned long connectNumber, unsigned long changeStamp,
                                        int rights, int connectMode) {
    (void)firstText; (void)secondText; (void)connectBuffer; (void)connectNumber;
    (void)changeStamp; (void)rights; (void)connectMode;
    if (clientGetPollFd() < 0) return RTOPEN_REFUSED;
    s_network = callback;
    return RTOPEN_REMOTE;
}

/* The descriptor lives as long as the driver is loaded: the library stops watching it just
 * before it unloads the driver, so it is closed on unload rather than in clientCloseServer. */
__attribute__((destructor)) static void CloseWakeFd(void) {
    if (s_wakeFd >= 0) close(s_wakeFd);
    s_wakeFd = -1;
}

QVN_DRIVER_EXPORT void clientCloseServer(void) {
    memset(s_pending, 0, sizeof s_pending);
    s_network = NULL;
}

/* The library asks for the descriptor once, as soon as the driver is loaded and before
 * clientOpenServer, and watches it until the driver is unloaded. */
QVN_DRIVER_EXPORT int clientGetPollFd(void) {
    if (s_wakeFd < 0) s_wakeFd = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    return s_wakeFd;
}

/* Called by the library when the descriptor is readable: the only place that calls back. */
QVN_DRIVER_EXPORT void clientDispatch(void) {
    uint64_t count;
    if (read(s_wakeFd, &count, sizeof count) < 0) return;
    for (int i = 0; i < MAX_PENDING; ++i) {
        Pending request = s_pending[i];
        if (request.handle == 0) continue;
        s_pending[i].handle = 0; /* one batch per request; a callback may open another */
        double last = PriceOf(request.symbol);
        request.callback(request.handle, 0, RTFIELD_SYMBOL, RTDATA_TEXT, request.symbol,
                         request.user);
        request.callback(request.handle, 0, RTFIELD_LAST, RTDATA_DOUBLE, &last, request.user);
        request.callback(request.handle, 0, RTFIELD_END, RTDATA_INT, NULL, request.user);
    }
}

QVN_DRIVER_EXPORT unsigned long clientReqSecurities(const char* symbols, int assetType,
                                                    const char* fields,
                                                    SecurityCallback callback,
                                                    unsigned long user, int streaming,
                                                    int count, ServiceLimit limit) {
    (void)assetType; (void)fields; (void)streaming; (void)limit;
    if (!symbols || !callback || count <= 0 || s_wakeFd < 0) return 0;
    const unsigned long first = s_nextHandle;
    /* Each symbol is answered under the returned handle plus its index. */
    const char* symbol = symbols;
    for (int index = 0; index < count; ++index, symbol += strlen(symbol) + 1) {
        int slot = 0;
        while (slot < MAX_PENDING && s_pending[slot].handle != 0) ++slot;
        if (slot == MAX_PENDING) return 0; /* busy: no request started */
        Pending* request = &s_pending[slot];
        request->handle = first + (unsigned long)index;
        request->callback = callback;
        request->user = user;
        /* A mapped symbol comes as two names on two lines; the first is this service's. */
        size_t length = strcspn(symbol, "\n");
        if (length >= sizeof request->symbol) length = sizeof request->symbol - 1;
        memcpy(request->symbol, symbol, length);
        request->symbol[length] = '\0';
    }
    s_nextHandle = first + (unsigned long)count;
    Wake();
    return first;
}

QVN_DRIVER_EXPORT void clientCloseEvent(unsigned long request) {
    for (int i = 0; i < MAX_PENDING; ++i) {
        if (s_pending[i].handle == request) s_pending[i].handle = 0;
    }
}

/* ---- What this driver does not serve ---------------------------------------------------- */

QVN_DRIVER_EXPORT long clientGetPropertyLong(RTProperties property, long argument) {
    (void)property; (void)argument;
    return 0;
}

QVN_DRIVER_EXPORT int clientGetPropertyString(int property, char* buffer, int length,
                                              char* extra) {
    (void)property; (void)extra;
    if (buffer && length > 0) buffer[0] = '\0';
    return 0;
}

QVN_DRIVER_EXPORT void* clientGetExchangeLong(long exchange, int field, long* error) {
    (void)exchange;
    /* In the plain shape (field below 500) the third argument is a default value. */
    if (field >= RTEXFIELD_INDEX) {
        if (error) *error = -4;
        return NULL;
    }
    return (void*)error;
}

QVN_DRIVER_EXPORT unsigned short clientGetExchangeString(long exchange, int field,
                                                         char* buffer, unsigned short length,
                                                         long* error) {
    (void)exchange;
    if (buffer && length > 0) buffer[0] = '\0';
    if (field >= RTEXFIELD_INDEX && error) *error = -4;
    return 0;
}

QVN_DRIVER_EXPORT unsigned long clientReqRankedList(int list, int selector1, int selector2,
                                                    SecurityCallback callback,
                                                    unsigned long user, ServiceLimit limit) {
    (void)list; (void)selector1; (void)selector2; (void)callback; (void)user; (void)limit;
    return 0;
}

QVN_DRIVER_EXPORT unsigned long clientReqSecurityList(char* symbol, int assetType,
                                                      unsigned char* fields,
                                                      RTSec_OptionFilter* filter,
                                                      SecurityCallback callback,
                                                      unsigned long user, int always1,
                                                      ServiceLimit limit) {
    (void)symbol; (void)assetType; (void)fields; (void)filter; (void)callback; (void)user;
    (void)always1; (void)limit;
    return 0;
}

QVN_DRIVER_EXPORT int clientModifySecurity(unsigned long request, char* fields) {
    (void)request; (void)fields;
    return 0;
}

QVN_DRIVER_EXPORT int clientChangeEvent(void* event, unsigned long value) {
    (void)event; (void)value;
    return 0;
}

QVN_DRIVER_EXPORT void DisplayPreferencesDialog(void* parentWindow) { (void)parentWindow; }

QVN_DRIVER_EXPORT unsigned long clientReqEodRecords(const char* symbol, int assetType,
                                                    EODDATA* request, EodCallback callback,
                                                    unsigned long user, int streaming,
                                                    ServiceLimit limit) {
    (void)symbol; (void)assetType; (void)request; (void)callback; (void)user;
    (void)streaming; (void)limit;
    return 0;
}

QVN_DRIVER_EXPORT unsigned long clientReqTickBars(const char* symbol, int assetType,
                                                  TICKDATA* request, TickCallback callback,
                                                  unsigned long user, ServiceLimit limit) {
    (void)symbol; (void)assetType; (void)request; (void)callback; (void)user; (void)limit;
    return 0;
}

QVN_DRIVER_EXPORT unsigned long clientReqNewsStory(unsigned long storyKey, unsigned char source,
                                                   StoryCallback callback, unsigned long user,
                                                   ServiceLimit limit) {
    (void)storyKey; (void)source; (void)callback; (void)user; (void)limit;
    return 0;
}

QVN_DRIVER_EXPORT unsigned long clientReqNewsHeadlines(char* searchText, int byKeyword,
                                                       int caseSensitive, int wholeWords,
                                                       int maxHeadlines, unsigned char* sources,
                                                       int sourceCount, long startTime,
                                                       long endTime, HeadlineCallback callback,
                                                       unsigned long user, int live,
                                                       ServiceLimit limit) {
    (void)searchText; (void)byKeyword; (void)caseSensitive; (void)wholeWords;
    (void)maxHeadlines; (void)sources; (void)sourceCount; (void)startTime; (void)endTime;
    (void)callback; (void)user; (void)live; (void)limit;
    return 0;
}

QVN_DRIVER_EXPORT int clientGetNewsSource(int source, int what, char* buffer, int length) {
    (void)source; (void)what;
    if (buffer && length > 0) buffer[0] = '\0';
    return 0;
}

QVN_DRIVER_EXPORT unsigned long clientReqSessionInfo(char* symbol, int assetType,
                                                     SessionCallback callback,
                                                     unsigned long user) {
    (void)symbol; (void)assetType; (void)callback; (void)user;
    return 0;
}
