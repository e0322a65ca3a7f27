#include "QuoteFeed.h"

#include <algorithm>

namespace {

// The driver sends numbers in the type it names; the desk reads every price as a double.
bool Number(int dataType, const void* data, double& out) {
    if (!data) return false;
    switch (dataType) {
        case RTDATA_DOUBLE:
            out = *static_cast<const double*>(data);
            return true;
        case RTDATA_FLOAT:
            out = *static_cast<const float*>(data);
            return true;
        case RTDATA_INT:
            out = *static_cast<const int32_t*>(data);
            return true;
        default:
            return false;
    }
}

// The chart never shows more; the oldest go first.
constexpr size_t kMaxBars = 2000;
// Every day of the week and every session: the chart shows what traded.
constexpr short kEveryDay = 0xC6;

}  // namespace

QuoteFeed::QuoteFeed(std::string symbol, int barMinutes)
    : m_symbol(std::move(symbol)), m_barSeconds(barMinutes * 60) {}

QuoteFeed::~QuoteFeed() {
    CloseSecurity();
}

std::string QuoteFeed::Price(double value) {
    return static_cast<const char*>(CDoubleToFractRep(this).ToString(value));
}

int QuoteFeed::ReqSecCallback(unsigned long request, int status, int field, int dataType,
                              void* data) {
    double value = 0;
    switch (field) {
        case RTFIELD_BID:
            if (Number(dataType, data, value)) bid = value;
            break;
        case RTFIELD_ASK:
            if (Number(dataType, data, value)) ask = value;
            break;
        case RTFIELD_TICK:
            // Its sign is the direction; the low 16 bits carry it.
            if (data) tick = static_cast<int16_t>(*static_cast<const int32_t*>(data)) < 0 ? -1 : 1;
            break;
        default:
            break;
    }
    return RTSessSecurity::ReqSecCallback(request, status, field, dataType, data);
}

void QuoteFeed::OnSecChanged() {
    long error = 0;
    const double price = GetSecLastTrade(&error);
    if (error == 0) {
        if (hasLast && price != last) tick = price > last ? 1 : -1;
        last = price;
        hasLast = true;
    }
    error = 0;
    const float close = GetSecPrevClose(&error);
    if (error == 0) previousClose = close;
    if (changed) changed(*this);
}

// Bars are cut at the sessions' edges, so they are asked for once the rules are here.
void QuoteFeed::OnSessChanged() {
    if (!m_pSessionRec) return;
    m_rules = *m_pSessionRec;
    auto* session = new CSessionInfo(m_pSessionRec);
    auto* holidays = new CHolidaysInfo(m_pHolidayRec);
    setSessHolInfo(session, holidays, 0);
    session->Free();  // the security holds its own references
    holidays->Free();
    if (!m_barsAsked) m_barsAsked = RequestBars();
}

bool QuoteFeed::RequestBars() {
    bool allSessions[4] = {true, true, true, true};
    // A negative weight counts minutes per bar; start 0 takes all the history there is,
    // end 0 with live 1 keeps the open bar growing.
    return RequestTick(0, 0, static_cast<short>(-m_barSeconds / 60), 1, 2, 0, 0, 0, 0,
                       kEveryDay, allSessions, 0, 0, 0, 0, 0);
}

bool QuoteFeed::ReqTickCallback(unsigned long, int count, int, int isNew, int type,
                                void* data) {
    if (count == 0 && !data) {
        if (!isNew) m_historyDone = true;
    } else if (type == RTREC_INTRADAY_PRICEREC && data && count > 0) {
        const auto* records = static_cast<const RTINTRADAY_PRICEREC*>(data);
        for (int i = 0; i < count; ++i) {
            const bool added = Store(records[i]);
            if (added) ++(isNew ? m_liveBars : m_historyBars);
        }
    }
    if (changed) changed(*this);
    return true;
}

bool QuoteFeed::Store(const RTINTRADAY_PRICEREC& record) {
    const Bar bar{record.time, record.open, record.high, record.low, record.close};
    auto place = std::lower_bound(m_bars.begin(), m_bars.end(), bar.stamp,
                                  [](const Bar& held, uint32_t stamp) { return held.stamp < stamp; });
    if (place != m_bars.end() && place->stamp == bar.stamp) {
        *place = bar;
        return false;
    }
    size_t index = static_cast<size_t>(place - m_bars.begin());
    if (m_bars.size() == kMaxBars) {
        if (index == 0) return false;  // older than everything kept
        m_bars.erase(m_bars.begin());
        --index;
    }
    m_bars.insert(m_bars.begin() + static_cast<std::ptrdiff_t>(index), bar);
    return true;
}
