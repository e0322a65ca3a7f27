// glance SYMBOL: the library's Symbol At A Glance panel, shown through the terminal host.
// On a terminal it is live until q or Ctrl-C, and a typed symbol replaces the first; into a
// pipe (or with --format csv or json) it is written once, when the first quote has come,
// and a symbol that never gets one exits 1.
#include <memory>

#include <qvnrt/CSymbolAtAGlanceDlg.h>

#include "cli/CliSession.h"
#include "cli/GlanceScreen.h"
#include "cli/Terminal.h"

namespace qvnrt::cli {
namespace {

constexpr double kAnswerWaitSeconds = 5.0;

struct Options {
    std::string symbol;
};

int Run(const GlobalOptions& global, const Options& options) {
    CliSession session;
    if (int status = session.Start(global); status != kExitOk) return status;
    const bool live = IsTerminal(stdout) && global.format == Format::kTable;
    bool quoted = false;
    session.host().showGlance = [&](CSymbolAtAGlanceDlg& panel) {
        ScreenGuard screenGuard(stdout);
        KeyInput keys(stdin);
        GlanceScreen screen(panel, stdout, live, ColourWanted(stdout, global.noColour));
        session.onResize = [&screen] { screen.Draw(); };
        screen.Start();
        if (live) {
            session.Run(0, [&screen] { return screen.Done(); });
        } else {
            // A request that the service refused or closed has no handle left.
            session.Run(kAnswerWaitSeconds,
                        [&] { return screen.Quoted() || panel.m_request == 0; });
            OutputSink::ToStdout(global.format, GlanceScreen::Columns()).WriteBatch(screen.Rows());
        }
        session.onResize = nullptr;
        quoted = screen.Quoted();
        return qvnrt::IDOK;
    };
    DisplaySymbolAtAGlanceDlg(nullptr, options.symbol.c_str());
    session.host().showGlance = nullptr;
    if (live) {
        std::printf("\n");
        return kExitOk;
    }
    if (!quoted) {
        std::fprintf(stderr, "qvnrt-cli: %s: no quote came\n", options.symbol.c_str());
        return kExitIncomplete;
    }
    return kExitOk;
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbol, "the symbol to show")->required();
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "glance", "one quote in full, live, with research links; type a symbol to change it", 50,
    Setup};

}  // namespace
}  // namespace qvnrt::cli
