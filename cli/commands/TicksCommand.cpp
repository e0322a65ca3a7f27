// ticks SYMBOL [--from TIME] [--to TIME] [--live] [--minutes] [--seconds N]: intraday ticks
// (or one-minute bars) newest first in exchange time, then live ones as they come.
#include <memory>

#include "cli/QuoteText.h"
#include "cli/commands/IntradayView.h"

namespace qvnrt::cli {
namespace {

constexpr uint32_t kDefaultReach = 86400;  // a day back when --from is not given

struct Options {
    std::string symbol;
    std::string from, to;
    bool live = false;
    bool cacheOnly = false;
    bool minutes = false;
    double seconds = 0;
};

std::vector<Column> TickColumns() {
    return {{"TIME", 19, false, 0, false}, {"PRICE", 10, true, 0, false},
            {"VOLUME", 9, true, 1, false}};
}

Row TickRow(const TICKREC& tick, uint8_t zone) {
    char price[32];
    std::snprintf(price, sizeof(price), "%.6g", static_cast<double>(tick.price));
    return {{DateTimeText(tick.time, zone)}, {price}, {std::to_string(tick.volume)}};
}

int Run(const GlobalOptions& global, const Options& options) {
    CliSession session;
    int status = session.Start(global);
    if (status != kExitOk) return status;
    IntradayFeed feed;
    if ((status = OpenWithRules(session, feed, options.symbol)) != kExitOk) return status;
    const uint8_t zone = feed.zone();
    uint32_t start = ServiceNow() - kDefaultReach;
    uint32_t end = 0;
    for (const auto& [text, value] : {std::pair{&options.from, &start}, {&options.to, &end}}) {
        if (text->empty()) continue;
        if (!(*value = ParseTime(*text, zone))) {
            std::fprintf(stderr, "qvnrt-cli: %s: not a time (YYYY-MM-DD or YYYY-MM-DDTHH:MM)\n",
                         text->c_str());
            return kExitUsage;
        }
    }
    const bool live = options.live && end == 0;
    const TickCacheCounts before = GetTickCacheCounts();
    if (!RequestAndWait(session, feed, start, end, options.minutes ? -1 : 1, live,
                        options.cacheOnly)) {
        return kExitIncomplete;
    }
    TellOrigins(options.symbol, before);
    if (options.minutes) {
        BarsView view{options.symbol + " one-minute bars", live, false, options.seconds};
        return Finish(feed, ShowBars(global, session, feed, view));
    }
    OutputSink sink = OutputSink::ToStdout(global.format, TickColumns());
    std::vector<Row> rows;
    for (const TICKREC& tick : feed.historyTicks) rows.push_back(TickRow(tick, zone));
    bool reading = sink.WriteBatch(rows);
    if (live && reading) {
        feed.onLiveTicks = [&](const TICKREC* ticks, int count) {
            std::vector<Row> fresh;
            for (int i = 0; i < count; ++i) fresh.push_back(TickRow(ticks[i], zone));
            if (!sink.WriteBatch(fresh)) session.Stop();  // the reader has gone
        };
        session.Run(options.seconds);
        feed.onLiveTicks = nullptr;
    }
    return Finish(feed, feed.historyTicks.empty() ? kExitIncomplete : kExitOk);
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbol, "the security")->required();
    command.add_option("--from", options->from,
                       "first time wanted, exchange time: YYYY-MM-DD[THH:MM] (default: a day "
                       "ago)");
    command.add_option("--to", options->to, "last time wanted (default: up to now)");
    command.add_flag("--cache-only", options->cacheOnly,
                     "serve what the cache holds, without asking the driver");
    command.add_flag("--live", options->live, "go on with live ticks after the history");
    command.add_flag("--minutes", options->minutes, "one-minute bars instead of ticks");
    command.add_option("--seconds", options->seconds, "end live updates after N seconds")
        ->check(CLI::NonNegativeNumber);
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "ticks", "intraday ticks or one-minute bars, newest first, then live ones", 50, Setup};

}  // namespace
}  // namespace qvnrt::cli
