// qvnrt-cli: the command-line program a new user runs first.
//
//   qvnrt-cli [--driver NAME] [--cache DIR] COMMAND [ARGUMENTS]
//
//   quotes SYMBOL... [--seconds N]  a live quote board, refreshed on the heartbeat
//   snapshot SYMBOL... [--offline]  one batch per symbol; offline, from the cache alone
//   exchanges                       the exchanges the driver knows
//   info                            the library's version and the driver it would load
//   demo                            quotes of a few simulated securities for a few seconds
//   ticks SYMBOL [--from T] [--to T] [--live] [--minutes]   intraday ticks or minute bars
//   bars SYMBOL --width 7m|1h|100t [--days N] [--live] [--chart]   bars of any width
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <qvnrt/qvnrt.h>

#include "cli/CliSession.h"
#include "cli/IntradayCommands.h"
#include "cli/QuoteBoard.h"

namespace {

using qvnrt::cli::CliSession;
using qvnrt::cli::QuoteBoard;

constexpr double kSnapshotWaitSeconds = 5.0;
constexpr double kDemoSeconds = 8.0;
const std::vector<std::string> kDemoSymbols = {"ACME",   "BLTN",   "THMS.L", "EURUSD",
                                               "UST10Y", "@USX",   "$USX"};

struct Options {
    std::string command;
    std::vector<std::string> symbols;
    std::string driver;
    std::string cacheDirectory;
    double seconds = 0;  // 0: until Ctrl-C
    bool offline = false;
    qvnrt::cli::IntradayOptions intraday;  // ticks and bars
};

int Usage() {
    std::fprintf(stderr,
                 "usage: qvnrt-cli [--driver NAME] [--cache DIR] COMMAND [ARGUMENTS]\n"
                 "  quotes SYMBOL... [--seconds N]  live quote board (Ctrl-C ends it)\n"
                 "  snapshot SYMBOL... [--offline]  one batch per symbol; --offline reads "
                 "the cache alone\n"
                 "  exchanges                       the exchanges the driver knows\n"
                 "  info                            version and driver\n"
                 "  demo                            a few simulated quotes for a few seconds\n"
                 "  ticks SYMBOL [--from TIME] [--to TIME] [--live] [--minutes] [--seconds N]\n"
                 "                                  intraday ticks (or one-minute bars), newest\n"
                 "                                  first; TIME is YYYY-MM-DD[THH:MM], exchange time\n"
                 "  bars SYMBOL --width 7m|30m|1h|100t [--days N] [--live] [--chart] [--seconds N]\n"
                 "                                  session-aligned bars, as a table or candles\n");
    return 2;
}

bool Parse(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--driver" && hasValue) {
            options.driver = argv[++i];
        } else if (arg == "--cache" && hasValue) {
            options.cacheDirectory = argv[++i];
        } else if (arg == "--seconds" && hasValue) {
            char* end = nullptr;
            options.seconds = std::strtod(argv[++i], &end);
            if (*end || options.seconds < 0) return false;
        } else if (arg == "--offline") {
            options.offline = true;
        } else if (arg == "--from" && hasValue) {
            options.intraday.from = argv[++i];
        } else if (arg == "--to" && hasValue) {
            options.intraday.to = argv[++i];
        } else if (arg == "--width" && hasValue) {
            options.intraday.width = argv[++i];
        } else if (arg == "--days" && hasValue) {
            char* end = nullptr;
            const long days = std::strtol(argv[++i], &end, 10);
            if (*end || days <= 0 || days > 3650) return false;
            options.intraday.days = static_cast<int>(days);
        } else if (arg == "--live") {
            options.intraday.live = true;
        } else if (arg == "--minutes") {
            options.intraday.minutes = true;
        } else if (arg == "--chart") {
            options.intraday.chart = true;
        } else if (arg.rfind("--", 0) == 0) {
            return false;
        } else if (options.command.empty()) {
            options.command = arg;
        } else {
            options.symbols.push_back(arg);
        }
    }
    return !options.command.empty();
}

int ReportUnknown(const QuoteBoard& board, size_t symbols) {
    const std::vector<std::string> unknown = board.Unknown();
    for (const std::string& symbol : unknown) {
        std::fprintf(stderr, "qvnrt-cli: unknown symbol %s\n", symbol.c_str());
    }
    return (!unknown.empty() && unknown.size() == symbols) ? 1 : 0;
}

int Quotes(const Options& options) {
    if (options.symbols.empty()) return Usage();
    CliSession session;
    if (!session.LoadDriver(options.driver) || !session.Connect()) return 1;
    QuoteBoard board(options.symbols);
    board.Open(true);
    const bool terminal = ::isatty(STDOUT_FILENO);
    if (terminal) session.onHeartBeat = [&board] { board.Redraw(stdout); };
    session.Run(options.seconds);
    session.onHeartBeat = nullptr;
    if (terminal) {
        board.Redraw(stdout);
    } else {
        board.Print(stdout);  // a pipe gets the board as it stood at the end
    }
    const int result = ReportUnknown(board, options.symbols.size());
    board.Close();
    RTServer::Disconnect();
    return result;
}

int Snapshot(const Options& options) {
    if (options.symbols.empty()) return Usage();
    CliSession session;
    bool online = false;
    if (!options.offline) {
        online = session.LoadDriver(options.driver) && session.Connect();
        if (!online) std::fprintf(stderr, "qvnrt-cli: offline: reading the cache\n");
    }
    QuoteBoard board(options.symbols);
    board.Open(false);  // offline, the cache answers at once
    if (online) session.Run(kSnapshotWaitSeconds, [&board] { return board.AllAnswered(); });
    board.Print(stdout);
    const int result = ReportUnknown(board, options.symbols.size());
    board.Close();
    if (online) RTServer::Disconnect();
    return result;
}

int Exchanges(const Options& options) {
    CliSession session;
    if (!session.LoadDriver(options.driver) || !session.Connect()) return 1;
    std::printf("NO  SHORT  HOURS        CURRENCY  ZONE  DELAY  NAME\n");
    int found = 0;
    for (long number = 0; number < 256; ++number) {
        RTExchange exchange(number);
        char shortName[32] = {}, longName[64] = {}, currency[16] = {};
        long error = -1;
        exchange.GetExchangeShortName(shortName, sizeof(shortName) - 1, &error);
        if (error != 0) continue;
        exchange.GetExchangeLongName(longName, sizeof(longName) - 1, &error);
        exchange.GetExchangeCurrency(currency, sizeof(currency) - 1, &error);
        const int startHour = exchange.GetExchangeStartHour(&error);
        const int startMinute = exchange.GetExchangeStartMin(&error);
        const int closeHour = exchange.GetExchangeCloseHour(&error);
        const int closeMinute = exchange.GetExchangeCloseMin(&error);
        const auto zone = RTSecurity::GetExchangeLong(static_cast<int>(number), RTEXPROP_ZONE, 0);
        const auto delay = RTSecurity::GetExchangeLong(static_cast<int>(number), RTEXPROP_DELAY, 0);
        std::printf("%-3ld %-6s %02d:%02d-%02d:%02d  %-9s %-5lu %-6lu %s\n", number, shortName,
                    startHour, startMinute, closeHour, closeMinute, currency, zone, delay & 0xFF,
                    longName);
        ++found;
    }
    if (found == 0) std::fprintf(stderr, "qvnrt-cli: the driver names no exchange\n");
    RTServer::Disconnect();
    return found > 0 ? 0 : 1;
}

int Info(const Options& options) {
    std::printf("QvnRT %s\n", qvnrt::LibraryVersion());
    CliSession session;
    if (!session.LoadDriver(options.driver)) return 1;
    std::printf("driver: %s\n", RTServer::m_DLLName);
    return 0;
}

// Quotes of a few simulated securities, with the embedded defaults: the cache in ./cache,
// and the configuration in a fresh directory unless QVNRT_HOME names one.
int Demo(Options options) {
    if (!std::getenv("QVNRT_HOME")) {
        char home[] = "/tmp/qvnrt-demo-XXXXXX";
        if (::mkdtemp(home)) ::setenv("QVNRT_HOME", home, 1);
    }
    options.symbols = kDemoSymbols;
    if (options.seconds == 0) options.seconds = kDemoSeconds;
    std::printf("QvnRT %s: simulated quotes for %g seconds\n", qvnrt::LibraryVersion(),
                options.seconds);
    return Quotes(options);
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!Parse(argc, argv, options)) return Usage();
    if (!options.cacheDirectory.empty()) {
        RTServer::InitCache(true, options.cacheDirectory.c_str(), 5, 0);
    }
    if (options.command == "quotes") return Quotes(options);
    if (options.command == "snapshot") return Snapshot(options);
    if (options.command == "exchanges") return Exchanges(options);
    if (options.command == "info") return Info(options);
    if (options.command == "demo") return Demo(options);
    if (options.command == "ticks" || options.command == "bars") {
        if (options.symbols.size() != 1) return Usage();
        options.intraday.symbol = options.symbols[0];
        options.intraday.driver = options.driver;
        options.intraday.seconds = options.seconds;
        const int result = options.command == "ticks" ? qvnrt::cli::Ticks(options.intraday)
                                                      : qvnrt::cli::Bars(options.intraday);
        return result == 2 ? Usage() : result;
    }
    return Usage();
}
