// record --out DIR [--seconds N] [--days N] SYMBOL...: records a session from the driver
// into a data directory that the replay driver serves back: each symbol's listing, session
// rules, days, ticks (history, then live for N seconds) and minute bars. A summary row per
// symbol goes to standard output.
#include <memory>
#include <set>

#include <qvnrt/RTServer.h>

#include "cli/CliSession.h"
#include "cli/DataDirectoryWriter.h"
#include "cli/SymbolRecording.h"

namespace qvnrt::cli {
namespace {

constexpr double kAnswerWaitSeconds = 10.0;

struct Options {
    std::string out;
    double seconds = 60;
    int days = 250;
    std::vector<std::string> symbols;
};

RecordedExchange ExchangeOf(int number) {
    RecordedExchange e;
    e.number = number;
    long error = 0;
    auto number_of = [&](int field) {
        error = 0;
        const long value = reinterpret_cast<long>(RTServer::m_lpGetExchangeFieldAccess(number, field, &error));
        return error == 0 ? static_cast<int>(value) : 0;
    };
    auto text_of = [&](int field) {
        char buffer[128] = {};
        error = 0;
        RTServer::m_lpGetExchangeStringFieldAccess(number, field, buffer, sizeof buffer, &error);
        return error == 0 ? std::string(buffer) : std::string();
    };
    e.suffix = text_of(RTEXFIELD_SUFFIX);
    e.shortName = text_of(RTEXFIELD_SHORT_NAME);
    e.longName = text_of(RTEXFIELD_LONG_NAME);
    e.currency = text_of(RTEXFIELD_CURRENCY);
    e.openHour = number_of(RTEXFIELD_START_HOUR);
    e.openMinute = number_of(RTEXFIELD_START_MIN);
    e.closeHour = number_of(RTEXFIELD_CLOSE_HOUR);
    e.closeMinute = number_of(RTEXFIELD_CLOSE_MIN);
    // The plain shape: a property with its default.
    e.zone = static_cast<long>(RTServer::m_lpGetExchangeLong(number, RTEXPROP_ZONE, 0));
    e.delayMinutes = static_cast<long>(RTServer::m_lpGetExchangeLong(number, RTEXPROP_DELAY, 0)) & 0xFF;
    return e;
}

std::vector<Column> SummaryColumns() {
    return {{"Symbol", 8}, {"Ticks", 7, true}, {"Minutes", 7, true}, {"Days", 5, true},
            {"Sessions", 20, false, 1, true}};
}

int Run(const GlobalOptions& global, const Options& options) {
    if (global.offline) {
        std::fprintf(stderr, "qvnrt-cli: record: a recording needs the service; drop --offline\n");
        return kExitUsage;
    }
    DataDirectoryWriter writer(options.out);
    if (!writer.Prepare()) return kExitIncomplete;
    CliSession session;
    if (const int status = session.Start(global); status != kExitOk) return status;

    std::vector<std::unique_ptr<SymbolRecording>> recordings;
    for (const std::string& symbol : options.symbols) {
        recordings.push_back(std::make_unique<SymbolRecording>(symbol));
        if (!recordings.back()->Start(options.days)) {
            std::fprintf(stderr, "qvnrt-cli: record %s: the service refused a request\n", symbol.c_str());
        }
    }
    session.Run(options.seconds);
    for (const auto& recording : recordings) recording->Finish();
    const auto settled = [&recordings] {
        for (const auto& recording : recordings) {
            if (!recording->Settled()) return false;
        }
        return true;
    };
    session.Run(kAnswerWaitSeconds, settled);

    int status = settled() ? kExitOk : kExitIncomplete;
    std::vector<RecordedListing> listings;
    std::set<int> exchanges;
    std::vector<Row> rows;
    for (const auto& recording : recordings) {
        const std::string& symbol = recording->Listing().symbol;
        if (recording->Unknown()) {
            std::fprintf(stderr, "qvnrt-cli: record %s: the service does not know it\n", symbol.c_str());
            status = kExitIncomplete;
            continue;
        }
        listings.push_back(recording->Listing());
        exchanges.insert(recording->Listing().exchange);
        const std::vector<TICKREC> ticks = recording->Ticks();
        const std::vector<RTINTRADAY_PRICEREC> minutes = recording->Minutes();
        const std::vector<RTPRICEREC> days = recording->Days();
        if (!writer.WriteTicks(symbol, ticks) || !writer.WriteMinutes(symbol, minutes) ||
            !writer.WriteDays(symbol, days)) {
            status = kExitIncomplete;
        }
        rows.push_back({{symbol}, {std::to_string(ticks.size())}, {std::to_string(minutes.size())},
                        {std::to_string(days.size())},
                        {recording->Listing().hasRules
                             ? std::optional<std::string>(
                                   DataDirectoryWriter::SessionsText(recording->Listing().rules))
                             : std::nullopt}});
    }
    std::vector<RecordedExchange> exchangeRows;
    for (const int number : exchanges) exchangeRows.push_back(ExchangeOf(number));
    if (!writer.WriteListings(listings) || !writer.WriteExchanges(exchangeRows)) {
        status = kExitIncomplete;
    }
    if (status != kExitOk && !settled()) {
        std::fprintf(stderr, "qvnrt-cli: record: incomplete, the service did not finish every answer\n");
    }
    OutputSink::ToStdout(global.format, SummaryColumns()).WriteBatch(rows);
    return status;
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("--out", options->out, "the data directory to write (made when missing)")
        ->required();
    command.add_option("--seconds", options->seconds, "how long to record live ticks")
        ->check(CLI::Range(0.0, 86400.0 * 7));
    command.add_option("--days", options->days, "how many days of end-of-day history")
        ->check(CLI::Range(1, 100000));
    command.add_option("SYMBOL", options->symbols, "symbols to record")->required();
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "record", "records a session into a data directory that the replay driver serves", 75, Setup};

}  // namespace
}  // namespace qvnrt::cli
