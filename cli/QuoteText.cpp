#include "cli/QuoteText.h"

#include <cstdint>
#include <cstdio>

#include <qvnrt/qvnrt.h>

namespace qvnrt::cli {
namespace {

// Asset types are agreed between the applications and their drivers; 2 is an index, which
// is computed, not traded: it has no bid, ask or volume of its own.
constexpr int kIndexAssetType = 2;

bool IsIndex(RTSecurity& security) {
    long error = -4;
    const int type = security.GetSecInt(RTFIELD_ASSET_TYPE, &error);
    return error == 0 && type == kIndexAssetType;
}

bool IsQuoteField(int field) {
    return field == RTFIELD_BID || field == RTFIELD_ASK;
}

uint8_t ExchangeZone(RTSecurity& security) {
    long error = -4;
    const int exchange = security.GetSecInt(RTFIELD_EXCHANGE, &error);
    if (error != 0 || !RTServer::IsConnected()) return ZONE_LOCAL;
    const unsigned long zone = RTSecurity::GetExchangeLong(exchange, RTEXPROP_ZONE, ZONE_LOCAL);
    return zone <= 0xFF ? static_cast<uint8_t>(zone) : ZONE_LOCAL;
}

std::optional<uint32_t> QuoteTime(RTSecurity& security) {
    long error = -4;
    const auto value = static_cast<uint32_t>(security.GetSecInt(RTFIELD_QUOTE_TIME, &error));
    if (error != 0 || value < DATE_SECONDS_BASE) return std::nullopt;
    return value;
}

}  // namespace

std::string SymbolText(RTSecurity& security, const std::string& symbol) {
    long error = -4;
    const int flags = security.GetSecInt(RTFIELD_BIT_FLAGS, &error);
    return (error == 0 && (flags & RTFLAG_DELAYED)) ? symbol + " (d)" : symbol;
}

Text NameText(RTSecurity& security) {
    long error = -4;
    const char* name = security.GetSecString(RTFIELD_NAME, &error);
    if (error != 0 || !name || !*name) return std::nullopt;
    return std::string(name);
}

Text PriceText(RTSecurity& security, int field) {
    if (IsQuoteField(field) && IsIndex(security)) return std::nullopt;
    long error = -4;
    const float value = security.GetSecFloat(field, &error);
    if (error != 0 || (IsQuoteField(field) && value == 0.0f)) return std::nullopt;
    CDoubleToFractRep rep(&security);
    return std::string(rep.ToString(value));  // a shared buffer: copied at once
}

std::optional<double> Change(RTSecurity& security) {
    long lastError = -4, closeError = -4;
    const float last = security.GetSecFloat(RTFIELD_LAST, &lastError);
    const float close = security.GetSecFloat(RTFIELD_PREV_CLOSE, &closeError);
    // No previous close (a first day) is no change to show, rather than the whole price.
    if (lastError != 0 || closeError != 0 || close == 0.0f) return std::nullopt;
    return static_cast<double>(last) - close;
}

Text ChangeText(RTSecurity& security) {
    const std::optional<double> change = Change(security);
    if (!change) return std::nullopt;
    CDoubleToFractRep rep(&security);
    return std::string(*change >= 0.0 ? "+" : "") + rep.ToString(*change);
}

Text CountText(RTSecurity& security, int field) {
    if (field == RTFIELD_TOTAL_VOLUME && IsIndex(security)) return std::nullopt;
    long error = -4;
    const int value = security.GetSecInt(field, &error);
    if (error != 0) return std::nullopt;
    return std::to_string(value);
}

std::string DateTimeText(uint32_t date, uint8_t zone) {
    uint32_t month, day, year, hour, minute, second;
    Date(date).getMDYHMS(month, day, year, hour, minute, second, zone);
    char text[32];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u:%02u", year, month, day, hour,
                  minute, second);
    return text;
}

Text QuoteDateText(RTSecurity& security) {
    const auto time = QuoteTime(security);
    if (!time) return std::nullopt;
    return DateTimeText(*time, ExchangeZone(security)).substr(0, 10);
}

Text QuoteTimeText(RTSecurity& security) {
    const auto time = QuoteTime(security);
    if (!time) return std::nullopt;
    return DateTimeText(*time, ExchangeZone(security)).substr(11);
}

std::optional<double> LastPrice(RTSecurity& security) {
    long error = -4;
    const float last = security.GetSecFloat(RTFIELD_LAST, &error);
    if (error != 0) return std::nullopt;
    return last;
}

bool HasQuote(RTSecurity& security) {
    return LastPrice(security).has_value() || NameText(security).has_value();
}

}  // namespace qvnrt::cli
