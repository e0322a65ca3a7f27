// qvnrt-cli against the simulation driver: quotes stream and print, and after the
// connection has ended the cache serves the same fields.
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace {

struct CliRun {
    int status = -1;
    std::string output;
};

class CliEndToEnd : public ::testing::Test {
protected:
    // Runs the program in a directory of the test's (where its cache goes), with a
    // configuration of its own and the given simulation settings. The output holds standard
    // output, and standard error too when asked.
    CliRun Cli(const std::string& arguments, const qvnrt::test::TempDir& directory,
               const std::string& simulation = "QVNSIM_SEED=7", bool withErrors = false) {
        const std::string command = "cd '" + directory.path() + "' && QVNRT_HOME='" +
                                    home.path() + "' " + simulation + " '" QVNRT_CLI_PATH "' " +
                                    arguments + (withErrors ? " 2>&1" : " 2>/dev/null");
        CliRun run;
        FILE* pipe = ::popen(command.c_str(), "r");
        if (!pipe) return run;
        char buffer[4096];
        for (size_t got; (got = std::fread(buffer, 1, sizeof(buffer), pipe)) > 0;) {
            run.output.append(buffer, got);
        }
        run.status = ::pclose(pipe);
        return run;
    }

    // The board's rows by symbol.
    static std::map<std::string, std::string> Rows(const std::string& output) {
        std::map<std::string, std::string> rows;
        std::istringstream lines(output);
        for (std::string line; std::getline(lines, line);) {
            const std::string symbol = line.substr(0, line.find(' '));
            if (!symbol.empty() && symbol != "SYMBOL") rows[symbol] = line;
        }
        return rows;
    }

    qvnrt::test::TempDir work;
    qvnrt::test::TempDir home;
};

TEST_F(CliEndToEnd, QuotesStreamAndTheCacheServesThemOffline) {
    const CliRun quotes = Cli("quotes ACME EURUSD UST10Y --seconds 2", work);
    ASSERT_EQ(0, quotes.status) << quotes.output;
    const auto live = Rows(quotes.output);
    ASSERT_EQ(3u, live.size()) << quotes.output;
    for (const auto& [symbol, row] : live) {
        EXPECT_EQ(std::string::npos, row.find(" - ")) << "a field is missing: " << row;
    }
    EXPECT_NE(std::string::npos, live.at("UST10Y").find("/32")) << "bonds show 32nds";

    // The connection is gone (the program disconnected at its end); the cache remains.
    const CliRun offline = Cli("snapshot ACME EURUSD UST10Y --offline", work);
    ASSERT_EQ(0, offline.status) << offline.output;
    EXPECT_EQ(live, Rows(offline.output));
}

TEST_F(CliEndToEnd, UnknownSymbolsAndMissingDriversAreReported) {
    const CliRun unknown = Cli("snapshot NOSUCH", work);
    EXPECT_NE(0, unknown.status);
    EXPECT_NE(std::string::npos, unknown.output.find("NOSUCH  unknown symbol"));

    const CliRun noDriver = Cli("--driver /no/such/driver.so quotes ACME --seconds 1", work);
    EXPECT_NE(0, noDriver.status);
    EXPECT_EQ(std::string::npos, noDriver.output.find("ACME"));

    const CliRun refused =
        Cli("quotes ACME --seconds 1", work, "QVNSIM_SEED=7 QVNSIM_CONNECT=refuse", true);
    EXPECT_NE(0, refused.status);
    EXPECT_NE(std::string::npos, refused.output.find("the driver refused to connect"));
}

TEST_F(CliEndToEnd, TheSimulationIsTheSameForTheSameSeed) {
    // Each run has a fresh cache, so both ask the driver; the simulation moves only when the
    // library dispatches it, so wall-clock timing cannot change what it sends.
    qvnrt::test::TempDir other;
    const std::string settings = "QVNSIM_SEED=11 QVNSIM_SPEED_MS=0";
    const CliRun first = Cli("snapshot ACME GBPUSD @OIL", work, settings);
    const CliRun second = Cli("snapshot ACME GBPUSD @OIL", other, settings);
    ASSERT_EQ(0, first.status);
    EXPECT_EQ(first.output, second.output);
    EXPECT_EQ(3u, Rows(first.output).size());
}

// Plain ticks and one-minute bars pass with their times made exchange-local; nonsense and
// unknown symbols end with honest codes.
TEST_F(CliEndToEnd, TicksAndMinutesOfTheSimulation) {
    const CliRun minutes = Cli("ticks ACME --minutes", work);
    ASSERT_EQ(0, minutes.status) << minutes.output;
    EXPECT_GT(std::count(minutes.output.begin(), minutes.output.end(), '\n'), 10);
    const CliRun ticks = Cli("ticks ACME --live --seconds 1", work);
    EXPECT_EQ(0, ticks.status);
    EXPECT_NE(std::string::npos, ticks.output.find("2024-06-1")) << ticks.output;

    EXPECT_EQ(2, WEXITSTATUS(Cli("bars ACME --width 7x", work).status));
    EXPECT_EQ(2, WEXITSTATUS(Cli("ticks ACME --from yesterday", work).status));
    EXPECT_EQ(1, WEXITSTATUS(Cli("bars NOSUCH --width 7m", work).status));
}

// Every stamp is the last second of a 7-minute bar cut from the 9:30 open, or the close;
// history comes newest first. Disabled until the calendar's general walk, which the
// simulation's holiday rows bring in, lands on the session's bars.
TEST_F(CliEndToEnd, DISABLED_BarsAreSessionAlignedAndNewestFirst) {
    const CliRun bars = Cli("bars ACME --width 7m --days 2", work);
    ASSERT_EQ(0, bars.status) << bars.output;
    std::istringstream lines(bars.output);
    std::string line, previous;
    int rows = 0;
    std::getline(lines, line);  // the header
    while (std::getline(lines, line)) {
        const std::string stamp = line.substr(0, 19);  // YYYY-MM-DD HH:MM:SS
        const int minute = std::stoi(stamp.substr(11, 2)) * 60 + std::stoi(stamp.substr(14, 2));
        EXPECT_EQ("59", stamp.substr(17, 2)) << line;
        EXPECT_TRUE((minute + 1 - (9 * 60 + 30)) % 7 == 0 || minute == 15 * 60 + 59) << line;
        if (!previous.empty()) EXPECT_LT(stamp, previous);
        previous = stamp;
        ++rows;
    }
    EXPECT_GT(rows, 0);
    const CliRun chart = Cli("bars ACME --width 30m --days 2 --chart", work);
    EXPECT_EQ(0, chart.status);
    EXPECT_NE(std::string::npos, chart.output.find("\u2588")) << chart.output;
}

}  // namespace
