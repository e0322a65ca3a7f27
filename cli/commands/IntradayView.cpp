#include "cli/commands/IntradayView.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>

#include <qvnrt/qvnrt.h>

#include "cli/CandleChart.h"
#include "cli/QuoteText.h"
#include "cli/Terminal.h"

namespace qvnrt::cli {
namespace {

constexpr double kRulesWaitSeconds = 5.0;
constexpr double kServerTimeWaitSeconds = 1.0;
constexpr double kHistoryWaitSeconds = 30.0;
constexpr int kMaxMinutes = 1440;
constexpr float kMissingPrice = -32080.0f;
constexpr int32_t kMissingVolume = -32080;

std::vector<Column> BarColumns() {
    return {{"TIME", 19, false, 0, false}, {"OPEN", 10, true, 3, false},
            {"HIGH", 10, true, 2, false},  {"LOW", 10, true, 2, false},
            {"CLOSE", 10, true, 0, false}, {"VOLUME", 9, true, 1, false}};
}

Cell PriceCell(float value) {
    if (value == kMissingPrice) return {};
    char text[32];
    std::snprintf(text, sizeof(text), "%.6g", static_cast<double>(value));
    return {text};
}

Row BarRow(const RTINTRADAY_PRICEREC& bar, uint8_t zone) {
    Cell volume;
    if (bar.volume != kMissingVolume) volume.text = std::to_string(bar.volume);
    const int move = bar.close > bar.open ? 1 : bar.close < bar.open ? -1 : 0;
    Cell close = PriceCell(bar.close);
    if (bar.close != kMissingPrice && bar.open != kMissingPrice) close.move = move;
    return {{DateTimeText(bar.time, zone)}, PriceCell(bar.open), PriceCell(bar.high),
            PriceCell(bar.low), close, volume};
}

// The chart, drawn again over itself on a terminal.
class ChartScreen {
public:
    ChartScreen(const GlobalOptions& global, const std::string& title)
        : m_guard(stdout), m_title(title), m_terminal(IsTerminal(stdout)) {
        m_style.colour = ColourWanted(stdout, global.noColour);
    }
    void Draw(const IntradayFeed& feed) {
        m_style.width = TerminalWidth(stdout);
        m_style.zone = feed.zone();
        const auto lines = DrawCandles(feed.bars, m_style);
        std::string screen;
        if (m_terminal && m_linesDrawn > 0) {
            screen = "\r\x1b[" + std::to_string(m_linesDrawn) + "A";
        }
        if (m_terminal) screen += "\r\x1b[J";
        screen += m_title + ", " + std::to_string(feed.bars.size()) + " bars\n";
        for (const std::string& line : lines) screen += line + "\n";
        std::fputs(screen.c_str(), stdout);
        std::fflush(stdout);
        m_linesDrawn = static_cast<int>(lines.size()) + 1;
    }
    bool terminal() const { return m_terminal; }

private:
    ScreenGuard m_guard;
    std::string m_title;
    bool m_terminal;
    ChartStyle m_style;
    int m_linesDrawn = 0;
};

}  // namespace

uint32_t ServiceNow() {
    return static_cast<uint32_t>(std::time(nullptr) + RTServer::s_lServerTimeDelta) + EPOCH_1970;
}

int OpenWithRules(CliSession& session, IntradayFeed& feed, const std::string& symbol) {
    feed.OpenSecurity(symbol.c_str(), RTSECTYPE_NOT_KNOWN, 1, 0);
    session.Run(kRulesWaitSeconds, [&feed] { return feed.hasRules() || feed.closed(); });
    if (feed.closed()) {
        std::fprintf(stderr, "qvnrt-cli: %s: unknown symbol\n", symbol.c_str());
        return kExitIncomplete;
    }
    if (!feed.hasRules()) {
        std::fprintf(stderr, "qvnrt-cli: %s: the service sent no session rules\n",
                     symbol.c_str());
        return kExitIncomplete;
    }
    // Times are asked for and bars opened by the service's clock, which it tells soon after
    // connecting; a service on this machine's clock costs this short wait.
    session.Run(kServerTimeWaitSeconds, [] { return RTServer::s_lServerTimeDelta != 0; });
    return kExitOk;
}

uint32_t ParseTime(const std::string& text, uint8_t zone) {
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0;
    char separator = 0;
    int used = 0;
    const int got = std::sscanf(text.c_str(), "%4u-%2u-%2u%n%c%2u:%2u%n", &year, &month, &day,
                                &used, &separator, &hour, &minute, &used);
    if ((got != 3 && got != 6) || static_cast<size_t>(used) != text.size()) return 0;
    if (got == 6 && separator != 'T' && separator != ' ') return 0;
    if (!Date::validDate(month, day, year) || year < 1970 || hour > 23 || minute > 59) return 0;
    return Date().makeValue(month, day, year, hour, minute, 0, zone);
}

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
    if (weight < -kMaxMinutes || weight > 32767) return 0;
    return static_cast<int>(weight);
}

bool RequestAndWait(CliSession& session, IntradayFeed& feed, uint32_t start, uint32_t end,
                    int weight, bool live, bool cacheOnly) {
    if (cacheOnly && RTServer::IsConnected()) RTServer::Disconnect();
    const bool asked = feed.RequestTick(start, end, static_cast<short>(weight),
                                        live && !cacheOnly ? 1 : 0, 2, 0, 0, 0, 0, 198, nullptr,
                                        0, 0, 0, 0, 0);
    // Without a driver the cache answers at once and the request holds no handle.
    if (!asked && !(cacheOnly && feed.historyDone())) {
        std::fprintf(stderr, "qvnrt-cli: %s: the request was refused\n",
                     static_cast<const char*>(feed.m_strSymbol));
        return false;
    }
    session.Run(kHistoryWaitSeconds, [&feed] { return feed.historyDone(); });
    return true;
}

void TellOrigins(const std::string& symbol, const TickCacheCounts& before) {
    const TickCacheCounts now = GetTickCacheCounts();
    std::fprintf(stderr, "qvnrt-cli: %s: %llu records from the cache, %llu from the driver\n",
                 symbol.c_str(), now.fromCache - before.fromCache,
                 now.fromDriver - before.fromDriver);
}

int ShowBars(const GlobalOptions& global, CliSession& session, IntradayFeed& feed,
             const BarsView& view) {
    const uint8_t zone = feed.zone();
    const bool chart = view.chart && global.format == Format::kTable;
    std::unique_ptr<ChartScreen> screen;
    std::unique_ptr<OutputSink> sink;
    if (chart) {
        screen = std::make_unique<ChartScreen>(global, view.title);
        screen->Draw(feed);
    } else {
        sink = std::make_unique<OutputSink>(OutputSink::ToStdout(global.format, BarColumns()));
        std::vector<Row> rows;
        for (auto it = feed.bars.rbegin(); it != feed.bars.rend(); ++it) {
            rows.push_back(BarRow(it->second, zone));
        }
        if (!sink->WriteBatch(rows)) return kExitOk;  // the reader has gone
    }
    if (!view.live) return feed.bars.empty() ? kExitIncomplete : kExitOk;

    RTINTRADAY_PRICEREC shown = feed.bars.empty() ? RTINTRADAY_PRICEREC{} : feed.bars.rbegin()->second;
    // The heartbeat opens empty bars and moves the open one: the chart grows in place, rows
    // come whenever the newest bar changes.
    session.onHeartBeat = [&] {
        feed.OnHeartBeat();
        if (feed.bars.empty()) return;
        const RTINTRADAY_PRICEREC& newest = feed.bars.rbegin()->second;
        if (std::memcmp(&newest, &shown, sizeof(shown)) == 0) return;
        shown = newest;
        if (screen) {
            if (screen->terminal()) screen->Draw(feed);
        } else if (!sink->WriteBatch({BarRow(newest, zone)})) {
            session.Stop();
        }
    };
    session.onResize = [&] {
        if (screen && screen->terminal()) screen->Draw(feed);
    };
    session.Run(view.seconds);
    session.onHeartBeat = nullptr;
    session.onResize = nullptr;
    if (screen && !screen->terminal()) screen->Draw(feed);  // a pipe gets the final chart
    return feed.bars.empty() ? kExitIncomplete : kExitOk;
}

int Finish(IntradayFeed& feed, int status) {
    if (feed.failed()) {
        std::fprintf(stderr, "qvnrt-cli: %s: the request failed\n",
                     static_cast<const char*>(feed.m_strSymbol));
        status = kExitIncomplete;
    }
    feed.CloseSecurity();
    return status;
}

}  // namespace qvnrt::cli
