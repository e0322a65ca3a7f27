// A security's values as the program shows them: prices in the security's own display style
// (decimals, or fractions such as 32nds), times in its exchange's zone. Each is empty when
// the security does not have the value (an index has no bid, ask or volume) or the cache
// holds none.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

class RTSecurity;

namespace qvnrt::cli {

using Text = std::optional<std::string>;

// The symbol, with " (d)" when its quotes are delayed.
std::string SymbolText(RTSecurity& security, const std::string& symbol);
Text NameText(RTSecurity& security);

// A price field (RTFIELD_LAST, RTFIELD_BID, ...). A bid or ask of zero is no quote.
Text PriceText(RTSecurity& security, int field);
// The last price less the previous close, signed.
Text ChangeText(RTSecurity& security);
// A whole-number field such as RTFIELD_TOTAL_VOLUME.
Text CountText(RTSecurity& security, int field);
// The time of the last quote, "YYYY-MM-DD" and "HH:MM:SS", in the zone of the security's
// exchange while a driver names it, else on the machine's clock.
Text QuoteDateText(RTSecurity& security);
Text QuoteTimeText(RTSecurity& security);
// Any date value in `zone` (a zone id of the calendar), "YYYY-MM-DD HH:MM:SS".
std::string DateTimeText(uint32_t date, uint8_t zone);

// The last price, and its change from the previous close, as numbers: for marking rises and
// falls. Empty when there is none.
std::optional<double> LastPrice(RTSecurity& security);
std::optional<double> Change(RTSecurity& security);
// True when the cache holds anything of the security's quote.
bool HasQuote(RTSecurity& security);

}  // namespace qvnrt::cli
