// history SYMBOL [--days N] [--chart]: daily records as a table and, with --chart, as
// candlesticks drawn by the chart of intraday bars.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <map>
#include <memory>

#include "cli/CandleChart.h"
#include "cli/CliSession.h"
#include "cli/History.h"
#include "cli/OutputSink.h"
#include "cli/Terminal.h"

namespace qvnrt::cli {
namespace {

constexpr double kAnswerWaitSeconds = 10.0;
constexpr int kChartHeight = 16;
constexpr int kScaleWidth = 10;  // the chart's price scale, "12345.67 ┤"

struct Options {
    std::string symbol;
    int days = 0;
    bool chart = false;
};

// The intraday chart, with the dates of the first and last day shown in place of its
// weekday-and-time labels, which say nothing of daily bars. (Its marks under the axis fall
// on the first day after a gap: the start of each week.)
void PrintChart(const GlobalOptions& global, HistorySecurity& security) {
    std::map<uint32_t, RTINTRADAY_PRICEREC> bars;
    for (const auto& [date, record] : security.days) bars[date] = BarOf(record);
    ChartStyle style;
    style.width = TerminalWidth(stdout);
    style.height = kChartHeight;
    style.colour = ColourWanted(stdout, global.noColour);
    std::vector<std::string> lines = DrawCandles(bars, style);
    const size_t shown = std::min(bars.size(), static_cast<size_t>(std::max(1, style.width - kScaleWidth)));
    const std::string first = DayText(std::prev(bars.end(), static_cast<long>(shown))->first);
    const std::string last = DayText(bars.rbegin()->first);
    std::string labels(kScaleWidth, ' ');
    labels += first;
    if (shown > first.size() + last.size()) {
        labels += std::string(shown - first.size() - last.size(), ' ') + last;
    }
    if (lines.size() > 2) lines.back() = labels;
    std::printf("\n");
    for (const std::string& line : lines) std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

int Run(const GlobalOptions& global, const Options& options) {
    if (global.offline) {
        std::fprintf(stderr, "qvnrt-cli: history: only the service has it; drop --offline\n");
        return kExitUsage;
    }
    CliSession session;
    if (const int status = session.Start(global); status != kExitOk) return status;
    HistorySecurity security;
    // One batch of quote fields too: the security's display style for its prices.
    security.OpenSecurity(options.symbol.c_str(), RTSECTYPE_NOT_KNOWN, 0, 0);
    EodRequestRecord request;
    request.maxRecords = options.days;
    if (security.RequestEOD(reinterpret_cast<EODDATA*>(&request), 0, 0)) {
        session.Run(kAnswerWaitSeconds, [&security] { return security.ended; });
    }
    if (security.days.empty()) {
        std::fprintf(stderr, "qvnrt-cli: history %s: the service sent no days\n",
                     options.symbol.c_str());
        return kExitIncomplete;
    }
    OutputSink::ToStdout(global.format, HistoryColumns()).WriteBatch(HistoryRows(security));
    if (options.chart && global.format == Format::kTable) PrintChart(global, security);
    if (!security.ended) {
        std::fprintf(stderr, "qvnrt-cli: history %s: incomplete, the service did not finish\n",
                     options.symbol.c_str());
        return kExitIncomplete;
    }
    return kExitOk;
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbol, "the security")->required();
    command.add_option("--days", options->days, "the latest N days (default: the service's)")
        ->check(CLI::PositiveNumber);
    command.add_flag("--chart", options->chart, "draw the days as candlesticks too (table only)");
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "history", "daily records of a security; --chart draws candlesticks", 55, Setup};

}  // namespace
}  // namespace qvnrt::cli
