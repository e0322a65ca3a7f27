#include "cli/commands/ShowQuotes.h"

#include "cli/BoardScreen.h"
#include "cli/CliSession.h"
#include "cli/QuoteBoard.h"

namespace qvnrt::cli {
namespace {

void LiveBoard(const GlobalOptions& global, CliSession& session, QuoteBoard& board,
               double seconds, const std::string& title) {
    BoardScreen screen(stdout, QuoteBoard::Columns(), ColourWanted(stdout, global.noColour));
    // Offline, a symbol that the cache lacks gets no row: nothing is coming for it.
    const auto draw = [&] { screen.Draw(title, board.Rows(global.offline)); };
    session.onHeartBeat = draw;
    session.onResize = [&] {
        screen.Resized();
        draw();
    };
    board.Open(!global.offline);
    draw();
    if (!global.offline) session.Run(seconds);
    draw();
    session.onHeartBeat = nullptr;
    session.onResize = nullptr;
}

void StreamedRows(const GlobalOptions& global, CliSession& session, QuoteBoard& board,
                  double seconds) {
    OutputSink sink = OutputSink::ToStdout(global.format, QuoteBoard::Columns());
    if (global.offline) {
        board.Open(false);
        sink.WriteBatch(board.Rows(true));
        return;
    }
    board.onBatch = [&](size_t index) {
        if (!board.Known(index)) return;
        // A reader that has gone (`| head`) ends the run as Ctrl-C would.
        if (!sink.WriteBatch({board.RowOf(index)})) session.Stop();
    };
    board.Open(true);
    session.Run(seconds);
    board.onBatch = nullptr;
}

}  // namespace

int ShowQuotes(const GlobalOptions& global, const std::vector<std::string>& symbols,
               double seconds, const std::string& title) {
    CliSession session;
    const int status = session.Start(global);
    if (status != kExitOk) return status;
    QuoteBoard board(symbols);
    if (global.format == Format::kTable && IsTerminal(stdout)) {
        LiveBoard(global, session, board, seconds, title);
    } else {
        StreamedRows(global, session, board, seconds);
    }
    return Worse(status, board.ReportMissing(global.offline));
}

}  // namespace qvnrt::cli
