#include "QuoteFeed.h"

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

// Bars are kept for the chart's width only; a day of one-minute bars is plenty.
constexpr size_t kMaxBars = 2000;

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
        case RTFIELD_QUOTE_TIME:
            if (Number(dataType, data, value)) quoteTime = static_cast<uint32_t>(value);
            break;
        case RTFIELD_TICK:
            // Its sign is the direction; the low 16 bits carry it.
            if (data) tick = static_cast<int16_t>(*static_cast<const int32_t*>(data)) < 0 ? -1 : 1;
            break;
        default:
            break;
    }
    return RTSecurity::ReqSecCallback(request, status, field, dataType, data);
}

void QuoteFeed::OnSecChanged() {
    long error = 0;
    const double price = GetSecLastTrade(&error);
    if (error == 0) {
        if (hasLast && price != last) tick = price > last ? 1 : -1;
        last = price;
        hasLast = true;
        AddTrade(price);
    }
    error = 0;
    const float close = GetSecPrevClose(&error);
    if (error == 0) previousClose = close;
    if (changed) changed(*this);
}

void QuoteFeed::AddTrade(double price) {
    if (quoteTime <= EPOCH_1970 || m_barSeconds <= 0) return;
    const int64_t when = static_cast<int64_t>(quoteTime) - EPOCH_1970;
    const int64_t start = when - when % m_barSeconds;
    if (!m_bars.empty() && start < m_bars.back().start) return;  // late: its bar is closed
    if (m_bars.empty() || start > m_bars.back().start) {
        if (m_bars.size() == kMaxBars) m_bars.erase(m_bars.begin());
        m_bars.push_back(Bar{start, price, price, price, price});
        return;
    }
    Bar& open = m_bars.back();
    open.high = std::max(open.high, price);
    open.low = std::min(open.low, price);
    open.close = price;
}
