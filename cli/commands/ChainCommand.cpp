// chain SYMBOL: the option chain of a security, with the options' quotes live.
#include <cstdint>
#include <memory>

#include "cli/commands/ShowList.h"

namespace qvnrt::cli {
namespace {

// The chain filter as the simulation driver reads it behind RTSec_OptionFilter (a layout
// agreed between application and driver, never read by the library); all zero asks for
// the whole chain.
struct OptionFilterRecord {
    uint32_t expiry = 0;
    float minStrike = 0;
    float maxStrike = 0;
    char kind = 0;
    char reserved[3] = {};
};

struct Options {
    std::string symbol;
    ListView view;
};

int Run(const GlobalOptions& global, Options& options) {
    options.view.what = "chain " + options.symbol;
    if (const int status = RefuseOffline(global, "chain"); status != kExitOk) return status;
    CliSession session;
    if (const int status = session.Start(global); status != kExitOk) return status;
    ListBoard board(false);
    board.SetDefaultFields(BoardFields());
    OptionFilterRecord filter;
    if (!board.SecOptionChain(options.symbol.c_str(), RTSECTYPE_NOT_KNOWN,
                              *reinterpret_cast<RTSec_OptionFilter*>(&filter), 0)) {
        std::fprintf(stderr, "qvnrt-cli: %s: the service has no options on it\n",
                     options.view.what.c_str());
        return kExitIncomplete;
    }
    return ShowList(global, session, board, options.view);
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbol, "the underlying security")->required();
    AddListViewOptions(command, options->view);
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "chain", "the option chain of a security, with live quotes", 45, Setup};

}  // namespace
}  // namespace qvnrt::cli
