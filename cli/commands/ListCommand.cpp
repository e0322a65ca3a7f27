// list NAME: a symbol list that the service keeps (STOCKS, an exchange, an index's
// members), with the rows' quotes live.
#include <memory>

#include "cli/commands/ShowList.h"

namespace qvnrt::cli {
namespace {

struct Options {
    std::string name;
    int type = RTSECTYPE_NOT_KNOWN;
    ListView view;
};

int Run(const GlobalOptions& global, Options& options) {
    options.view.what = "list " + options.name;
    if (const int status = RefuseOffline(global, "list"); status != kExitOk) return status;
    CliSession session;
    if (const int status = session.Start(global); status != kExitOk) return status;
    ListBoard board(false);
    board.SetDefaultFields(BoardFields());
    if (!board.SecList(options.name.c_str(), static_cast<RTSecurityType>(options.type), 0)) {
        std::fprintf(stderr, "qvnrt-cli: %s: the service has no such list\n",
                     options.view.what.c_str());
        return kExitIncomplete;
    }
    return ShowList(global, session, board, options.view);
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("NAME", options->name,
                       "a list name (STOCKS, BONDS...), an exchange or an index ('$USX')")
        ->required();
    command.add_option("--type", options->type, "keep one asset type")
        ->check(CLI::NonNegativeNumber);
    AddListViewOptions(command, options->view);
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "list", "a symbol list of the service, with live quotes", 40, Setup};

}  // namespace
}  // namespace qvnrt::cli
