// qvnrt-cli against the simulation driver, run as a user runs it: its command line and exit
// status, its rows on a pipe and on a terminal, and the cache it leaves behind.
#include <filesystem>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "cli/CliRunner.h"
#include "support/TempDir.h"

namespace qvnrt::test {
namespace {

using Lines = std::vector<std::string>;

// The simulation's quotes start at 10:00 New York time; with the machine's clock on New York
// time too, quotes read the same online (exchange time) and offline (machine time).
const std::string kNewYork = "TZ=EST5EDT,M3.2.0,M11.1.0";

Lines SplitLines(const std::string& text) {
    Lines lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

// CSV rows (none of the fields below is quoted) by their first field, header left out.
std::map<std::string, Lines> CsvRows(const std::string& text) {
    std::map<std::string, Lines> rows;
    for (const std::string& line : SplitLines(text)) {
        Lines fields;
        std::istringstream in(line);
        for (std::string field; std::getline(in, field, ',');) fields.push_back(field);
        if (!fields.empty() && fields[0] != "SYMBOL") rows[fields[0]] = fields;
    }
    return rows;
}

class CliEndToEnd : public ::testing::Test {
protected:
    CliEnvironment Environment(std::vector<std::string> variables = {}) const {
        variables.insert(variables.begin(), {"QVNSIM_SEED=7", kNewYork});
        return {work.path(), home.path(), variables};
    }

    TempDir work;
    TempDir home;
};

// ---- The command line --------------------------------------------------------------------

struct UsageCase {
    std::string name;
    std::vector<std::string> arguments;
    int status;
    bool onStandardOutput;  // else on standard error, with nothing on standard output
    std::string shown;      // a text that the output must hold
};

void PrintTo(const UsageCase& usage, std::ostream* out) {
    *out << usage.name;
}

class CliUsage : public CliEndToEnd, public ::testing::WithParamInterface<UsageCase> {};

TEST_P(CliUsage, ExitStatusAndStream) {
    const UsageCase& expected = GetParam();
    const CliResult run = RunCli(expected.arguments, Environment());
    EXPECT_EQ(expected.status, run.status) << run.err;
    const std::string& shownOn = expected.onStandardOutput ? run.out : run.err;
    EXPECT_NE(std::string::npos, shownOn.find(expected.shown)) << run.out << run.err;
    EXPECT_TRUE(expected.onStandardOutput ? run.err.empty() : run.out.empty());
}

INSTANTIATE_TEST_SUITE_P(
    CommandLine, CliUsage,
    ::testing::Values(
        UsageCase{"Help", {"--help"}, 0, true, "Exit status:"},
        UsageCase{"Version", {"--version"}, 0, true, "qvnrt-cli "},
        UsageCase{"CommandHelp", {"quotes", "--help"}, 0, true, "--seconds"},
        UsageCase{"NoCommand", {}, 2, false, "subcommand is required"},
        UsageCase{"UnknownCommand", {"quotez", "ACME"}, 2, false, "unknown command 'quotez'"},
        UsageCase{"UnknownOption", {"--frob", "info"}, 2, false, "--frob"},
        UsageCase{"StrayArgument", {"info", "stray"}, 2, false, "stray"},
        UsageCase{"MissingSymbol", {"quotes"}, 2, false, "SYMBOL is required"},
        UsageCase{"NegativeSeconds", {"quotes", "ACME", "--seconds", "-1"}, 2, false,
                  "--seconds"},
        UsageCase{"UnknownFormat", {"snapshot", "ACME", "--format", "xml"}, 2, false, "xml"},
        UsageCase{"OfflineExchanges", {"--offline", "exchanges"}, 2, false, "--offline"},
        UsageCase{"NewsWithoutASearch", {"news"}, 2, false, "either symbols or --keyword"},
        UsageCase{"NewsWithBothSearches", {"news", "ACME", "--keyword", "oil"}, 2, false,
                  "either symbols or --keyword"},
        UsageCase{"StoryWithoutSource", {"story", "1"}, 2, false, "--source"},
        UsageCase{"BarsNeedAWidth", {"bars", "ACME"}, 2, false, "--width is required"},
        UsageCase{"BadWidth", {"bars", "ACME", "--width", "7x"}, 2, false, "7x: not a bar width"},
        UsageCase{"BadTime", {"ticks", "ACME", "--from", "yesterday"}, 2, false,
                  "yesterday: not a time"}),
    [](const auto& info) { return info.param.name; });

// ---- What was delivered, and the status that says so -------------------------------------

struct OutcomeCase {
    std::string name;
    std::vector<std::string> arguments;
    std::vector<std::string> simulation;
    int status;
    std::vector<std::string> told;  // texts that standard error must hold
};

void PrintTo(const OutcomeCase& outcome, std::ostream* out) {
    *out << outcome.name;
}

class CliOutcome : public CliEndToEnd, public ::testing::WithParamInterface<OutcomeCase> {};

TEST_P(CliOutcome, StatusAndReason) {
    const OutcomeCase& expected = GetParam();
    work.write("not-a-directory", "");
    const CliResult run = RunCli(expected.arguments, Environment(expected.simulation));
    EXPECT_EQ(expected.status, run.status) << run.err;
    for (const std::string& text : expected.told) {
        EXPECT_NE(std::string::npos, run.err.find(text)) << run.err;
    }
    if (expected.told.empty()) {
        EXPECT_EQ("", run.err);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Outcomes, CliOutcome,
    ::testing::Values(
        OutcomeCase{"AllKnown", {"snapshot", "ACME", "$USX"}, {}, 0, {}},
        OutcomeCase{"OneUnknown", {"snapshot", "ACME", "NOSUCH"}, {}, 1,
                    {"NOSUCH: unknown symbol"}},
        OutcomeCase{"UnknownWhileStreaming",
                    {"quotes", "NOSUCH", "ACME", "--seconds", "1"}, {}, 1, {"NOSUCH: unknown"}},
        OutcomeCase{"NotCached", {"--offline", "snapshot", "ACME"}, {}, 1,
                    {"ACME: not in the cache"}},
        OutcomeCase{"NoDriver",
                    {"--driver", "/no/such/driver.so", "snapshot", "ACME"}, {}, 1,
                    {"/no/such/driver.so", "No such file", "showing the cache instead"}},
        OutcomeCase{"Refused", {"quotes", "ACME", "--seconds", "1"}, {"QVNSIM_CONNECT=refuse"},
                    1, {"refused"}},
        OutcomeCase{"CacheNotADirectory",
                    {"--cache", "not-a-directory/cache", "snapshot", "ACME"}, {}, 1,
                    {"cache directory not-a-directory/cache: Not a directory"}},
        OutcomeCase{"Info", {"info"}, {}, 0, {}},
        OutcomeCase{"GlancePiped", {"glance", "ACME"}, {}, 0, {}},
        OutcomeCase{"GlanceUnknown", {"glance", "NOSUCH"}, {}, 1, {"NOSUCH: no quote came"}},
        OutcomeCase{"UnknownStory", {"story", "99999999", "--source", "1"}, {}, 1,
                    {"story 99999999: not available"}},
        OutcomeCase{"MinuteBars", {"ticks", "ACME", "--minutes"}, {}, 0,
                    {"ACME: 0 records from the cache"}},
        OutcomeCase{"CacheOnlyWithNothingCached", {"ticks", "ACME", "--cache-only"}, {}, 1,
                    {"0 records from the cache, 0 from the driver"}},
        OutcomeCase{"NoCacheFile", {"--offline", "cache", "ACME"}, {}, 1,
                    {"ACME: no intraday cache file"}},
        OutcomeCase{"UnknownIntraday", {"bars", "NOSUCH", "--width", "7m"}, {}, 1,
                    {"NOSUCH: unknown symbol"}}),
    [](const auto& info) { return info.param.name; });

TEST_F(CliEndToEnd, InfoNamesTheFileTheDriverCameFrom) {
    const CliResult run = RunCli({"info"}, Environment());
    ASSERT_EQ(0, run.status);
    EXPECT_NE(std::string::npos, run.out.find("/Client.DLL")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("libqvnsim.so")) << run.out;
}

// Past `ulimit -f` the write fails, is reported, and the status says the output is
// incomplete; SIGXFSZ must not end the program without a word.
TEST_F(CliEndToEnd, OutputPastTheFileSizeLimitIsReported) {
    int errors[2];
    ASSERT_EQ(0, ::pipe(errors));
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        const int out = ::open(work.file("out.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const rlimit limit{0, RLIM_INFINITY};
        if (out < 0 || ::dup2(out, 1) < 0 || ::dup2(errors[1], 2) < 0 ||
            ::setrlimit(RLIMIT_FSIZE, &limit) != 0 || ::chdir(work.path().c_str()) != 0) {
            ::_exit(126);
        }
        ::setenv("QVNRT_HOME", home.path().c_str(), 1);
        ::execl(QVNRT_CLI_PATH, "qvnrt-cli", "info", static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(errors[1]);
    std::string told;
    char buffer[256];
    for (ssize_t got; (got = ::read(errors[0], buffer, sizeof(buffer))) > 0;) told.append(buffer, got);
    ::close(errors[0]);
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    ASSERT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_EQ(1, WEXITSTATUS(status));
    EXPECT_NE(std::string::npos, told.find("standard output: File too large")) << told;
}

// ---- Rows on a pipe ----------------------------------------------------------------------

TEST_F(CliEndToEnd, CsvStreamsThroughAPipeBeforeTheEndAndCtrlCEndsCleanly) {
    CliProcess quotes({"quotes", "ACME", "$USX", "--format", "csv"}, Environment());
    std::string header, row;
    ASSERT_TRUE(quotes.ReadLine(header, std::chrono::seconds(20)));
    EXPECT_EQ("SYMBOL,LAST,CHANGE,BID,ASK,VOLUME,DATE,TIME,NAME", header);
    ASSERT_TRUE(quotes.ReadLine(row, std::chrono::seconds(20)));
    EXPECT_TRUE(quotes.Running()) << "the row came before the program ended";
    EXPECT_EQ(0, quotes.Interrupt());
}

TEST_F(CliEndToEnd, QuotesStreamAndTheCacheServesThemOffline) {
    const CliResult live = RunCli({"quotes", "ACME", "UST10Y", "$USX", "--seconds", "2",
                                   "--format", "csv"}, Environment());
    ASSERT_EQ(0, live.status) << live.err;
    const auto rows = CsvRows(live.out);  // the last row of each symbol
    ASSERT_EQ(3u, rows.size()) << live.out;
    EXPECT_NE(std::string::npos, rows.at("UST10Y")[1].find("/32")) << "bonds show 32nds";
    const Lines& index = rows.at("$USX");
    EXPECT_EQ("", index[3] + index[4] + index[5]) << "an index has no bid, ask or volume";
    EXPECT_FALSE(index[1].empty());
    EXPECT_TRUE(std::regex_match(rows.at("ACME")[6] + " " + rows.at("ACME")[7],
                                 std::regex(R"(2024-06-11 10:\d\d:\d\d)")))
        << "the date with the time, in New York";

    const CliResult offline =
        RunCli({"--offline", "snapshot", "ACME", "UST10Y", "$USX", "--format", "csv"},
               Environment());
    ASSERT_EQ(0, offline.status) << offline.err;
    EXPECT_EQ(rows, CsvRows(offline.out));
}

// ---- News ---------------------------------------------------------------------------------

// The fields of a headline line of news --format json.
struct NewsLine {
    std::string time, src, source, id, headline;
};

std::vector<NewsLine> NewsLines(const std::string& text) {
    static const std::regex kLine(
        R"re(\{"time":"([^"]*)","src":"(\d+)","source":"([^"]*)",)re"
        R"re("id":"(\d+)","headline":"(.*)"\})re");
    std::vector<NewsLine> lines;
    for (const std::string& line : SplitLines(text)) {
        std::smatch match;
        EXPECT_TRUE(std::regex_match(line, match, kLine)) << line;
        if (!match.empty()) lines.push_back({match[1], match[2], match[3], match[4], match[5]});
    }
    return lines;
}

TEST_F(CliEndToEnd, NewsComesInDateOrderAndStoryShowsTheArticle) {
    const CliResult news = RunCli({"news", "ACME", "--seconds", "1", "--format", "json"},
                                  Environment());
    ASSERT_EQ(0, news.status) << news.err;
    const std::vector<NewsLine> lines = NewsLines(news.out);
    ASSERT_FALSE(lines.empty()) << news.out;
    for (size_t i = 1; i < lines.size(); ++i) {
        EXPECT_LE(lines[i - 1].time, lines[i].time) << "in date order";
    }

    const NewsLine& last = lines.back();
    const CliResult story = RunCli({"story", last.id, "--source", last.src}, Environment());
    ASSERT_EQ(0, story.status) << story.err;
    EXPECT_EQ(last.headline, SplitLines(story.out).at(0)) << "the article opens with its headline";
    EXPECT_EQ(std::string::npos, story.out.find('\r'));
}

TEST_F(CliEndToEnd, NewsByKeyword) {
    const CliResult news = RunCli({"news", "--keyword", "dividend", "--seconds", "1",
                                   "--format", "json"}, Environment());
    ASSERT_EQ(0, news.status) << news.err;
    const Lines lines = SplitLines(news.out);
    ASSERT_FALSE(lines.empty());
    for (const std::string& line : lines) {
        EXPECT_TRUE(std::regex_search(line, std::regex(R"("headline":"[^"]*dividend)"))) << line;
    }
}

TEST_F(CliEndToEnd, JsonLinesCarryEveryColumnAndNullForWhatIsMissing) {
    const CliResult run = RunCli({"snapshot", "$USX", "--format", "json"}, Environment());
    ASSERT_EQ(0, run.status) << run.err;
    const Lines lines = SplitLines(run.out);
    ASSERT_EQ(1u, lines.size()) << run.out;
    EXPECT_TRUE(std::regex_match(lines[0], std::regex(R"(\{"symbol":"\$USX","last":"[0-9.]+",)"
                                                      R"("change":"[-+0-9.]+","bid":null,)"
                                                      R"("ask":null,"volume":null,.*\})")))
        << lines[0];
}

TEST_F(CliEndToEnd, ASixtySecondStepKeepsItsPace) {
    // At the default 250 ms a step, two seconds are about eight steps of a simulated minute.
    const CliResult run = RunCli({"quotes", "ACME", "--seconds", "2", "--format", "csv"},
                                 Environment({"QVNSIM_STEP_SECONDS=60"}));
    ASSERT_EQ(0, run.status) << run.err;
    const auto rows = CsvRows(run.out);
    ASSERT_EQ(1u, rows.count("ACME")) << run.out;
    const Lines& last = rows.at("ACME");
    const int minutes = std::stoi(last[7].substr(0, 2)) * 60 + std::stoi(last[7].substr(3, 2));
    EXPECT_GT(minutes, 10 * 60) << "the clock moved";
    EXPECT_LE(minutes, 10 * 60 + 12) << "the clock ran away: " << last[7];
}

TEST_F(CliEndToEnd, ChangesAreMergedAtConnectAndListedFromTheFile) {
    // secmaint.dat in the test's directory; the driver named by its path, since the
    // directory of the program is then no longer searched first.
    const std::string driver =
        (std::filesystem::path(QVNRT_CLI_PATH).parent_path() / "Client.DLL").string();
    const CliEnvironment environment = Environment({"QVNRT_APP_DIR=" + work.path()});
    const CliResult online =
        RunCli({"--driver", driver, "changes", "--format", "csv"}, environment);
    ASSERT_EQ(0, online.status) << online.err;
    const auto rows = CsvRows(online.out);
    ASSERT_EQ(2u, rows.size()) << online.out;
    EXPECT_EQ("S", rows.at("BLTN")[2]);
    EXPECT_NE(std::string::npos, online.err.find("2 changes, stamp ")) << online.err;

    const CliResult offline = RunCli({"--offline", "changes", "BLTN"}, environment);
    ASSERT_EQ(0, offline.status) << offline.err;
    const Lines lines = SplitLines(offline.out);
    ASSERT_EQ(3u, lines.size()) << offline.out;  // header, the row, the count
    EXPECT_EQ(0u, lines[1].find("BLTN"));
    EXPECT_EQ(0u, lines[2].find("1 change, stamp ")) << lines[2];
}

TEST_F(CliEndToEnd, TheDemoRemovesItsTemporaryConfiguration) {
    TempDir temporary;
    CliEnvironment environment = Environment({"TMPDIR=" + temporary.path()});
    environment.home.clear();  // the demo makes its own
    const CliResult run = RunCli({"demo", "--seconds", "1", "--format", "csv"}, environment);
    ASSERT_EQ(0, run.status) << run.err;
    EXPECT_NE(std::string::npos, run.out.find("UST10Y,")) << run.out;
    EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
}

// ---- The board on a terminal -------------------------------------------------------------

// Visible text: escape sequences left out.
std::string Visible(const std::string& text) {
    return std::regex_replace(text, std::regex("\x1b\\[[0-9;?]*[A-Za-z]"), "");
}

struct BoardCase {
    int columns;
    std::vector<std::string> options;
    bool colour;
    bool dated;  // wide enough for the date column
};

void PrintTo(const BoardCase& board, std::ostream* out) {
    *out << board.columns << " columns";
}

class CliBoard : public CliEndToEnd, public ::testing::WithParamInterface<BoardCase> {};

TEST_P(CliBoard, FitsTheTerminalAndRestoresIt) {
    const BoardCase& board = GetParam();
    std::vector<std::string> arguments = {"demo", "--seconds", "2"};
    arguments.insert(arguments.end(), board.options.begin(), board.options.end());
    const CliResult run =
        RunCliInTerminal(arguments, Environment({"TERM=xterm"}), board.columns, 24);
    ASSERT_EQ(0, run.status) << run.out;
    const Lines lines = SplitLines(Visible(run.out));
    int boardRows = 0;
    for (const std::string& line : lines) {
        EXPECT_LE(static_cast<int>(line.size()), board.columns) << line;
        if (line.rfind("UST10Y", 0) == 0) ++boardRows;
    }
    EXPECT_GE(boardRows, 2) << "the board was drawn, then drawn again";
    EXPECT_EQ(board.dated, run.out.find("2024-06-11 10:") != std::string::npos);
    EXPECT_EQ(board.colour, run.out.find("\x1b[32m") != std::string::npos ||
                                run.out.find("\x1b[31m") != std::string::npos);
    EXPECT_NE(std::string::npos, run.out.rfind("\x1b[?25h")) << "the cursor is back";
}

// The last drawing of the board: what follows the last "clear to the end of the screen".
Lines LastDrawing(const std::string& output) {
    const size_t start = output.rfind("\x1b[J");
    return SplitLines(Visible(output.substr(start == std::string::npos ? 0 : start)));
}

TEST_F(CliEndToEnd, TheBoardFollowsAResize) {
    const CliResult run = RunCliInTerminal(
        {"quotes", "ACME", "UST10Y", "--seconds", "2"}, Environment({"TERM=xterm"}), 132, 24,
        {std::chrono::milliseconds(800), [](int master) { ResizeTerminal(master, 50, 24); }});
    ASSERT_EQ(0, run.status) << run.out;
    const Lines last = LastDrawing(run.out);
    ASSERT_GE(last.size(), 3u);
    for (const std::string& line : last) EXPECT_LE(line.size(), 50u) << line;
}

TEST_F(CliEndToEnd, CtrlCEndsTheBoardAndLeavesTheTerminalClean) {
    const CliResult run = RunCliInTerminal(
        {"quotes", "ACME", "UST10Y"}, Environment({"TERM=xterm"}), 80, 24,
        {std::chrono::milliseconds(800), TypeCtrlC});
    EXPECT_EQ(0, run.status) << run.out;
    EXPECT_EQ(std::string::npos, run.out.find("^C")) << "no echo inside the board";
    const Lines last = LastDrawing(run.out);
    ASSERT_GE(last.size(), 3u) << run.out;
    EXPECT_EQ(0u, last[1].rfind("SYMBOL", 0)) << last[1];
    EXPECT_NE(std::string::npos, run.out.rfind("\x1b[?25h")) << "the cursor is back";
}

INSTANTIATE_TEST_SUITE_P(Widths, CliBoard,
                         ::testing::Values(BoardCase{80, {}, true, true},
                                           BoardCase{60, {"--no-color"}, false, false},
                                           BoardCase{132, {}, true, true}),
                         [](const auto& info) {
                             return "Columns" + std::to_string(info.param.columns);
                         });

}  // namespace
// ---- Intraday data --------------------------------------------------------------------

TEST_F(CliEndToEnd, TicksComeNewestFirstInExchangeTimeThenLive) {
    const CliResult run =
        RunCli({"ticks", "ACME", "--live", "--seconds", "2", "--format", "csv"}, Environment());
    ASSERT_EQ(0, run.status) << run.err;
    std::istringstream lines(run.out);
    std::string line, previous;
    std::getline(lines, line);
    EXPECT_EQ("TIME,PRICE,VOLUME", line);
    int older = 0, rows = 0;
    while (std::getline(lines, line)) {
        const std::string time = line.substr(0, line.find(','));
        if (!previous.empty() && time < previous) ++older;
        previous = time;
        ++rows;
    }
    EXPECT_GT(rows, 1);
    EXPECT_GT(older, 0);  // the history's rows go back in time
}

// Every stamp is the last second of a 7-minute bar cut from the 9:30 open, or the close;
// history comes newest first. The simulation's holiday rows take the calendar's general walk.
TEST_F(CliEndToEnd, BarsAreSessionAlignedAndNewestFirst) {
    const CliResult run = RunCli({"bars", "ACME", "--width", "7m", "--days", "2", "--format",
                                  "csv"}, Environment());
    ASSERT_EQ(0, run.status) << run.err;
    std::istringstream lines(run.out);
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
}

// Monday 11 March 2024, the day after New York moved its clocks forward under today's rules
// and three weeks before the zone table's own rules move them.
struct CalendarCase {
    std::string name;
    std::vector<std::string> options;  // added to the bars command line
    std::vector<std::string> variables;
    std::string lastBarEnd;  // of the Monday's session, in New York time
};

void PrintTo(const CalendarCase& calendar, std::ostream* out) {
    *out << calendar.name;
}

class CliCalendar : public CliEndToEnd, public ::testing::WithParamInterface<CalendarCase> {};

TEST_P(CliCalendar, MondayBarsOfTheSecondWeekOfMarch) {
    const CalendarCase& expected = GetParam();
    std::vector<std::string> arguments = {"bars", "ACME", "--width", "30m", "--days", "1",
                                          "--format", "csv"};
    arguments.insert(arguments.end(), expected.options.begin(), expected.options.end());
    std::vector<std::string> variables = expected.variables;
    variables.push_back("QVNSIM_START=2024-03-12T12:00:00Z");
    const CliResult run = RunCli(arguments, Environment(variables));
    ASSERT_EQ(0, run.status) << run.err;
    Lines monday;  // newest first
    for (const std::string& line : SplitLines(run.out)) {
        if (line.rfind("2024-03-11 ", 0) == 0) monday.push_back(line.substr(11, 8));
    }
    ASSERT_FALSE(monday.empty()) << run.out;
    EXPECT_EQ("09:59:59", monday.back()) << run.out;  // the first bar starts at the 9:30 open
    EXPECT_EQ(expected.lastBarEnd, monday.front()) << run.out;
}

INSTANTIATE_TEST_SUITE_P(
    Modes, CliCalendar,
    ::testing::Values(
        // The program's default: the library and the simulation both keep today's rules.
        CalendarCase{"ModernByDefault", {}, {}, "15:59:59"},
        // The switch reaches the simulation too, so the two still agree.
        CalendarCase{"FaithfulOnBothSides", {"--faithful-calendar"}, {}, "15:59:59"},
        // A market on today's clocks read with the old rules: its session seems to run from
        // 8:30, the first bar falls before the open and the day ends an hour early.
        CalendarCase{"FaithfulAgainstTodaysMarket",
                     {"--faithful-calendar"},
                     {"QVNSIM_CALENDAR=modern"},
                     "14:59:59"}),
    [](const ::testing::TestParamInfo<CalendarCase>& info) { return info.param.name; });

}  // namespace qvnrt::test

namespace qvnrt::test {

TEST_F(CliEndToEnd, ASecondRunIsServedFromTheCacheWhichListsItsBlocks) {
    const CliResult first = RunCli({"ticks", "ACME", "--format", "csv"}, Environment());
    ASSERT_EQ(0, first.status) << first.err;
    const CliResult cached = RunCli({"ticks", "ACME", "--cache-only", "--format", "csv"}, Environment());
    ASSERT_EQ(0, cached.status) << cached.err;
    // The newest second stays in memory until more of it can come, so it is not on disk.
    auto rows = [](const std::string& out) { return std::count(out.begin(), out.end(), '\n') - 1; };
    EXPECT_GE(rows(cached.out), rows(first.out) - 1);
    EXPECT_NE(std::string::npos, cached.err.find(std::to_string(rows(cached.out)) + " records from the cache, 0 from the driver"))
        << cached.err;

    const CliResult blocks = RunCli({"--offline", "cache", "ACME", "--format", "csv"}, Environment());
    ASSERT_EQ(0, blocks.status) << blocks.err;
    std::istringstream lines(blocks.out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ("KIND,FIRST,LAST,COUNT,LAST USE", line);
    long records = 0;
    while (std::getline(lines, line)) {
        std::vector<std::string> cells;
        std::istringstream row(line);
        for (std::string cell; std::getline(row, cell, ',');) cells.push_back(cell);
        ASSERT_EQ(5u, cells.size()) << line;
        EXPECT_EQ("ticks", cells[0]);
        EXPECT_LE(cells[1], cells[2]);
        records += std::stol(cells[3]);
    }
    EXPECT_EQ(rows(cached.out), records);
}

}  // namespace qvnrt::test
