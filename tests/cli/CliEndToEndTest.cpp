// qvnrt-cli against the simulation driver: quotes stream and print, and after the
// connection has ended the cache serves the same fields.
#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <optional>
#include <vector>
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

// The rows of a board in their printed order: symbol and the number of a column (1 last,
// 2 change, 5 volume), "-" read as nothing.
std::vector<std::pair<std::string, std::optional<double>>> Column(const std::string& output,
                                                                  int column) {
    std::vector<std::pair<std::string, std::optional<double>>> rows;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::vector<std::string> cells;
        for (std::string word; words >> word && cells.size() <= 6;) {
            if (word != "(d)") cells.push_back(word);
        }
        if (cells.size() <= static_cast<size_t>(column) || cells[0] == "SYMBOL") continue;
        const std::string& cell = cells[column];
        rows.emplace_back(cells[0], cell == "-" ? std::nullopt
                                                : std::optional<double>(std::stod(cell)));
    }
    return rows;
}

struct ListCase {
    std::string arguments;
    size_t leastRows, mostRows;
    std::string symbolStart;  // every row's symbol starts so
    int sortedColumn;         // 0: no order asked for
};

class CliLists : public CliEndToEnd, public ::testing::WithParamInterface<ListCase> {};

TEST_P(CliLists, PrintRowsWithPricesInTheAskedOrder) {
    const CliRun run = Cli(GetParam().arguments + " --seconds 1", work);
    ASSERT_EQ(0, run.status) << run.output;
    const auto rows = Column(run.output, GetParam().sortedColumn ? GetParam().sortedColumn : 1);
    EXPECT_GE(rows.size(), GetParam().leastRows) << run.output;
    EXPECT_LE(rows.size(), GetParam().mostRows) << run.output;
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(0u, rows[i].first.rfind(GetParam().symbolStart, 0)) << rows[i].first;
        EXPECT_TRUE(rows[i].second.has_value()) << run.output;
        if (GetParam().sortedColumn && i > 0 && rows[i].second) {
            EXPECT_GE(*rows[i - 1].second, *rows[i].second) << run.output;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Commands, CliLists,
    ::testing::Values(ListCase{"list STOCKS", 5, 100, "", 0},
                      ListCase{"list STOCKS --sort volume", 5, 100, "", 5},
                      ListCase{"chain ACME --sort last", 4, 1000, "ACME", 1},
                      ListCase{"ranked gainers --rows 5", 5, 5, "", 0},
                      ListCase{"ranked active --rows 3 --sort change", 3, 3, "", 2}),
    [](const ::testing::TestParamInfo<ListCase>& info) {
        std::string name;
        for (char c : info.param.arguments) {
            name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
        }
        return name;
    });

TEST_F(CliEndToEnd, HistoryPrintsDaysOldestFirstAndChartsThem) {
    const CliRun run = Cli("history ACME --days 30 --chart", work);
    ASSERT_EQ(0, run.status) << run.output;
    std::istringstream lines(run.output);
    std::vector<std::string> days;
    int chartRows = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.size() > 10 && line[4] == '-' && line[7] == '-') days.push_back(line.substr(0, 10));
        chartRows += line.find("┤") != std::string::npos;
    }
    ASSERT_EQ(30u, days.size()) << run.output;
    EXPECT_TRUE(std::is_sorted(days.begin(), days.end()));
    EXPECT_EQ(std::adjacent_find(days.begin(), days.end()), days.end());
    EXPECT_EQ(16, chartRows);
    EXPECT_NE(std::string::npos, run.output.find(days.back(), run.output.rfind("┤")));
}

TEST_F(CliEndToEnd, ListCommandsSayWhatIsWrong) {
    EXPECT_EQ(1, WEXITSTATUS(Cli("history NOSUCH", work).status));
    EXPECT_EQ(1, WEXITSTATUS(Cli("list NOSUCH", work).status));
    EXPECT_EQ(2, WEXITSTATUS(Cli("ranked sideways", work).status));
    EXPECT_EQ(2, WEXITSTATUS(Cli("list STOCKS --sort name", work).status));
}

}  // namespace
