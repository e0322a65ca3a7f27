// bars SYMBOL --width 7m|30m|1h|100t [--days N] [--live] [--chart] [--seconds N]: bars of any
// width, cut from each session's own start, as rows newest first or as candles.
#include <memory>

#include "cli/commands/IntradayView.h"

namespace qvnrt::cli {
namespace {

constexpr int kMaxDays = 3650;

struct Options {
    std::string symbol;
    std::string width;
    int days = 5;
    bool live = false;
    bool cacheOnly = false;
    bool chart = false;
    double seconds = 0;
};

int Run(const GlobalOptions& global, const Options& options) {
    const int weight = ParseWidth(options.width);
    if (weight == 0) {
        std::fprintf(stderr,
                     "qvnrt-cli: %s: not a bar width (minutes as 7m, hours as 1h up to 24h, "
                     "ticks as 100t)\n",
                     options.width.c_str());
        return kExitUsage;
    }
    CliSession session;
    int status = session.Start(global);
    if (status != kExitOk) return status;
    IntradayFeed feed;
    if ((status = OpenWithRules(session, feed, options.symbol)) != kExitOk) return status;
    const uint32_t start = ServiceNow() - static_cast<uint32_t>(options.days) * 86400u;
    const TickCacheCounts before = GetTickCacheCounts();
    if (!RequestAndWait(session, feed, start, 0, weight, options.live, options.cacheOnly)) {
        return kExitIncomplete;
    }
    TellOrigins(options.symbol, before);
    const BarsView view{options.symbol + " " + options.width + " bars", options.live,
                        options.chart, options.seconds};
    return Finish(feed, ShowBars(global, session, feed, view));
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbol, "the security")->required();
    command.add_option("--width", options->width, "bar width: 7m, 30m, 1h, 100t ...")
        ->required();
    command.add_option("--days", options->days, "history reaches this many days back")
        ->check(CLI::Range(1, kMaxDays));
    command.add_flag("--cache-only", options->cacheOnly,
                     "serve what the cache holds, without asking the driver");
    command.add_flag("--live", options->live, "go on with live bars after the history");
    command.add_flag("--chart", options->chart, "draw candles (a table format only)");
    command.add_option("--seconds", options->seconds, "end live updates after N seconds")
        ->check(CLI::NonNegativeNumber);
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "bars", "session-aligned bars of any width (minutes or ticks), as rows or candles", 55,
    Setup};

}  // namespace
}  // namespace qvnrt::cli
