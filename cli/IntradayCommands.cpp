#include "cli/IntradayCommands.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include <qvnrt/qvnrt.h>

#include "cli/CandleChart.h"
#include "cli/CliSession.h"
#include "cli/IntradayFeed.h"

namespace qvnrt::cli {

namespace {

constexpr double kRulesWaitSeconds = 5.0;
constexpr double kHistoryWaitSeconds = 30.0;
constexpr int kMaxWeight = 1440;
constexpr float kMissing = -32080.0f;

int Fail(const char* text, const std::string& detail = {}) {
    std::fprintf(stderr, "qvnrt-cli: %s%s\n", text, detail.c_str());
    return 1;
}

// "YYYY-MM-DD" or "YYYY-MM-DDTHH:MM" in the zone; 0 when it does not read.
uint32_t ParseTime(const std::string& text, uint8_t zone) {
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0;
    char tail = 0;
    const int got = std::sscanf(text.c_str(), "%4u-%2u-%2u%c%2u:%2u", &year, &month, &day,
                                &tail, &hour, &minute);
    if (got != 3 && got != 6) return 0;
    if (got == 6 && tail != 'T' && tail != ' ') return 0;
    if (!Date::validDate(month, day, year) || hour > 23 || minute > 59) return 0;
    return Date().makeValue(month, day, year, hour, minute, 0, zone);
}

std::string LocalTime(uint32_t value, uint8_t zone) {
    return static_cast<const char*>(Date(value).format("%Y-%m-%d %H:%M:%S", zone));
}

// The service's clock: a simulated market may run at another time than this machine.
uint32_t Now() {
    return static_cast<uint32_t>(std::time(nullptr) + RTServer::s_lServerTimeDelta) + EPOCH_1970;
}

int TerminalWidth() {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    if (const char* columns = std::getenv("COLUMNS")) {
        const int value = std::atoi(columns);
        if (value > 0) return value;
    }
    return 80;
}

bool WantsColour() {
    const char* term = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) && !std::getenv("NO_COLOR") &&
           !(term && std::string(term) == "dumb");
}

std::string Price(float value) {
    if (value == kMissing) return "-";
    char text[32];
    std::snprintf(text, sizeof(text), "%.4g", static_cast<double>(value));
    return text;
}

void PrintTick(const TICKREC& tick, uint8_t zone) {
    std::printf("%s  %10s  %9d\n", LocalTime(tick.time, zone).c_str(), Price(tick.price).c_str(),
                tick.volume);
}

void PrintBar(const RTINTRADAY_PRICEREC& bar, uint8_t zone) {
    const std::string volume = bar.volume == -32080 ? "-" : std::to_string(bar.volume);
    std::printf("%s  %10s  %10s  %10s  %10s  %9s\n", LocalTime(bar.time, zone).c_str(),
                Price(bar.open).c_str(), Price(bar.high).c_str(), Price(bar.low).c_str(),
                Price(bar.close).c_str(), volume.c_str());
}

const char* kBarHeader =
    "TIME (LAST SECOND)         OPEN        HIGH         LOW       CLOSE     VOLUME\n";

// Opens the security and waits for its session rules, which every conversion needs.
bool OpenWithRules(CliSession& session, IntradayFeed& feed, const std::string& symbol) {
    feed.OpenSecurity(symbol.c_str(), RTSECTYPE_NOT_KNOWN, 1, 0);
    session.Run(kRulesWaitSeconds, [&feed] { return feed.hasRules() || feed.closed(); });
    if (feed.closed()) return Fail("unknown symbol ", symbol) == 0;
    if (!feed.hasRules()) return Fail("no session rules for ", symbol) == 0;
    // Times are asked for and bars opened by the service's clock, which it tells soon after
    // connecting; a service on this machine's clock costs this short wait.
    constexpr double kServerTimeWaitSeconds = 1.0;
    session.Run(kServerTimeWaitSeconds, [] { return RTServer::s_lServerTimeDelta != 0; });
    return true;
}

bool Request(IntradayFeed& feed, uint32_t start, uint32_t end, int weight, bool live) {
    return feed.RequestTick(start, end, static_cast<short>(weight), live ? 1 : 0, 2, 0, 0, 0, 0,
                            198, nullptr, 0, 0, 0, 0, 0);
}

}  // namespace

int ParseWidth(const std::string& text) {
    if (text.size() < 2) return 0;
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (end != text.c_str() + text.size() - 1 || number <= 0) return 0;
    long weight = 0;
    switch (text.back()) {
        case 'm': weight = -number; break;
        case 'h': weight = -60 * number; break;
        case 't': weight = number; break;
        default: return 0;
    }
    if (weight < -kMaxWeight || weight > 32767) return 0;
    return static_cast<int>(weight);
}

namespace {

// History of bars newest first (or the chart), then live bars as they change.
int ShowBars(CliSession& session, IntradayFeed& feed, const IntradayOptions& options,
             const std::string& title) {
    const uint8_t zone = feed.zone();
    ChartStyle style;
    style.width = TerminalWidth();
    style.colour = WantsColour();
    style.zone = zone;
    int linesDrawn = 0;
    auto draw = [&] {
        if (linesDrawn > 0) std::printf("\x1b[%dA\x1b[J", linesDrawn);
        const auto lines = DrawCandles(feed.bars, style);
        std::printf("%s  %s, %zu bars\n", options.symbol.c_str(), title.c_str(), feed.bars.size());
        for (const std::string& line : lines) std::printf("%s\n", line.c_str());
        std::fflush(stdout);
        linesDrawn = static_cast<int>(lines.size()) + 1;
    };
    if (options.chart) {
        draw();
    } else {
        std::fputs(kBarHeader, stdout);
        for (auto it = feed.bars.rbegin(); it != feed.bars.rend(); ++it) PrintBar(it->second, zone);
        std::fflush(stdout);
    }
    if (!options.live) return feed.bars.empty() ? 1 : 0;

    const bool terminal = ::isatty(STDOUT_FILENO);
    RTINTRADAY_PRICEREC shown = feed.bars.empty() ? RTINTRADAY_PRICEREC{} : feed.bars.rbegin()->second;
    // The heartbeat opens empty bars and moves the open one: the chart grows in place, the
    // table prints the newest bar whenever it changes.
    session.onHeartBeat = [&] {
        feed.OnHeartBeat();
        if (feed.bars.empty()) return;
        const RTINTRADAY_PRICEREC& newest = feed.bars.rbegin()->second;
        if (std::memcmp(&newest, &shown, sizeof(shown)) == 0) return;
        shown = newest;
        if (options.chart) {
            if (terminal) draw();
        } else {
            PrintBar(newest, zone);
            std::fflush(stdout);
        }
    };
    feed.onSessionEnd = [] {
        std::printf("-- session ended --\n");
        std::fflush(stdout);
    };
    session.Run(options.seconds);
    session.onHeartBeat = nullptr;
    if (options.chart && !terminal) draw();  // a pipe gets the chart as it stood at the end
    return feed.bars.empty() ? 1 : 0;
}

int Finish(IntradayFeed& feed, int result) {
    const bool failed = feed.failed();
    feed.CloseSecurity();
    RTServer::Disconnect();
    if (failed) return Fail("the request failed");
    return result;
}

}  // namespace

int Ticks(const IntradayOptions& options) {
    if (options.symbol.empty()) return 2;
    CliSession session;
    if (!session.LoadDriver(options.driver) || !session.Connect()) return 1;
    IntradayFeed feed;
    if (!OpenWithRules(session, feed, options.symbol)) return 1;
    const uint8_t zone = feed.zone();
    uint32_t start = Now() - 86400;
    uint32_t end = 0;
    if (!options.from.empty() && !(start = ParseTime(options.from, zone))) {
        Fail("cannot read the time ", options.from);
        return 2;
    }
    if (!options.to.empty() && !(end = ParseTime(options.to, zone))) {
        Fail("cannot read the time ", options.to);
        return 2;
    }
    if (!Request(feed, start, end, options.minutes ? -1 : 1, options.live && end == 0)) {
        return Fail("the request was refused for ", options.symbol);
    }
    session.Run(kHistoryWaitSeconds, [&feed] { return feed.historyDone(); });
    if (options.minutes) return Finish(feed, ShowBars(session, feed, options, "one-minute"));

    std::printf("TIME                      PRICE     VOLUME\n");
    for (const TICKREC& tick : feed.historyTicks) PrintTick(tick, zone);
    std::fflush(stdout);
    if (options.live) {
        feed.onLiveTicks = [zone](const TICKREC* ticks, int count) {
            for (int i = 0; i < count; ++i) PrintTick(ticks[i], zone);
            std::fflush(stdout);
        };
        session.Run(options.seconds);
    }
    return Finish(feed, feed.historyTicks.empty() ? 1 : 0);
}

int Bars(const IntradayOptions& options) {
    const int weight = ParseWidth(options.width);
    if (options.symbol.empty() || weight == 0 || options.days <= 0) {
        Fail("bars needs a symbol and --width as 7m, 30m, 1h or 100t");
        return 2;
    }
    CliSession session;
    if (!session.LoadDriver(options.driver) || !session.Connect()) return 1;
    IntradayFeed feed;
    if (!OpenWithRules(session, feed, options.symbol)) return 1;
    const uint32_t start = Now() - static_cast<uint32_t>(options.days) * 86400u;
    if (!Request(feed, start, 0, weight, options.live)) {
        return Fail("the request was refused for ", options.symbol);
    }
    session.Run(kHistoryWaitSeconds, [&feed] { return feed.historyDone(); });
    return Finish(feed, ShowBars(session, feed, options, options.width + " bars"));
}

}  // namespace qvnrt::cli
