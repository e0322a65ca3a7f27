// quotes SYMBOL... [--seconds N]: a live quote board, refreshed on the library's heartbeat.
#include <memory>

#include "cli/commands/ShowQuotes.h"

namespace qvnrt::cli {
namespace {

struct Options {
    std::vector<std::string> symbols;
    double seconds = 0;
};

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbols, "symbols to show (quote '$USX' in a shell)")
        ->required();
    command.add_option("--seconds", options->seconds, "stop after N seconds (default: Ctrl-C)")
        ->check(CLI::NonNegativeNumber);
    return [options](const GlobalOptions& global) {
        return ShowQuotes(global, options->symbols, options->seconds,
                          "qvnrt-cli quotes: Ctrl-C ends");
    };
}

const CommandRegistration kRegistration{
    "quotes", "a live quote board; piped, one row per batch as it comes", 10, Setup};

}  // namespace
}  // namespace qvnrt::cli
