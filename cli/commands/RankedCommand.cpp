// ranked gainers|losers|active|trades: a ranked list of the service, which sends it again
// each round; each round replaces the last.
#include <map>
#include <memory>

#include "cli/commands/ShowList.h"

namespace qvnrt::cli {
namespace {

struct Options {
    std::string kind;
    int type = 0;  // 0: every type
    int rows = 0;  // 0: the service's default
    ListView view;
};

// The service's numbers of its ranked lists.
const std::map<std::string, int>& Kinds() {
    static const std::map<std::string, int> kinds{
        {"gainers", 1}, {"losers", 2}, {"active", 3}, {"trades", 4}};
    return kinds;
}

int Run(const GlobalOptions& global, Options& options) {
    options.view.what = "ranked " + options.kind;
    options.view.quotes = false;  // every round brings the values anew
    if (const int status = RefuseOffline(global, "ranked"); status != kExitOk) return status;
    CliSession session;
    if (const int status = session.Start(global); status != kExitOk) return status;
    ListBoard board(true);
    if (!board.SecRankedList(Kinds().at(options.kind), options.type, options.rows, 0)) {
        std::fprintf(stderr, "qvnrt-cli: %s: the service refused the list\n",
                     options.view.what.c_str());
        return kExitIncomplete;
    }
    return ShowList(global, session, board, options.view);
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("KIND", options->kind, "gainers, losers, active or trades")
        ->required()
        ->check(CLI::IsMember({"gainers", "losers", "active", "trades"}));
    command.add_option("--type", options->type, "keep one asset type")
        ->check(CLI::NonNegativeNumber);
    command.add_option("--rows", options->rows, "rows of the list")->check(CLI::PositiveNumber);
    AddListViewOptions(command, options->view);
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "ranked", "a ranked list of the service, reordered each round", 50, Setup};

}  // namespace
}  // namespace qvnrt::cli
