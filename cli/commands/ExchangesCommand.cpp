// exchanges: the exchanges the driver knows, with their hours, currency, zone and delay.
#include <cstdio>

#include <qvnrt/qvnrt.h>

#include "cli/CliSession.h"

namespace qvnrt::cli {
namespace {

constexpr long kMaxExchangeNumber = 255;  // exchange numbers are a byte

const std::vector<Column>& Columns() {
    static const std::vector<Column> columns = {
        {"NO", 3, true, 0, false},       {"SHORT", 6, false, 0, false},
        {"HOURS", 11, false, 0, false},  {"CURRENCY", 8, false, 2, false},
        {"ZONE", 4, true, 3, false},     {"DELAY", 5, true, 4, false},
        {"NAME", 12, false, 5, true},
    };
    return columns;
}

std::string Text(const char* buffer) {
    return buffer;
}

std::optional<Row> ExchangeRow(long number) {
    RTExchange exchange(number);
    char shortName[32] = {}, longName[64] = {}, currency[16] = {};
    long error = -1;
    exchange.GetExchangeShortName(shortName, sizeof(shortName) - 1, &error);
    if (error != 0) return std::nullopt;
    exchange.GetExchangeLongName(longName, sizeof(longName) - 1, &error);
    exchange.GetExchangeCurrency(currency, sizeof(currency) - 1, &error);
    char hours[32];
    std::snprintf(hours, sizeof(hours), "%02d:%02d-%02d:%02d",
                  exchange.GetExchangeStartHour(&error), exchange.GetExchangeStartMin(&error),
                  exchange.GetExchangeCloseHour(&error), exchange.GetExchangeCloseMin(&error));
    const int index = static_cast<int>(number);
    const unsigned long zone = RTSecurity::GetExchangeLong(index, RTEXPROP_ZONE, 0);
    const unsigned long delay = RTSecurity::GetExchangeLong(index, RTEXPROP_DELAY, 0) & 0xFF;
    return Row{{std::to_string(number)}, {Text(shortName)},        {Text(hours)},
               {Text(currency)},         {std::to_string(zone)},   {std::to_string(delay)},
               {Text(longName)}};
}

int Run(const GlobalOptions& global) {
    if (global.offline) {
        std::fprintf(stderr, "qvnrt-cli: exchanges: only a driver knows them; drop --offline\n");
        return kExitUsage;
    }
    CliSession session;
    if (const int status = session.Start(global); status != kExitOk) return status;
    std::vector<Row> rows;
    for (long number = 0; number <= kMaxExchangeNumber; ++number) {
        if (auto row = ExchangeRow(number)) rows.push_back(std::move(*row));
    }
    if (rows.empty()) {
        std::fprintf(stderr, "qvnrt-cli: driver %s: names no exchange\n", RTServer::m_DLLName);
        return kExitIncomplete;
    }
    OutputSink::ToStdout(global.format, Columns()).WriteBatch(rows);
    return kExitOk;
}

RunCommand Setup(CLI::App&) {
    return Run;
}

const CommandRegistration kRegistration{"exchanges", "the exchanges the driver knows", 30,
                                        Setup};

}  // namespace
}  // namespace qvnrt::cli
