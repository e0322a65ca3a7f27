#include "cli/QuoteBoard.h"

#include <cstdint>
#include <cstring>

#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/Date.h>

namespace qvnrt::cli {
namespace {

constexpr int kStreaming = 1;
constexpr RTSecurityType kAnyType = RTSECTYPE_NOT_KNOWN;  // the service knows each symbol's

const char kHeader[] = "SYMBOL        LAST          CHANGE        BID           ASK           "
                       "VOLUME      TIME      NAME";

// A price in the security's own display style; "-" when the cache holds none.
std::string Price(BoardSecurity& security, int field) {
    long error = -4;
    const float value = security.GetSecFloat(field, &error);
    if (error != 0) return "-";
    CDoubleToFractRep rep(&security);
    return rep.ToString(value);  // a shared buffer: copied at once
}

std::string Change(BoardSecurity& security) {
    long lastError = -4, closeError = -4;
    const float last = security.GetSecFloat(RTFIELD_LAST, &lastError);
    const float close = security.GetSecFloat(RTFIELD_PREV_CLOSE, &closeError);
    if (lastError != 0 || closeError != 0) return "-";
    CDoubleToFractRep rep(&security);
    const double change = static_cast<double>(last) - close;
    return std::string(change >= 0.0 ? "+" : "") + rep.ToString(change);
}

std::string Integer(BoardSecurity& security, int field) {
    long error = -4;
    const int value = security.GetSecInt(field, &error);
    return error == 0 ? std::to_string(value) : "-";
}

// The quote's time on the machine's clock: the same online and offline, when no driver is
// there to name the exchange's zone.
std::string QuoteTime(BoardSecurity& security) {
    long error = -4;
    const auto value = static_cast<uint32_t>(security.GetSecInt(RTFIELD_QUOTE_TIME, &error));
    if (error != 0 || value < DATE_SECONDS_BASE) return "-";
    uint32_t month, day, year, hour, minute, second;
    Date(value).getMDYHMS(month, day, year, hour, minute, second, ZONE_LOCAL);
    char text[16];
    std::snprintf(text, sizeof(text), "%02u:%02u:%02u", hour, minute, second);
    return text;
}

}  // namespace

QuoteBoard::QuoteBoard(const std::vector<std::string>& symbols) : m_symbols(symbols) {}

void QuoteBoard::Open(bool streaming) {
    for (const std::string& symbol : m_symbols) {
        m_securities.push_back(std::make_unique<BoardSecurity>());
        m_securities.back()->OpenSecurity(symbol.c_str(), kAnyType, streaming ? kStreaming : 0,
                                          0);
    }
}

void QuoteBoard::Close() {
    for (auto& security : m_securities) security->CloseSecurity();
}

bool QuoteBoard::AllAnswered() const {
    for (const auto& security : m_securities) {
        if (security->batches == 0 && !security->closed) return false;
    }
    return true;
}

std::vector<std::string> QuoteBoard::Unknown() const {
    std::vector<std::string> unknown;
    for (size_t i = 0; i < m_securities.size(); ++i) {
        if (m_securities[i]->closed) unknown.push_back(m_symbols[i]);
    }
    return unknown;
}

std::string QuoteBoard::Row(BoardSecurity& security) const {
    std::string symbol = security.m_strSymbol.IsEmpty() ? "?" : security.m_strSymbol.str();
    if (security.closed) return symbol + "  unknown symbol";
    long error = -4;
    const int flags = security.GetSecInt(RTFIELD_BIT_FLAGS, &error);
    if (error == 0 && (flags & RTFLAG_DELAYED)) symbol += " (d)";
    const char* name = security.GetSecString(RTFIELD_NAME, nullptr);
    char row[256];
    std::snprintf(row, sizeof(row), "%-13s %-13s %-13s %-13s %-13s %-11s %-9s %s",
                  symbol.c_str(), Price(security, RTFIELD_LAST).c_str(), Change(security).c_str(),
                  Price(security, RTFIELD_BID).c_str(), Price(security, RTFIELD_ASK).c_str(),
                  Integer(security, RTFIELD_TOTAL_VOLUME).c_str(), QuoteTime(security).c_str(),
                  name ? name : "");
    return row;
}

void QuoteBoard::Print(FILE* out) const {
    std::fprintf(out, "%s\n", kHeader);
    for (const auto& security : m_securities) std::fprintf(out, "%s\n", Row(*security).c_str());
    std::fflush(out);
}

void QuoteBoard::Redraw(FILE* out) {
    if (m_linesDrawn > 0) std::fprintf(out, "\x1b[%dA", m_linesDrawn);  // back to the top
    std::fprintf(out, "\x1b[J");  // and clear what was drawn
    Print(out);
    m_linesDrawn = static_cast<int>(m_securities.size()) + 1;
}

}  // namespace qvnrt::cli
