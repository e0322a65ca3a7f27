#include "SimHarness.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace qvnsim::test {

namespace {

Recorder* g_current = nullptr;

// Every QVNSIM_ variable of the environment, so that a new setting needs no list here.
void ClearSettingVariables() {
    std::vector<std::string> names;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string variable = *entry;
        if (variable.rfind("QVNSIM_", 0) == 0) {
            names.push_back(variable.substr(0, variable.find('=')));
        }
    }
    for (const std::string& name : names) unsetenv(name.c_str());
}

std::vector<uint8_t> BytesOf(const void* data, size_t size) {
    const auto* begin = static_cast<const uint8_t*>(data);
    return std::vector<uint8_t>(begin, begin + size);
}

template <typename Value>
std::vector<uint8_t> BytesOf(const Value& value) {
    return BytesOf(&value, sizeof value);
}

}  // namespace

std::string Call::Describe() const {
    std::string out;
    char head[160];
    std::snprintf(head, sizeof head, "%d %d r%lu u%lu e%d s%d f%d t%d g%d d%d a%lu src%d tm%ld |",
                  static_cast<int>(kind), inDispatch, request, user, event, status, field, type,
                  flags, hasData, articleId, source, time);
    out += head;
    out += text;
    for (const std::vector<uint8_t>* part : {&bytes, &extra}) {
        out += '|';
        for (const uint8_t b : *part) {
            char hex[3];
            std::snprintf(hex, sizeof hex, "%02x", b);
            out += hex;
        }
    }
    return out;
}

Recorder::Recorder() : m_previous(g_current) {
    g_current = this;
}
Recorder::~Recorder() {
    g_current = m_previous;
}
Recorder& Recorder::Current() {
    return *g_current;
}

void Recorder::Record(Call call) {
    Recorder& recorder = Current();
    recorder.calls.push_back(std::move(call));
    if (recorder.onCall) recorder.onCall(recorder.calls.back());
}

std::vector<Call> Recorder::Of(CallKind kind) const {
    std::vector<Call> out;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(out),
                 [kind](const Call& call) { return call.kind == kind; });
    return out;
}

std::vector<Call> Recorder::ForRequest(CallKind kind, unsigned long request) const {
    std::vector<Call> out;
    std::copy_if(calls.begin(), calls.end(), std::back_inserter(out),
                 [&](const Call& call) { return call.kind == kind && call.request == request; });
    return out;
}

std::string Recorder::Transcript() const {
    std::string out;
    for (const Call& call : calls) out += call.Describe() + "\n";
    return out;
}

void Recorder::Network(int event, void* data) {
    Call call{CallKind::kNetwork, Current().inDispatch};
    call.event = event;
    call.hasData = data != nullptr;
    switch (event) {
        case RTNET_CONNECTION_LOST:
            call.status = static_cast<int>(reinterpret_cast<intptr_t>(data));
            break;
        case RTNET_SERVER_TIME:
            if (data) call.bytes = BytesOf(*static_cast<long*>(data));
            break;
        case RTNET_EOD_PROCESSING:
            if (data) call.bytes = BytesOf(*static_cast<int*>(data));
            break;
        case RTNET_CONNECTED:
            if (data) call.bytes = BytesOf(*static_cast<RTNetConnectResult*>(data));
            break;
        case RTNET_SECURITY_CHANGE:
            if (data) {
                const auto* batch = static_cast<const RTNetSecChangeBatch*>(data);
                call.time = batch->timestamp;
                call.status = batch->count;
                call.bytes = BytesOf(batch->changes, sizeof(RTSecChange) * batch->count);
            }
            break;
        default:
            break;
    }
    Record(std::move(call));
}

int Recorder::Security(unsigned long request, int status, int field, int dataType, void* data,
                       unsigned long user) {
    Call call{CallKind::kSecurity, Current().inDispatch, request, user};
    call.status = status;
    call.field = field;
    call.type = dataType;
    call.hasData = data != nullptr;
    if (data != nullptr) {
        switch (dataType) {
            case RTDATA_TEXT:
                call.text = static_cast<const char*>(data);
                break;
            case RTDATA_DOUBLE:
                call.bytes = BytesOf(*static_cast<double*>(data));
                break;
            case RTDATA_FLOAT:
                call.bytes = BytesOf(*static_cast<float*>(data));
                break;
            case RTDATA_INT:
                call.bytes = BytesOf(*static_cast<int32_t*>(data));
                break;
            default:
                break;
        }
    }
    Record(std::move(call));
    return 1;
}

int Recorder::Eod(unsigned long request, int count, int flags, RTPRICEREC* records,
                  unsigned long user) {
    Call call{CallKind::kEod, Current().inDispatch, request, user};
    call.status = count;
    call.flags = flags;
    call.hasData = records != nullptr;
    if (records != nullptr && count > 0) call.bytes = BytesOf(records, sizeof(RTPRICEREC) * count);
    Record(std::move(call));
    return 1;
}

int Recorder::Tick(unsigned long request, int count, int live, int type, void* data,
                   unsigned long user) {
    Call call{CallKind::kTick, Current().inDispatch, request, user};
    call.status = count;
    call.flags = live;
    call.type = type;
    call.hasData = data != nullptr;
    const size_t size = type == RTREC_TICKREC             ? sizeof(TICKREC)
                        : type == RTREC_INTRADAY_PRICEREC ? sizeof(RTINTRADAY_PRICEREC)
                                                          : 0;
    if (data != nullptr && count > 0) call.bytes = BytesOf(data, size * count);
    Record(std::move(call));
    return 1;
}

int Recorder::Session(unsigned long request, int status, SESSION_INFO* rules, void* holidays,
                      unsigned long user) {
    Call call{CallKind::kSession, Current().inDispatch, request, user};
    call.status = status;
    call.hasData = rules != nullptr;
    if (rules != nullptr) call.bytes = BytesOf(*rules);
    if (holidays != nullptr) {
        const auto* info = static_cast<const HOLIDAYS_INFO*>(holidays);
        call.extra =
            BytesOf(holidays, sizeof(HOLIDAYS_INFO) +
                                  sizeof(HOLIDAY_ROW) * static_cast<size_t>(info->sNumHolidays));
    }
    Record(std::move(call));
    return 1;
}

int Recorder::Headline(unsigned long request, int count, unsigned long articleID, char* headline,
                       unsigned char sourceId, char* sourceName, long dateTime, int history,
                       unsigned long user) {
    Call call{CallKind::kHeadline, Current().inDispatch, request, user};
    call.status = count;
    call.articleId = articleID;
    call.hasData = headline != nullptr;
    if (headline != nullptr) call.text = headline;
    call.source = sourceId;
    if (sourceName != nullptr) call.extra = BytesOf(sourceName, std::strlen(sourceName));
    call.time = dateTime;
    call.flags = history;
    Record(std::move(call));
    return 1;
}

int Recorder::Story(unsigned long request, int status, unsigned long articleID, char* story,
                    unsigned long user) {
    Call call{CallKind::kStory, Current().inDispatch, request, user};
    call.status = status;
    call.articleId = articleID;
    call.hasData = story != nullptr;
    if (story != nullptr) call.text = story;
    Record(std::move(call));
    return 1;
}

SimDriver::SimDriver(const std::string& settings) {
    ClearSettingVariables();
    m_handle = dlopen(QVNSIM_PATH, RTLD_NOW | RTLD_LOCAL);
    if (m_handle == nullptr) throw std::runtime_error(dlerror());
    open = Bind<clientOpenServer_t>("clientOpenServer");
    close = Bind<clientCloseServer_t>("clientCloseServer");
    propertyLong = Bind<clientGetPropertyLong_t>("clientGetPropertyLong");
    propertyString = Bind<clientGetPropertyString_t>("clientGetPropertyString");
    // One name, two shapes, as the library binds it.
    exchangeFieldAccess = Bind<clientGetExchangeFieldAccess_t>("clientGetExchangeLong");
    exchangeLong = Bind<clientGetExchangeLong_t>("clientGetExchangeLong");
    exchangeStringFieldAccess =
        Bind<clientGetExchangeStringFieldAccess_t>("clientGetExchangeString");
    exchangeString = Bind<clientGetExchangeString_t>("clientGetExchangeString");
    reqSecurities = Bind<clientReqSecurities_t>("clientReqSecurities");
    reqRankedList = Bind<clientReqRankedList_t>("clientReqRankedList");
    reqSecurityList = Bind<clientReqSecurityList_t>("clientReqSecurityList");
    closeEvent = Bind<clientCloseEvent_t>("clientCloseEvent");
    modifySecurity = Bind<clientModifySecurity_t>("clientModifySecurity");
    reqEod = Bind<clientReqEodRecords_t>("clientReqEodRecords");
    reqTicks = Bind<clientReqTickBars_t>("clientReqTickBars");
    reqStory = Bind<clientReqNewsStory_t>("clientReqNewsStory");
    reqHeadlines = Bind<clientReqNewsHeadlines_t>("clientReqNewsHeadlines");
    newsSource = Bind<clientGetNewsSource_t>("clientGetNewsSource");
    reqSessionInfo = Bind<clientReqSessionInfo_t>("clientReqSessionInfo");
    pollFd = Bind<clientGetPollFd_t>("clientGetPollFd");
    dispatch = Bind<clientDispatch_t>("clientDispatch");
    configure = Bind<int (*)(const char*)>("qvnsim_Configure");
    raiseEvent = Bind<int (*)(int, long)>("qvnsim_RaiseEvent");
    securityChange = Bind<int (*)(const char*, char)>("qvnsim_SecurityChange");
    now = Bind<long (*)()>("qvnsim_Now");
    if (configure(settings.c_str()) != 1) throw std::runtime_error("settings refused: " + settings);
}

SimDriver::~SimDriver() {
    close();
    dlclose(m_handle);
}

long SimDriver::Connect(int connectMode, unsigned long changeStamp) {
    return open("user", "password", &Recorder::Network, 65536, 1, changeStamp, 0, connectMode);
}

void SimDriver::Dispatch(int times) {
    for (int i = 0; i < times; ++i) {
        recorder.inDispatch = true;
        dispatch();
        recorder.inDispatch = false;
    }
}

unsigned long SimDriver::Quotes(const std::string& symbolsBackToBack, int count,
                                const std::string& fields, bool streaming, unsigned long user) {
    return reqSecurities(symbolsBackToBack.c_str(), 98, fields.c_str(), &Recorder::Security, user,
                         streaming ? 1 : 0, count, 0);
}

unsigned long SimDriver::Ticks(const char* symbol, TICKDATA request, unsigned long user) {
    return reqTicks(symbol, 98, &request, &Recorder::Tick, user, 0);
}

unsigned long SimDriver::Eod(const char* symbol, const QvnSimEodRequest* request, bool streaming,
                             unsigned long user) {
    return reqEod(symbol, 98, reinterpret_cast<EODDATA*>(const_cast<QvnSimEodRequest*>(request)),
                  &Recorder::Eod, user, streaming ? 1 : 0, 0);
}

}  // namespace qvnsim::test
