// qvnrt-cli's list, chain, ranked and history commands against the simulation driver.
#include <algorithm>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/CliRunner.h"
#include "support/TempDir.h"

namespace qvnrt::test {
namespace {

using Fields = std::vector<std::string>;

// CSV rows (nothing below is quoted), the header left out.
std::vector<Fields> CsvRows(const std::string& text) {
    std::vector<Fields> rows;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        Fields fields;
        std::istringstream in(line);
        for (std::string field; std::getline(in, field, ',');) fields.push_back(field);
        if (!fields.empty() && fields[0] != "SYMBOL" && fields[0] != "DATE") rows.push_back(fields);
    }
    return rows;
}

std::optional<double> Number(const Fields& row, size_t column) {
    if (column >= row.size() || row[column].empty()) return std::nullopt;
    return std::stod(row[column]);
}

class CliLists : public ::testing::Test {
protected:
    CliResult Csv(std::vector<std::string> arguments, std::vector<std::string> variables = {}) {
        arguments.insert(arguments.end(), {"--format", "csv"});
        variables.insert(variables.begin(), "QVNSIM_SEED=7");
        return RunCli(arguments, {work.path(), home.path(), variables});
    }

    TempDir work;
    TempDir home;
};

struct ListCase {
    std::string name;
    std::vector<std::string> arguments;
    size_t leastRows, mostRows;
    std::string symbolStart;  // every row's symbol starts so
    size_t sortedColumn;      // 0: no order asked for; else falling down this column
};

void PrintTo(const ListCase& list, std::ostream* out) { *out << list.name; }

class CliListRows : public CliLists, public ::testing::WithParamInterface<ListCase> {};

TEST_P(CliListRows, HaveTheirPricesInTheAskedOrder) {
    const ListCase& expected = GetParam();
    const CliResult run = Csv(expected.arguments);
    ASSERT_EQ(0, run.status) << run.err;
    const auto rows = CsvRows(run.out);
    EXPECT_GE(rows.size(), expected.leastRows) << run.out;
    EXPECT_LE(rows.size(), expected.mostRows) << run.out;
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(0u, rows[i][0].rfind(expected.symbolStart, 0)) << rows[i][0];
        EXPECT_TRUE(Number(rows[i], 1).has_value()) << "no last price: " << rows[i][0];
        if (expected.sortedColumn && i > 0) {
            EXPECT_GE(Number(rows[i - 1], expected.sortedColumn).value_or(-1e300),
                      Number(rows[i], expected.sortedColumn).value_or(-1e300))
                << run.out;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Commands, CliListRows,
    ::testing::Values(ListCase{"Stocks", {"list", "STOCKS"}, 5, 100, "", 0},
                      ListCase{"IndexByVolume", {"list", "$USX", "--sort", "volume"}, 3, 100, "", 5},
                      ListCase{"ChainByLast", {"chain", "ACME", "--sort", "last"}, 4, 1000, "ACME", 1},
                      ListCase{"Ranked", {"ranked", "gainers", "--rows", "5", "--seconds", "0.1"},
                               5, 5, "", 0},
                      ListCase{"RankedByChange",
                               {"ranked", "active", "--rows", "3", "--sort", "change",
                                "--seconds", "0.1"},
                               3, 3, "", 2}),
    [](const auto& info) { return info.param.name; });

TEST_F(CliLists, RankedListsComeAgainEachRound) {
    const CliResult run = Csv({"ranked", "losers", "--rows", "3", "--seconds", "2"},
                              {"QVNSIM_STEP_SECONDS=60"});
    ASSERT_EQ(0, run.status) << run.err;
    const auto rows = CsvRows(run.out);
    EXPECT_GE(rows.size(), 6u) << "two rounds at least";
    EXPECT_EQ(0u, rows.size() % 3) << run.out;
}

TEST_F(CliLists, HistoryGivesTheDaysOldestFirstAndChartsThem) {
    const CliResult csv = Csv({"history", "ACME", "--days", "30"});
    ASSERT_EQ(0, csv.status) << csv.err;
    const auto rows = CsvRows(csv.out);
    ASSERT_EQ(30u, rows.size());
    EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end()));
    EXPECT_EQ(rows.end(), std::adjacent_find(rows.begin(), rows.end(), [](auto& a, auto& b) {
                  return a[0] == b[0];
              }));
    for (const Fields& day : rows) {
        EXPECT_LE(Number(day, 3), Number(day, 4)) << "low above close: " << day[0];
        EXPECT_GE(Number(day, 2), Number(day, 4)) << "high below close: " << day[0];
    }

    const CliResult chart = RunCliInTerminal({"history", "ACME", "--days", "30", "--chart"},
                                             {work.path(), home.path(), {"QVNSIM_SEED=7"}}, 90, 60);
    ASSERT_EQ(0, chart.status) << chart.err;
    // Thirty days fit in 90 columns: the first and the last day are named under the axis.
    const size_t axis = chart.out.find("└");
    ASSERT_NE(std::string::npos, axis) << chart.out;
    EXPECT_NE(std::string::npos, chart.out.find(rows.front()[0], axis)) << chart.out;
    EXPECT_NE(std::string::npos, chart.out.find(rows.back()[0], axis)) << chart.out;
}

TEST_F(CliLists, LiveBoardOnATerminal) {
    const CliResult run = RunCliInTerminal({"list", "STOCKS", "--seconds", "1"},
                                           {work.path(), home.path(), {"QVNSIM_SEED=7"}}, 100, 30);
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_NE(std::string::npos, run.out.find("list STOCKS")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("ACME")) << run.out;
}

TEST_F(CliLists, SayWhatIsWrong) {
    const std::vector<std::pair<std::vector<std::string>, int>> cases{
        {{"history", "NOSUCH"}, 1},          {{"list", "NOSUCH"}, 1},
        {{"chain", "NOSUCH"}, 1},            {{"ranked", "sideways"}, 2},
        {{"list", "STOCKS", "--sort", "name"}, 2}, {{"--offline", "list", "STOCKS"}, 2},
        {{"history", "ACME", "--days", "0"}, 2},
    };
    for (const auto& [arguments, status] : cases) {
        const CliResult run = Csv(arguments);
        EXPECT_EQ(status, run.status) << arguments[0] << " " << arguments[1];
        EXPECT_NE("", run.err) << arguments[0] << " " << arguments[1];
        EXPECT_EQ(std::string::npos, run.out.find('\n', run.out.find('\n') + 1))
            << "no rows: " << run.out;
    }
}

}  // namespace
}  // namespace qvnrt::test
