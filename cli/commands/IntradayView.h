// What the ticks and bars commands share: the security with its session rules, the request,
// and the ways its data are shown (rows in the chosen format, or candles on a terminal).
#pragma once

#include <string>

#include "cli/CliSession.h"
#include "cli/Command.h"
#include "cli/IntradayFeed.h"

namespace qvnrt::cli {

// Opens the security and waits for its session rules, which every conversion needs, and
// for the service's clock. kExitOk, or kExitIncomplete after telling why.
int OpenWithRules(CliSession& session, IntradayFeed& feed, const std::string& symbol);

// The service's time now, a Date value.
uint32_t ServiceNow();

// "YYYY-MM-DD" or "YYYY-MM-DDTHH:MM" in the zone; 0 when it does not read.
uint32_t ParseTime(const std::string& text, uint8_t zone);

// "7m", "30m", "1h", "100t" as a bar weight (negative minutes, positive ticks); 0 for
// anything else, and for a bar wider than a day.
int ParseWidth(const std::string& text);

// Asks for history from `start` to `end` (0: up to now) with live updates when `live`, and
// waits for the history. With `cacheOnly` the driver is left out (the connection is closed
// first): what the cache holds is delivered and the request ends. False after telling why.
bool RequestAndWait(CliSession& session, IntradayFeed& feed, uint32_t start, uint32_t end,
                    int weight, bool live, bool cacheOnly = false);

// Tells on standard error how many records of the request came from the cache and how many
// from the driver, counted from `before` (GetTickCacheCounts before the request).
void TellOrigins(const std::string& symbol, const TickCacheCounts& before);

struct BarsView {
    std::string title;   // above a chart
    bool live = false;
    bool chart = false;
    double seconds = 0;  // of live updates; 0 until Ctrl-C
};

// History newest first (or the chart), then, when live, each bar as it changes (or the
// chart growing in place). The status: kExitIncomplete when no bar came.
int ShowBars(const GlobalOptions& global, CliSession& session, IntradayFeed& feed,
             const BarsView& view);

// Ends the request; kExitIncomplete after telling of a failed request.
int Finish(IntradayFeed& feed, int status);

}  // namespace qvnrt::cli
