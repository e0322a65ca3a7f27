#include "cli/commands/ShowList.h"

#include <chrono>
#include <cstdio>
#include <map>

#include "cli/BoardScreen.h"
#include "cli/OutputSink.h"
#include "cli/Terminal.h"

namespace qvnrt::cli {
namespace {

constexpr double kAnswerWaitSeconds = 10.0;

const std::map<std::string, int>& SortKeys() {
    static const std::map<std::string, int> keys{
        {"last", kSortLast}, {"change", kSortChange}, {"volume", kSortVolume}};
    return keys;
}

std::vector<Row> SortedRows(ListBoard& board, int sortKey) {
    if (sortKey != kSortNone) board.Sort(sortKey);
    return board.Rows();
}

void LiveBoard(const GlobalOptions& global, CliSession& session, ListBoard& board,
               const ListView& view, int sortKey) {
    BoardScreen screen(stdout, ListBoard::Columns(), ColourWanted(stdout, global.noColour));
    const std::string title = "qvnrt-cli " + view.what + ": Ctrl-C ends";
    const auto draw = [&] { screen.Draw(title, SortedRows(board, sortKey)); };
    session.onHeartBeat = draw;
    session.onResize = [&] {
        screen.Resized();
        draw();
    };
    draw();
    session.Run(view.seconds);
    draw();
    session.onHeartBeat = nullptr;
    session.onResize = nullptr;
}

void StreamedRounds(const GlobalOptions& global, CliSession& session, ListBoard& board,
                    const ListView& view, int sortKey) {
    OutputSink sink = OutputSink::ToStdout(global.format, ListBoard::Columns());
    if (!sink.WriteBatch(SortedRows(board, sortKey)) || view.quotes) return;
    // A ranked list comes again every round: each goes out whole as it completes, until
    // the time is up, Ctrl-C, or the reader has gone.
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(view.seconds);
    for (int written = board.rounds; !session.interrupted();) {
        double left = 0;  // no limit
        if (view.seconds > 0) {
            left = std::chrono::duration<double>(end - Clock::now()).count();
            if (left <= 0) break;
        }
        session.Run(left, [&] { return board.rounds > written; });
        if (board.rounds == written) break;
        written = board.rounds;
        if (!sink.WriteBatch(SortedRows(board, sortKey))) break;
    }
}

}  // namespace

void AddListViewOptions(CLI::App& command, ListView& view) {
    command.add_option("--seconds", view.seconds, "stop after N seconds (default: Ctrl-C)")
        ->check(CLI::NonNegativeNumber);
    command.add_option("--sort", view.sort, "order the rows by a column, largest first")
        ->check(CLI::IsMember({"last", "change", "volume"}));
}

int RefuseOffline(const GlobalOptions& global, const std::string& command) {
    if (!global.offline) return kExitOk;
    std::fprintf(stderr, "qvnrt-cli: %s: only the service knows it; drop --offline\n",
                 command.c_str());
    return kExitUsage;
}

int ShowList(const GlobalOptions& global, CliSession& session, ListBoard& board,
             const ListView& view) {
    session.Run(kAnswerWaitSeconds, [&board] { return board.rounds > 0; });
    if (session.interrupted()) return kExitIncomplete;
    if (board.rounds == 0 || board.Rows().empty()) {
        std::fprintf(stderr, "qvnrt-cli: %s: the service sent no rows\n", view.what.c_str());
        return kExitIncomplete;
    }
    const auto key = SortKeys().find(view.sort);
    const int sortKey = key == SortKeys().end() ? kSortNone : key->second;
    if (global.format == Format::kTable && IsTerminal(stdout)) {
        // The list's answer is one batch a row; from here the rows' own quotes stream.
        if (view.quotes) board.SecRequest(0, -1);
        LiveBoard(global, session, board, view, sortKey);
    } else {
        StreamedRounds(global, session, board, view, sortKey);
    }
    board.CloseEvent();
    return kExitOk;
}

}  // namespace qvnrt::cli
