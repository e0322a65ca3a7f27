// Record, then replay, seen through the library as an owner sees it: qvnrt-cli records a
// minute of a simulated session of three symbols, and the program shows the same ticks,
// one-minute bars and 7-minute session-aligned bars whether the simulation or the replay of
// that recording serves it.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TempDir.h"
#include "tests/cli/CliRunner.h"

namespace qvnrt::test {
namespace {

const std::vector<std::string> kSymbols = {"ACME", "BLTN", "HRBR"};
constexpr int64_t kRecordStart = 1718114400;  // a Tuesday, 10:00 at the exchange
// Both runs ask an hour after the recording began: the simulation still holds everything
// recorded, and two days back reach a Sunday, so neither run starts inside a session.
constexpr int64_t kAskedAt = kRecordStart + 3600;

struct View {
    const char* name;
    const char* command;
    std::vector<std::string> arguments;  // after the symbol
    bool newestWasForming;  // the recording ended inside the newest row's span
};

const View kViews[] = {
    {"ticks", "ticks", {"--from", "2024-06-10"}, false},
    {"minutes", "ticks", {"--from", "2024-06-10", "--minutes"}, true},
    {"7m bars", "bars", {"--width", "7m", "--days", "2"}, true},
};

// The data rows of CSV output, newest first; the header line left out.
std::vector<std::string> Rows(const std::string& out) {
    std::vector<std::string> rows;
    size_t begin = out.find('\n');
    while (begin != std::string::npos && begin + 1 < out.size()) {
        const size_t end = out.find('\n', begin + 1);
        rows.push_back(out.substr(begin + 1, end - begin - 1));
        begin = end;
    }
    return rows;
}

// Rows lead with their exchange time, written so that text order is time order.
std::string TimeOf(const std::string& row) {
    return row.substr(0, row.find(','));
}

class RecordThenReplay : public testing::Test {
protected:
    static void SetUpTestSuite() {
        s_work = new TempDir;
        TempDir home;
        // 250 ms a step of 5 simulated seconds: four seconds record a simulated minute and more.
        const CliResult recorded = RunCli(
            {"record", "--out", s_work->file("recorded"), "--seconds", "4", "--days", "5",
             kSymbols[0], kSymbols[1], kSymbols[2]},
            {s_work->path(), home.path(),
             {"QVNSIM_SEED=7", "QVNSIM_SPEED_MS=250",
              "QVNSIM_START=" + std::to_string(kRecordStart)}});
        s_recordStatus = recorded.status;
        s_recordErrors = recorded.err;
    }
    static void TearDownTestSuite() {
        delete s_work;
        s_work = nullptr;
    }
    void SetUp() override { ASSERT_EQ(s_recordStatus, 0) << s_recordErrors; }

    // One view of a symbol in CSV, served by the replay or by the simulation.
    static std::vector<std::string> Show(bool replay, const std::string& symbol, const View& view) {
        TempDir work, home;
        std::vector<std::string> arguments = {"--format", "csv"};
        std::vector<std::string> variables = {"QVNSIM_SEED=7", "QVNSIM_SPEED_MS=1000",
                                              "QVNSIM_START=" + std::to_string(kAskedAt)};
        if (replay) {
            arguments.insert(arguments.end(), {"--driver", QVNREPLAY_PATH});
            variables = {"QVNREPLAY_DATA_DIR=" + s_work->file("recorded"),
                         "QVNREPLAY_START=" + std::to_string(kAskedAt)};
        }
        arguments.push_back(view.command);
        arguments.push_back(symbol);
        arguments.insert(arguments.end(), view.arguments.begin(), view.arguments.end());
        const CliResult shown = RunCli(arguments, {work.path(), home.path(), variables});
        EXPECT_EQ(shown.status, 0) << (replay ? "replay " : "simulation ") << view.name << ": "
                                   << shown.err;
        return Rows(shown.out);
    }

    static TempDir* s_work;
    static int s_recordStatus;
    static std::string s_recordErrors;
};

TempDir* RecordThenReplay::s_work = nullptr;
int RecordThenReplay::s_recordStatus = -1;
std::string RecordThenReplay::s_recordErrors;

TEST_F(RecordThenReplay, TheOwnerSeesTheSameTicksAndBarsInBothRuns) {
    for (const std::string& symbol : kSymbols) {
        for (const View& view : kViews) {
            SCOPED_TRACE(symbol + " " + view.name);
            std::vector<std::string> replayed = Show(true, symbol, view);
            // The replay ends where the recording did; the simulation goes on to the hour.
            if (view.newestWasForming && !replayed.empty()) replayed.erase(replayed.begin());
            ASSERT_GT(replayed.size(), 1u);
            const std::string newest = TimeOf(replayed.front());
            const std::string oldest = TimeOf(replayed.back());
            ASSERT_GT(newest.substr(0, 10), "2024-06-10");  // live data was recorded too
            std::vector<std::string> simulated;
            for (const std::string& row : Show(false, symbol, view)) {
                if (TimeOf(row) <= newest && TimeOf(row) >= oldest) simulated.push_back(row);
            }
            EXPECT_EQ(simulated, replayed);
        }
    }
}

}  // namespace
}  // namespace qvnrt::test
