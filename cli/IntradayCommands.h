// The intraday commands of qvnrt-cli:
//
//   ticks SYMBOL [--from TIME] [--to TIME] [--live] [--minutes] [--seconds N]
//   bars SYMBOL --width 7m|30m|1h|100t [--days N] [--live] [--chart] [--seconds N]
//
// TIME is exchange-local: YYYY-MM-DD or YYYY-MM-DDTHH:MM. History prints newest first, then
// live records as they come; --chart draws the bars as candles, growing in place.
#pragma once

#include <string>

namespace qvnrt::cli {

struct IntradayOptions {
    std::string symbol;
    std::string driver;
    std::string from, to;   // TIME texts, empty for the default
    std::string width;      // bars: 7m, 1h, 100t
    int days = 5;           // bars: history reaches this many days back
    bool live = false;
    bool minutes = false;   // ticks: one-minute bars instead
    bool chart = false;
    double seconds = 0;     // 0: until Ctrl-C (with --live), else until history ends
};

// Exit codes: 0 done, 1 no data or no such symbol, 2 bad arguments.
int Ticks(const IntradayOptions& options);
int Bars(const IntradayOptions& options);

// Parses "7m", "30m", "1h", "100t" into a bar weight (negative minutes, positive ticks);
// 0 for anything else.
int ParseWidth(const std::string& text);

}  // namespace qvnrt::cli
