// snapshot SYMBOL...: one batch per symbol, then exit. Without a driver it still shows what
// the cache holds, but exits 1: the live quote that was asked for did not come.
#include <memory>

#include "cli/CliSession.h"
#include "cli/QuoteBoard.h"

namespace qvnrt::cli {
namespace {

constexpr double kAnswerWaitSeconds = 5.0;

struct Options {
    std::vector<std::string> symbols;
};

int Run(const GlobalOptions& global, const Options& options) {
    CliSession session;
    if (!session.UseCache(global.cacheDirectory)) return kExitIncomplete;
    int status = kExitOk;
    bool online = false;
    if (!global.offline) {
        online = session.LoadDriver(global.driver) && session.Connect();
        if (!online) {
            std::fprintf(stderr, "qvnrt-cli: showing the cache instead\n");
            status = kExitIncomplete;
        }
    }
    QuoteBoard board(options.symbols);
    board.Open(false);  // offline, the cache answers at once
    if (online) session.Run(kAnswerWaitSeconds, [&board] { return board.AllAnswered(); });
    OutputSink::ToStdout(global.format, QuoteBoard::Columns()).WriteBatch(board.Rows(true));
    return Worse(status, board.ReportMissing(!online));
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbols, "symbols to show (quote '$USX' in a shell)")
        ->required();
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "snapshot", "one quote per symbol, then exit; --offline reads the cache alone", 20, Setup};

}  // namespace
}  // namespace qvnrt::cli
