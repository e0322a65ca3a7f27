#include "cli/SymbolRecording.h"

#include <algorithm>
#include <cstring>

#include <qvnrt/RTServer.h>

#include "cli/History.h"

namespace qvnrt::cli {

namespace {

const char kListingFields[] = {RTFIELD_NAME, RTFIELD_ASSET_TYPE, RTFIELD_EXCHANGE,
                               RTFIELD_DISPLAY_STYLE, 0};

SymbolRecording* Of(unsigned long user) {
    return reinterpret_cast<SymbolRecording*>(user);
}

int32_t IntOf(const void* data) {
    int32_t value = 0;
    if (data != nullptr) std::memcpy(&value, data, sizeof value);
    return value;
}

}  // namespace

SymbolRecording::SymbolRecording(std::string symbol) {
    m_listing.symbol = std::move(symbol);
}

SymbolRecording::~SymbolRecording() {
    if (!RTServer::IsLoaded()) return;
    for (const unsigned long request : {m_quoteRequest, m_dayRequest, m_tickRequest, m_minuteRequest}) {
        if (request != 0) RTServer::m_lpCloseEvent(request);
    }
}

bool SymbolRecording::Start(int days) {
    const char* symbol = m_listing.symbol.c_str();
    // The symbol texts are copied by the driver before it returns.
    m_quoteRequest = RTServer::m_lpReqSecurity(symbol, RTSECTYPE_NOT_KNOWN, kListingFields,
                                               &OnQuote, User(), 0, 1, 0);
    EodRequestRecord eod;
    eod.maxRecords = days;
    m_dayRequest = RTServer::m_lpReqEOD(symbol, RTSECTYPE_NOT_KNOWN,
                                        reinterpret_cast<EODDATA*>(&eod), &OnDays, User(), 0, 0);
    TICKDATA ticks{};
    ticks.weight = 1;
    ticks.live = 1;
    m_tickRequest = RTServer::m_lpReqTick(symbol, RTSECTYPE_NOT_KNOWN, &ticks, &OnTicks, User(), 0);
    const unsigned long session = RTServer::m_lpclientReqSessionInfo(
        const_cast<char*>(symbol), RTSECTYPE_NOT_KNOWN, &OnSession, User());
    m_quoteDone |= m_quoteRequest == 0;
    m_daysDone |= m_dayRequest == 0;
    m_ticksDone |= m_tickRequest == 0;
    m_sessionDone |= session == 0;
    return m_quoteRequest != 0 && m_dayRequest != 0 && m_tickRequest != 0 && session != 0;
}

bool SymbolRecording::Finish() {
    if (m_tickRequest != 0) RTServer::m_lpCloseEvent(m_tickRequest);
    m_tickRequest = 0;
    m_minutesAsked = true;
    if (m_unknown) return true;
    TICKDATA minutes{};
    minutes.weight = -1;
    m_minuteRequest = RTServer::m_lpReqTick(m_listing.symbol.c_str(), RTSECTYPE_NOT_KNOWN,
                                            &minutes, &OnTicks, User(), 0);
    m_minutesDone = m_minuteRequest == 0;
    return m_minuteRequest != 0;
}

bool SymbolRecording::Settled() const {
    if (m_unknown) return true;
    return m_quoteDone && m_daysDone && m_ticksDone && m_sessionDone &&
           (!m_minutesAsked || m_minutesDone);
}

std::vector<TICKREC> SymbolRecording::Ticks() const {
    std::vector<TICKREC> ticks(m_tickHistory.rbegin(), m_tickHistory.rend());
    ticks.insert(ticks.end(), m_tickLive.begin(), m_tickLive.end());
    return ticks;
}

std::vector<RTINTRADAY_PRICEREC> SymbolRecording::Minutes() const {
    return {m_minuteHistory.rbegin(), m_minuteHistory.rend()};
}

std::vector<RTPRICEREC> SymbolRecording::Days() const {
    std::vector<RTPRICEREC> days;
    for (const auto& entry : m_days) days.push_back(entry.second);
    return days;
}

int SymbolRecording::OnQuote(unsigned long /*request*/, int status, int field, int dataType,
                             void* data, unsigned long user) {
    SymbolRecording& self = *Of(user);
    if (status < 0) {
        self.m_unknown = true;
        self.m_quoteDone = true;
        return 1;
    }
    RecordedListing& listing = self.m_listing;
    switch (field) {
        case RTFIELD_END:
            self.m_quoteDone = true;
            break;
        case RTFIELD_NAME:
            if (dataType == RTDATA_TEXT && data != nullptr) listing.name = static_cast<char*>(data);
            break;
        case RTFIELD_ASSET_TYPE:
            listing.assetType = IntOf(data);
            break;
        case RTFIELD_EXCHANGE:
            listing.exchange = IntOf(data);
            break;
        case RTFIELD_DISPLAY_STYLE:
            listing.priceStyle = IntOf(data);
            break;
        default:
            break;
    }
    return 1;
}

int SymbolRecording::OnDays(unsigned long /*request*/, int count, int /*flags*/,
                            RTPRICEREC* records, unsigned long user) {
    SymbolRecording& self = *Of(user);
    if (count <= 0 || records == nullptr) {
        self.m_daysDone = true;
        return 1;
    }
    for (int i = 0; i < count; ++i) self.m_days[records[i].date] = records[i];
    return 1;
}

int SymbolRecording::OnTicks(unsigned long request, int count, int live, int type, void* data,
                             unsigned long user) {
    SymbolRecording& self = *Of(user);
    const bool minutes = request == self.m_minuteRequest && request != 0;
    if (count <= 0 || data == nullptr) {
        (minutes ? self.m_minutesDone : self.m_ticksDone) = true;
        return 1;
    }
    if (minutes && type == RTREC_INTRADAY_PRICEREC) {
        const auto* bars = static_cast<const RTINTRADAY_PRICEREC*>(data);
        self.m_minuteHistory.insert(self.m_minuteHistory.end(), bars, bars + count);
    } else if (!minutes && type == RTREC_TICKREC) {
        // Packed records: copied by bytes.
        std::vector<TICKREC>& into = live ? self.m_tickLive : self.m_tickHistory;
        const size_t had = into.size();
        into.resize(had + static_cast<size_t>(count));
        std::memcpy(into.data() + had, data, sizeof(TICKREC) * static_cast<size_t>(count));
    }
    return 1;
}

int SymbolRecording::OnSession(unsigned long /*request*/, int status, SESSION_INFO* rules,
                               void* holidays, unsigned long user) {
    SymbolRecording& self = *Of(user);
    self.m_sessionDone = true;
    if (status < 0 || rules == nullptr || rules->size == 0) return 1;
    self.m_listing.hasRules = true;
    std::memcpy(&self.m_listing.rules, rules, sizeof *rules);
    if (holidays != nullptr) {
        HOLIDAYS_INFO header{};
        std::memcpy(&header, holidays, sizeof header);
        const int count = std::clamp<int>(header.sNumHolidays, 0, 4096);
        self.m_listing.holidays.resize(static_cast<size_t>(count));
        if (count > 0) {
            std::memcpy(self.m_listing.holidays.data(),
                        static_cast<const char*>(holidays) + sizeof header,
                        sizeof(HOLIDAY_ROW) * static_cast<size_t>(count));
        }
    }
    return 1;
}

}  // namespace qvnrt::cli
