// changes [SYMBOL]: the security changes recorded in secmaint.dat (beside the program, or in
// $QVNRT_APP_DIR), each with its symbol, time and kind, then their count and the stamp.
// Online the service first sends what is newer than the stamp; --offline reads the file
// alone.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include <qvnrt/qvnrt.h>

#include "cli/CliSession.h"

namespace qvnrt::cli {
namespace {

// The service sends a batch at connect only when it has something newer than the stamp;
// this long it is waited for before the file is read.
constexpr double kBatchWaitSeconds = 1.0;

struct Options {
    std::string symbol;
};

const std::vector<Column>& Columns() {
    static const std::vector<Column> columns = {
        {"SYMBOL", 15, false, 0, false},
        {"TIME", 19, false, 0, false},
        {"KIND", 4, false, 0, false},
    };
    return columns;
}

// Change times and stamps are the service's seconds since 1970, shown in UTC.
std::string UtcText(long seconds) {
    const time_t value = seconds;
    struct tm parts {};
    char text[32] = "-";
    if (gmtime_r(&value, &parts)) std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts);
    return text;
}

// The kinds are letters between the service and the application; anything else is shown
// by its value.
std::string KindText(char kind) {
    const auto value = static_cast<unsigned char>(kind);
    if (std::isgraph(value)) return std::string(1, kind);
    char text[8];
    std::snprintf(text, sizeof text, "0x%02x", value);
    return text;
}

Row ChangeRow(const RTSecChange& change) {
    return Row{{std::string(change.symbol, strnlen(change.symbol, sizeof change.symbol))},
               {UtcText(static_cast<long>(change.time))},
               {KindText(change.kind)}};
}

int Run(const GlobalOptions& global, const Options& options) {
    CliSession session;
    if (!session.UseCache(global.cacheDirectory)) return kExitIncomplete;
    int status = kExitOk;
    if (!global.offline) {
        if (session.LoadDriver(global.driver) && session.Connect()) {
            const long before = GetRTSecChangeTimestamp();
            session.Run(kBatchWaitSeconds,
                        [before] { return GetRTSecChangeTimestamp() != before; });
        } else {
            std::fprintf(stderr, "qvnrt-cli: showing the recorded changes instead\n");
            status = kExitIncomplete;
        }
    }
    const long stamp = GetRTSecChangeTimestamp();
    const auto [first, last] = options.symbol.empty()
                                   ? GetRTSecChangeRecords()
                                   : GetRTSecChangeInfo(options.symbol.c_str(), 0);
    if (!first) {
        std::fprintf(stderr,
                     "qvnrt-cli: secmaint.dat: cannot be opened in the program's directory "
                     "(or $QVNRT_APP_DIR)\n");
        return kExitIncomplete;
    }
    std::vector<Row> rows;
    for (const RTSecChange* change = first; change != last; ++change) {
        rows.push_back(ChangeRow(*change));
    }
    OutputSink::ToStdout(global.format, Columns()).WriteBatch(rows);
    // CSV and JSON keep standard output to the rows alone.
    FILE* summary = global.format == Format::kTable ? stdout : stderr;
    std::fprintf(summary, "%zu change%s, stamp %ld (%s)\n", rows.size(),
                 rows.size() == 1 ? "" : "s", stamp, stamp ? UtcText(stamp).c_str() : "none");
    return status;
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbol,
                       "only this symbol's changes (its first 15 "
                       "characters)");
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "changes", "the security changes recorded beside the program, with their count and stamp", 60,
    Setup};

}  // namespace
}  // namespace qvnrt::cli
