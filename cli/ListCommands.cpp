#include "cli/ListCommands.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>

#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/RTServer.h>

#include "cli/CliSession.h"
#include "cli/History.h"
#include "cli/ListBoard.h"

namespace qvnrt::cli {
namespace {

constexpr double kAnswerWaitSeconds = 10.0;  // for a list's rows or a history to arrive
constexpr double kPipeSeconds = 1.0;         // quotes a pipe waits for before its one board
constexpr int kChartHeight = 16;
constexpr int kPipeWidth = 100;
constexpr int kUsage = 2;

// The option-chain filter as the simulation driver reads it; all zero asks for the whole
// chain. Like EODDATA, its layout is agreed between application and driver.
struct OptionFilterRecord {
    uint32_t expiry = 0;
    float minStrike = 0;
    float maxStrike = 0;
    char kind = 0;
    char reserved[3] = {};
};

bool Terminal() { return ::isatty(STDOUT_FILENO) != 0; }

// The terminal's size, or none for a pipe.
bool TerminalSize(int& width, int& height) {
    winsize size{};
    if (!Terminal() || ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return false;
    }
    width = size.ws_col;
    height = size.ws_row;
    return true;
}

int SortKeyOf(const std::string& name) {
    static const std::map<std::string, int> keys{
        {"", kSortNone}, {"last", kSortLast}, {"change", kSortChange}, {"volume", kSortVolume}};
    const auto found = keys.find(name);
    return found == keys.end() ? -1 : found->second;
}

RTSecurityType TypeOf(const ListOptions& options, int any) {
    return static_cast<RTSecurityType>(options.type >= 0 ? options.type : any);
}

// Draws the board in place on a terminal, cut to its size; a pipe gets whole lines.
class BoardPrinter {
public:
    void Draw(ListBoard& board, int sortKey) {
        if (sortKey != kSortNone) board.Sort(sortKey);
        std::vector<std::string> lines = board.Lines();
        int width = 0, height = 0;
        if (TerminalSize(width, height)) {
            if (static_cast<int>(lines.size()) >= height) lines.resize(std::max(height - 1, 1));
            for (std::string& line : lines) {
                if (static_cast<int>(line.size()) > width) line.resize(width);
            }
            if (m_linesDrawn > 0) std::printf("\x1b[%dA", m_linesDrawn);
            std::printf("\x1b[J");
        }
        for (const std::string& line : lines) std::printf("%s\n", line.c_str());
        std::fflush(stdout);
        m_linesDrawn = static_cast<int>(lines.size());
    }

private:
    int m_linesDrawn = 0;
};

// Waits for the list's first round, then shows it live: on a terminal redrawn at every
// heartbeat until the time is up or Ctrl-C, on a pipe once at the end.
int ShowLive(CliSession& session, ListBoard& board, const ListOptions& options,
             bool streamQuotes, const std::string& what) {
    const int sortKey = SortKeyOf(options.sort);
    session.Run(kAnswerWaitSeconds, [&board] { return board.rounds > 0; });
    if (board.rounds == 0 || board.m_secArray.IsEmpty()) {
        std::fprintf(stderr, "qvnrt-cli: %s: nothing came\n", what.c_str());
        return 1;
    }
    // The list's own answer is one batch a row; the rows' quotes then stream.
    if (streamQuotes) board.SecRequest(0, -1);
    BoardPrinter printer;
    const bool terminal = Terminal();
    double seconds = options.seconds;
    if (!terminal && seconds == 0) seconds = kPipeSeconds;
    if (terminal) session.onHeartBeat = [&] { printer.Draw(board, sortKey); };
    session.Run(seconds);
    session.onHeartBeat = nullptr;
    printer.Draw(board, sortKey);
    board.CloseEvent();
    return 0;
}

bool Start(CliSession& session, const ListOptions& options) {
    return session.LoadDriver(options.driver) && session.Connect();
}

bool OneArgument(const ListOptions& options, const char* usage) {
    if (options.arguments.size() == 1 && SortKeyOf(options.sort) >= 0) return true;
    std::fprintf(stderr, "usage: qvnrt-cli %s [--sort last|change|volume]\n", usage);
    return false;
}

}  // namespace

int RunList(const ListOptions& options) {
    if (!OneArgument(options, "list NAME [--type N]")) return kUsage;
    CliSession session;
    if (!Start(session, options)) return 1;
    ListBoard board(false);
    board.SetDefaultFields(BoardFields());
    const std::string& name = options.arguments[0];
    if (!board.SecList(name.c_str(), TypeOf(options, RTSECTYPE_NOT_KNOWN), 0)) {
        std::fprintf(stderr, "qvnrt-cli: no list named %s\n", name.c_str());
        return 1;
    }
    return ShowLive(session, board, options, true, "list " + name);
}

int RunChain(const ListOptions& options) {
    if (!OneArgument(options, "chain SYMBOL")) return kUsage;
    CliSession session;
    if (!Start(session, options)) return 1;
    ListBoard board(false);
    board.SetDefaultFields(BoardFields());
    OptionFilterRecord filter;
    const std::string& symbol = options.arguments[0];
    if (!board.SecOptionChain(symbol.c_str(), TypeOf(options, RTSECTYPE_NOT_KNOWN),
                              *reinterpret_cast<RTSec_OptionFilter*>(&filter), 0)) {
        std::fprintf(stderr, "qvnrt-cli: no option chain for %s\n", symbol.c_str());
        return 1;
    }
    return ShowLive(session, board, options, true, "chain " + symbol);
}

int RunRanked(const ListOptions& options) {
    static const std::map<std::string, int> kinds{
        {"gainers", 1}, {"losers", 2}, {"active", 3}, {"trades", 4}};
    const auto kind = options.arguments.size() == 1 ? kinds.find(options.arguments[0])
                                                    : kinds.end();
    if (kind == kinds.end() || SortKeyOf(options.sort) < 0) {
        std::fprintf(stderr, "usage: qvnrt-cli ranked gainers|losers|active|trades [--type N] "
                             "[--rows N] [--sort last|change|volume]\n");
        return kUsage;
    }
    CliSession session;
    if (!Start(session, options)) return 1;
    ListBoard board(true);  // each round replaces the last
    if (!board.SecRankedList(kind->second, options.type >= 0 ? options.type : 0, options.rows,
                             0)) {
        std::fprintf(stderr, "qvnrt-cli: the service has no ranked list %s\n",
                     kind->first.c_str());
        return 1;
    }
    return ShowLive(session, board, options, false, "ranked " + kind->first);
}

int RunHistory(const ListOptions& options) {
    if (options.arguments.size() != 1 || options.days < 0) {
        std::fprintf(stderr, "usage: qvnrt-cli history SYMBOL [--days N] [--chart]\n");
        return kUsage;
    }
    CliSession session;
    if (!Start(session, options)) return 1;
    const std::string& symbol = options.arguments[0];
    HistorySecurity security;
    // One batch of quote fields as well: the security's display style for its prices.
    security.OpenSecurity(symbol.c_str(), TypeOf(options, RTSECTYPE_NOT_KNOWN), 0, 0);
    EodRequestRecord request;
    request.maxRecords = options.days;
    if (!security.RequestEOD(reinterpret_cast<EODDATA*>(&request), 0, 0)) {
        std::fprintf(stderr, "qvnrt-cli: no history for %s\n", symbol.c_str());
        return 1;
    }
    session.Run(kAnswerWaitSeconds, [&security] { return security.ended; });
    if (security.days.empty()) {
        std::fprintf(stderr, "qvnrt-cli: no history for %s\n", symbol.c_str());
        return 1;
    }
    for (const std::string& line : HistoryLines(security)) std::printf("%s\n", line.c_str());
    if (options.chart) {
        std::vector<Candle> candles;
        for (const auto& [date, record] : security.days) candles.push_back(CandleOf(record));
        int width = kPipeWidth, height = 0;
        TerminalSize(width, height);
        CDoubleToFractRep rep(&security);
        std::printf("\n");
        for (const std::string& line :
             DrawCandles(candles, {width, kChartHeight}, Terminal(),
                         [&rep](double price) { return std::string(rep.ToString(price)); })) {
            std::printf("%s\n", line.c_str());
        }
    }
    const int result = security.ended ? 0 : 1;
    if (!security.ended) std::fprintf(stderr, "qvnrt-cli: %s: history incomplete\n", symbol.c_str());
    security.CloseSecurity();
    return result;
}

}  // namespace qvnrt::cli
