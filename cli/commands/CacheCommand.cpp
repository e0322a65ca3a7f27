// cache SYMBOL: the blocks of the symbol's intraday cache file: kind, the span each covers in
// exchange time (the machine's zone with --offline), its record count and its last use.
#include <memory>

#include "cli/QuoteText.h"
#include "cli/commands/IntradayView.h"

namespace qvnrt::cli {
namespace {

struct Options {
    std::string symbol;
};

std::vector<Column> BlockColumns() {
    return {{"KIND", 7, false, 0, false},  {"FIRST", 19, false, 0, false},
            {"LAST", 19, false, 0, false}, {"COUNT", 8, true, 0, false},
            {"LAST USE", 19, false, 1, false}};
}

int Run(const GlobalOptions& global, const Options& options) {
    CliSession session;
    uint8_t zone = ZONE_LOCAL;
    IntradayFeed feed;
    if (!global.offline) {
        if (int status = session.Start(global); status != kExitOk) return status;
        if (int status = OpenWithRules(session, feed, options.symbol); status != kExitOk) return status;
        zone = feed.zone();
        feed.CloseSecurity();
    } else if (!session.UseCache(global.cacheDirectory)) {
        return kExitIncomplete;
    }
    std::vector<TickCacheBlock> blocks;
    if (!ListTickCacheBlocks(options.symbol.c_str(), blocks)) {
        std::fprintf(stderr, "qvnrt-cli: %s: no intraday cache file (or it is in use)\n",
                     options.symbol.c_str());
        return kExitIncomplete;
    }
    std::vector<Row> rows;
    for (const TickCacheBlock& block : blocks) {
        rows.push_back({{block.kind == 'M' ? "minutes" : "ticks"},
                        {DateTimeText(block.first, zone)},
                        {DateTimeText(block.last, zone)},
                        {std::to_string(block.count)},
                        {DateTimeText(block.lastUse + EPOCH_1970, zone)}});
    }
    OutputSink::ToStdout(global.format, BlockColumns()).WriteBatch(rows);
    return kExitOk;
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbol, "the security")->required();
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "cache", "the blocks of a symbol's intraday cache: kind, span, count, last use", 60, Setup};

}  // namespace
}  // namespace qvnrt::cli
