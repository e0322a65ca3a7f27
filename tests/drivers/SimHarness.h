// Loads the simulation driver with dlopen, as the library does, binds its entry points,
// and records every callback together with whether it came from inside clientDispatch.
#pragma once

#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include <qvnrt/driver.h>

#include "drivers/sim/qvnsim.h"

namespace qvnsim::test {

enum class CallKind { kNetwork, kSecurity, kEod, kTick, kSession, kHeadline, kStory };

struct Call {
    Call(CallKind kind, bool inDispatch, unsigned long request = 0, unsigned long user = 0)
        : kind(kind), inDispatch(inDispatch), request(request), user(user) {}

    CallKind kind;
    bool inDispatch;
    unsigned long request;
    unsigned long user;
    int event = 0;   // network event
    int status = 0;  // status, or a count
    int field = 0;
    int type = 0;   // data type or record type
    int flags = 0;  // EOD flags, tick live flag, headline history flag
    bool hasData = false;
    // Text fields and texts; numbers as their bytes; records back to back.
    std::string text;
    std::vector<uint8_t> bytes;
    std::vector<uint8_t> extra;  // the holiday record of a session answer
    unsigned long articleId = 0;
    int source = 0;
    long time = 0;

    // The leading bytes as one number, 0 when too few came.
    template <typename Number>
    Number As() const {
        Number v{};
        if (bytes.size() >= sizeof v) std::memcpy(&v, bytes.data(), sizeof v);
        return v;
    }
    int32_t Int() const { return As<int32_t>(); }
    float Float() const { return As<float>(); }
    double Double() const { return As<double>(); }
    template <typename Record>
    std::vector<Record> Records() const {
        std::vector<Record> out(bytes.size() / sizeof(Record));
        if (!out.empty()) std::memcpy(out.data(), bytes.data(), out.size() * sizeof(Record));
        return out;
    }
    // Every value of the call, floats exactly: two runs compare equal by this.
    std::string Describe() const;
};

class Recorder {
public:
    Recorder();
    ~Recorder();
    static Recorder& Current();

    std::vector<Call> calls;
    bool inDispatch = false;
    // Runs after each call is recorded, inside the callback.
    std::function<void(const Call&)> onCall;

    std::vector<Call> Of(CallKind kind) const;
    std::vector<Call> ForRequest(CallKind kind, unsigned long request) const;
    std::string Transcript() const;

    static void Network(int event, void* data);
    static int Security(unsigned long request, int status, int field, int dataType, void* data,
                        unsigned long user);
    static int Eod(unsigned long request, int count, int flags, RTPRICEREC* records,
                   unsigned long user);
    static int Tick(unsigned long request, int count, int live, int type, void* data,
                    unsigned long user);
    static int Session(unsigned long request, int status, SESSION_INFO* rules, void* holidays,
                       unsigned long user);
    static int Headline(unsigned long request, int count, unsigned long articleID, char* headline,
                        unsigned char sourceId, char* sourceName, long dateTime, int history,
                        unsigned long user);
    static int Story(unsigned long request, int status, unsigned long articleID, char* story,
                     unsigned long user);

private:
    static void Record(Call call);

    Recorder* m_previous;
};

// One loaded copy of the driver. The settings go to qvnsim_Configure; the QVNSIM_*
// variables of the test's environment are cleared first, so that only they count. A process
// holds one driver, as the library does: keep one SimDriver alive at a time.
class SimDriver {
public:
    explicit SimDriver(const std::string& settings = "speed_ms=0");
    ~SimDriver();
    SimDriver(const SimDriver&) = delete;
    SimDriver& operator=(const SimDriver&) = delete;

    template <typename Function>
    Function Bind(const char* name) const {
        void* symbol = dlsym(m_handle, name);
        if (symbol == nullptr) throw std::runtime_error(std::string("missing ") + name);
        return reinterpret_cast<Function>(symbol);
    }
    bool Exports(const char* name) const { return dlsym(m_handle, name) != nullptr; }

    long Connect(int connectMode = 1, unsigned long changeStamp = 0x7fffffff);
    void Dispatch(int times = 1);

    // Requests, with the recorder's callbacks.
    unsigned long Quotes(const std::string& symbolsBackToBack, int count, const std::string& fields,
                         bool streaming, unsigned long user = 1);
    unsigned long Ticks(const char* symbol, TICKDATA request, unsigned long user = 2);
    unsigned long Eod(const char* symbol, const QvnSimEodRequest* request, bool streaming,
                      unsigned long user = 3);

    Recorder recorder;
    clientOpenServer_t open;
    clientCloseServer_t close;
    clientGetPropertyLong_t propertyLong;
    clientGetPropertyString_t propertyString;
    clientGetExchangeFieldAccess_t exchangeFieldAccess;
    clientGetExchangeLong_t exchangeLong;
    clientGetExchangeStringFieldAccess_t exchangeStringFieldAccess;
    clientGetExchangeString_t exchangeString;
    clientReqSecurities_t reqSecurities;
    clientReqRankedList_t reqRankedList;
    clientReqSecurityList_t reqSecurityList;
    clientCloseEvent_t closeEvent;
    clientModifySecurity_t modifySecurity;
    clientReqEodRecords_t reqEod;
    clientReqTickBars_t reqTicks;
    clientReqNewsStory_t reqStory;
    clientReqNewsHeadlines_t reqHeadlines;
    clientGetNewsSource_t newsSource;
    clientReqSessionInfo_t reqSessionInfo;
    clientGetPollFd_t pollFd;
    clientDispatch_t dispatch;
    int (*configure)(const char*);
    int (*raiseEvent)(int, long);
    int (*securityChange)(const char*, char);
    long (*now)();

private:
    void* m_handle;
};

// Seconds since 1970 as a Date value, and back.
inline uint32_t DateOf(int64_t unixSeconds) {
    return static_cast<uint32_t>(unixSeconds + EPOCH_1970);
}
inline int64_t UnixOf(uint32_t date) {
    return static_cast<int64_t>(date) - EPOCH_1970;
}

}  // namespace qvnsim::test
