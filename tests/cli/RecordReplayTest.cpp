// Record, then replay: qvnrt-cli records a simulated session of three symbols into a data
// directory, and the replay driver serving that directory answers the same history requests
// with the same records as the simulation itself.
#include <algorithm>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TempDir.h"
#include "tests/cli/CliRunner.h"
#include "tests/drivers/ReplayHarness.h"

namespace qvnrt::test {
namespace {

using qvnreplay::test::ReplayDriver;
using qvnsim::test::Call;
using qvnsim::test::CallKind;
using qvnsim::test::DateOf;
using qvnsim::test::SimDriver;

const char* const kSymbols[] = {"ACME", "BLTN", "HRBR"};
constexpr int64_t kDay = 86400;
constexpr int64_t kStart = 1718114400;  // where both simulations start their clocks

struct History {
    std::vector<uint8_t> bytes;  // the records, newest first, packet boundaries left out
    int64_t newest = 0;
};

// One history request's records, given a driver's Dispatch and recorder.
template <typename Driver>
History Ask(Driver& driver, const char* symbol, int weight, uint32_t start, uint32_t end) {
    TICKDATA request{};
    request.weight = static_cast<int16_t>(weight);
    request.start = start;
    request.end = end;
    const unsigned long handle =
        driver.reqTicks(symbol, 98, &request, &qvnsim::test::Recorder::Tick, 9, 0);
    driver.Dispatch();
    History history;
    for (const Call& call : driver.recorder.ForRequest(CallKind::kTick, handle)) {
        history.bytes.insert(history.bytes.end(), call.bytes.begin(), call.bytes.end());
    }
    if (!history.bytes.empty()) {
        uint32_t newest = 0;
        std::memcpy(&newest, history.bytes.data(), sizeof newest);  // time leads both records
        history.newest = newest;
    }
    return history;
}

TEST(RecordReplay, TheReplayServesTheSameTicksAndMinuteBarsAsTheSimulation) {
    TempDir work, home;
    const std::string out = work.file("recorded");
    // 250 ms a step of 5 simulated seconds: three seconds record about 60 simulated seconds.
    const CliResult recorded =
        RunCli({"record", "--out", out, "--seconds", "3", "--days", "20", kSymbols[0], kSymbols[1],
                kSymbols[2]},
               {work.path(), home.path(), {"QVNSIM_SEED=7", "QVNSIM_SPEED_MS=250",
                                        "QVNSIM_START=" + std::to_string(kStart)}});
    ASSERT_EQ(recorded.status, 0) << recorded.err;

    // What the replay serves: the newest record of each kind, and the day before it.
    struct Wanted {
        History ticks, minutes;
        uint32_t tickStart, tickEnd, minuteStart, minuteEnd;
    };
    std::vector<Wanted> replayed;
    {
        ReplayDriver replay("data_dir=" + out);
        for (const char* symbol : kSymbols) {
            const int64_t newestTick = Ask(replay, symbol, 1, 0, 0).newest;
            const int64_t newestBar = Ask(replay, symbol, -1, 0, 0).newest;
            // Ticks after the start came live while the program recorded.
            ASSERT_GT(newestTick, kStart) << symbol;
            ASSERT_GT(newestBar, 0) << symbol;
            Wanted w;
            w.tickStart = DateOf(newestTick - kDay);
            w.tickEnd = DateOf(newestTick);
            // The newest minute was still forming when the recording ended: left out.
            w.minuteStart = DateOf(newestBar - kDay);
            w.minuteEnd = DateOf(newestBar - 60);
            w.ticks = Ask(replay, symbol, 1, w.tickStart, w.tickEnd);
            w.minutes = Ask(replay, symbol, -1, w.minuteStart, w.minuteEnd);
            replayed.push_back(w);
        }
    }

    SimDriver sim("seed=7;speed_ms=0;start=" + std::to_string(kStart));
    sim.Connect();
    // The simulated clock passes the end of the recording, delays included.
    int64_t newestWanted = 0;
    for (const Wanted& w : replayed) newestWanted = std::max<int64_t>(newestWanted, qvnsim::test::UnixOf(w.tickEnd));
    for (int steps = 0; sim.now() < newestWanted + 3600 && steps < 100000; ++steps) sim.Dispatch();
    for (size_t i = 0; i < replayed.size(); ++i) {
        const Wanted& w = replayed[i];
        const History ticks = Ask(sim, kSymbols[i], 1, w.tickStart, w.tickEnd);
        const History minutes = Ask(sim, kSymbols[i], -1, w.minuteStart, w.minuteEnd);
        EXPECT_FALSE(w.ticks.bytes.empty()) << kSymbols[i];
        EXPECT_EQ(ticks.bytes, w.ticks.bytes) << kSymbols[i] << " ticks";
        EXPECT_EQ(minutes.bytes, w.minutes.bytes) << kSymbols[i] << " minute bars";
    }
}

// The hand-written week served through the library, as the program shows it: the quote built
// from the latest trade and the day before the holiday, the days, the exchange, and bars of
// minutes and of ticks converted by the library from the minute bars and ticks served.
struct ServedCase {
    const char* name;
    std::vector<std::string> arguments;
    std::vector<std::string> shown;  // runs of whole lines that standard output must hold
};

void PrintTo(const ServedCase& served, std::ostream* out) {
    *out << served.name;
}

class ServedThroughTheLibrary : public testing::TestWithParam<ServedCase> {};

TEST_P(ServedThroughTheLibrary, ShowsTheHandWrittenData) {
    TempDir work, home;
    std::vector<std::string> arguments = {"--driver", QVNREPLAY_PATH, "--format", "csv"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    // The replay clock stands at the close of the week's last day, after every record.
    const CliResult result = RunCli(
        arguments,
        {work.path(), home.path(),
         {std::string("QVNREPLAY_DATA_DIR=") + QVNREPLAY_TEST_DATA, "QVNREPLAY_START=1720209600"}});
    EXPECT_EQ(result.status, 0) << result.err;
    for (const std::string& line : GetParam().shown) {
        EXPECT_NE(result.out.find(line + "\n"), std::string::npos) << line << "\n" << result.out;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Commands, ServedThroughTheLibrary,
    testing::Values(
        ServedCase{"Quote", {"snapshot", "ACME"},
                   {"ACME,52.28,+0.38,,,3100,2024-07-05,09:33:30,Acme Tools Inc"}},
        ServedCase{"Days",
                   {"history", "ACME"},
                   {"2024-07-03,52.00,52.40,51.70,51.90,61000",
                    "2024-07-05,51.90,53.00,51.80,52.75,150000"}},
        ServedCase{"Exchanges", {"exchanges"}, {"1,XNY,09:30-16:00,USD,18,0,New York Board"}},
        // Bars are cut from 9:30 and stamped with their last second; the early close and the
        // holiday leave no bar between the two days.
        ServedCase{"SevenMinuteBars",
                   {"bars", "ACME", "--width", "7m", "--days", "5"},
                   {"TIME,OPEN,HIGH,LOW,CLOSE,VOLUME\n"
                    "2024-07-05 09:36:59,51.9,52.4,51.85,52.35,9600\n"
                    "2024-07-03 12:59:59,51.95,51.96,51.88,51.9,2000"}},
        ServedCase{"TwoMinuteBars",
                   {"bars", "ACME", "--width", "2m", "--days", "5"},
                   {"2024-07-05 09:35:59,52.28,52.4,52.2,52.35,1700\n"
                    "2024-07-05 09:33:59,52.15,52.3,52.01,52.28,3500\n"
                    "2024-07-05 09:31:59,51.9,52.2,51.85,52.15,4400\n"
                    "2024-07-03 12:59:59,51.95,51.96,51.88,51.9,2000"}},
        ServedCase{"ThreeTickBars",
                   {"bars", "ACME", "--width", "3t", "--days", "5"},
                   {"2024-07-05 09:33:30,52.05,52.28,52.05,52.28,850\n"
                    "2024-07-05 09:32:05,52.2,52.2,52.01,52.01,1250\n"
                    "2024-07-05 09:30:45,51.9,52.05,51.9,52,1000"}}),
    [](const testing::TestParamInfo<ServedCase>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace qvnrt::test
