// The replay driver over the hand-written data directory (a week of a 9:30 to 16:00 stock
// around the holiday of 4 July 2024 and the early close before it), through its entry points.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TempDir.h"
#include "tests/drivers/ReplayHarness.h"

namespace qvnreplay::test {
namespace {

using qvnsim::test::DateOf;

constexpr int64_t kJuly5Open = 1720186200;  // 2024-07-05 09:30 in New York

// The data rows of a file of the hand-written set: the lines after its header.
size_t RowsOf(const std::string& name) {
    std::ifstream file(HandWrittenData() + "/" + name);
    std::string line;
    size_t rows = 0;
    while (std::getline(file, line)) rows += line.empty() ? 0 : 1;
    return rows - 1;
}

std::vector<int64_t> TimesOf(const Call& packet) {
    std::vector<int64_t> times;
    if (packet.type == RTREC_TICKREC) {
        for (const TICKREC& r : packet.Records<TICKREC>()) times.push_back(uint32_t{r.time});
    } else {
        for (const RTINTRADAY_PRICEREC& r : packet.Records<RTINTRADAY_PRICEREC>()) {
            times.push_back(r.time);
        }
    }
    return times;
}

struct HistoryCase {
    const char* name;
    int weight;
    const char* file;
    int packet;
};

void PrintTo(const HistoryCase& history, std::ostream* out) {
    *out << history.name;
}

class ReplayHistory : public testing::TestWithParam<HistoryCase> {};

TEST_P(ReplayHistory, ComesNewestFirstInPacketsOfTheConfiguredSizeThenTheEndCall) {
    const HistoryCase& c = GetParam();
    ReplayDriver driver("data_dir=" + HandWrittenData() +
                        ";packet_records=" + std::to_string(c.packet));
    ASSERT_TRUE(driver.configured);
    TICKDATA request{};
    request.weight = static_cast<int16_t>(c.weight);
    const unsigned long handle = driver.History("ACME", request);
    ASSERT_NE(handle, 0u);
    EXPECT_TRUE(driver.recorder.ForRequest(CallKind::kTick, handle).empty()) << "answered early";
    driver.Dispatch();

    const std::vector<Call> calls = driver.recorder.ForRequest(CallKind::kTick, handle);
    ASSERT_FALSE(calls.empty());
    EXPECT_EQ(calls.back().status, 0);
    EXPECT_FALSE(calls.back().hasData);
    std::vector<int64_t> times;
    for (size_t i = 0; i + 1 < calls.size(); ++i) {
        EXPECT_TRUE(calls[i].inDispatch);
        EXPECT_EQ(calls[i].flags, 0) << "history is not live";
        EXPECT_LE(calls[i].status, c.packet);
        const std::vector<int64_t> packet = TimesOf(calls[i]);
        times.insert(times.end(), packet.begin(), packet.end());
    }
    EXPECT_EQ(times.size(), RowsOf(c.file));
    EXPECT_TRUE(std::is_sorted(times.rbegin(), times.rend())) << "newest first";
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ReplayHistory,
    testing::Values(HistoryCase{"TicksOneByOne", 1, "ACME.ticks.csv", 1},
                    HistoryCase{"TicksInThrees", 1, "ACME.ticks.csv", 3},
                    HistoryCase{"BarsInTwos", -1, "ACME.1m.csv", 2},
                    HistoryCase{"BarsInOnePacket", -1, "ACME.1m.csv", 500}),
    [](const testing::TestParamInfo<HistoryCase>& info) { return std::string(info.param.name); });

TEST(ReplayDriver, ABoundedRequestGetsOnlyItsSpan) {
    ReplayDriver driver("data_dir=" + HandWrittenData());
    TICKDATA request{};
    request.weight = -1;
    request.start = DateOf(kJuly5Open + 60);
    request.end = DateOf(kJuly5Open + 179);
    const unsigned long handle = driver.History("ACME", request);
    driver.Dispatch();
    const std::vector<Call> calls = driver.recorder.ForRequest(CallKind::kTick, handle);
    ASSERT_EQ(calls.size(), 2u);
    EXPECT_EQ(TimesOf(calls[0]), (std::vector<int64_t>{kJuly5Open + 120, kJuly5Open + 60}));
}

TEST(ReplayDriver, SessionRulesAndHolidaysComeFromTheListing) {
    ReplayDriver driver("data_dir=" + HandWrittenData());
    const unsigned long handle =
        driver.reqSessionInfo(const_cast<char*>("ACME"), 98, &Recorder::Session, 4);
    driver.Dispatch();
    const std::vector<Call> calls = driver.recorder.ForRequest(CallKind::kSession, handle);
    ASSERT_EQ(calls.size(), 1u);
    const SESSION_INFO rules = calls[0].Records<SESSION_INFO>().at(0);
    EXPECT_EQ(rules.size, sizeof(SESSION_INFO));
    EXPECT_EQ(rules.bSession[0], 1);
    EXPECT_EQ(rules.bSession[1], 0);
    EXPECT_EQ(rules.sStartTime[0], 9 << 8 | 30);
    EXPECT_EQ(rules.sEndTime[0], 16 << 8);
    EXPECT_EQ(rules.chTimeZone, 18);

    HOLIDAYS_INFO header{};
    std::memcpy(&header, calls[0].extra.data(), sizeof header);
    ASSERT_EQ(header.sNumHolidays, 2);
    EXPECT_EQ(header.bAreAllHolidaysFull, 0);
    HOLIDAY_ROW rows[2];
    std::memcpy(rows, calls[0].extra.data() + sizeof header, sizeof rows);
    // Sorted by date: the early close of the 3rd, then the closed 4th.
    EXPECT_EQ(rows[0].day, 3);
    EXPECT_EQ(rows[0].endTime, 13 << 8);
    EXPECT_EQ(rows[1].day, 4);
    EXPECT_EQ(rows[1].session, 4);
    EXPECT_EQ(rows[1].endTime, 0xFFFF);
}

TEST(ReplayDriver, AQuoteIsTheLatestTradeWithTheCloseOfTheTradingDayBefore) {
    ReplayDriver driver("data_dir=" + HandWrittenData());
    const std::string fields = {RTFIELD_NAME, RTFIELD_LAST, RTFIELD_PREV_CLOSE, RTFIELD_HIGH,
                                RTFIELD_LOW,  RTFIELD_VOLUME, RTFIELD_TOTAL_VOLUME,
                                RTFIELD_DISPLAY_STYLE};
    const unsigned long handle =
        driver.reqSecurities("ACME", 98, fields.c_str(), &Recorder::Security, 1, 0, 1, 0);
    driver.Dispatch();
    std::map<int, Call> got;
    for (const Call& call : driver.recorder.ForRequest(CallKind::kSecurity, handle)) {
        got.emplace(call.field, call);
    }
    ASSERT_EQ(got.size(), fields.size() + 1);  // and the end of the batch
    EXPECT_EQ(got.at(RTFIELD_NAME).text, "Acme Tools Inc");
    EXPECT_FLOAT_EQ(static_cast<float>(got.at(RTFIELD_LAST).Double()), 52.28f);
    // The 4th was a holiday: the day before the 5th is the 3rd.
    EXPECT_FLOAT_EQ(got.at(RTFIELD_PREV_CLOSE).Float(), 51.90f);
    EXPECT_FLOAT_EQ(got.at(RTFIELD_HIGH).Float(), 52.28f);
    EXPECT_FLOAT_EQ(got.at(RTFIELD_LOW).Float(), 51.90f);
    EXPECT_EQ(got.at(RTFIELD_VOLUME).Int(), 700);
    EXPECT_EQ(got.at(RTFIELD_TOTAL_VOLUME).Int(), 3100);
    EXPECT_EQ(got.at(RTFIELD_DISPLAY_STYLE).Int(), 3);
}

TEST(ReplayDriver, DaysComeInBatchesNewestBatchFirstEachOldestFirst) {
    ReplayDriver driver("data_dir=" + HandWrittenData() + ";packet_records=2");
    const unsigned long handle = driver.reqEod("ACME", 98, nullptr, &Recorder::Eod, 3, 0, 0);
    driver.Dispatch();
    std::vector<uint32_t> dates;
    const std::vector<Call> calls = driver.recorder.ForRequest(CallKind::kEod, handle);
    ASSERT_EQ(calls.size(), 4u);  // 2 + 2 + 1 days, then the end
    for (size_t i = 0; i + 1 < calls.size(); ++i) {
        const std::vector<RTPRICEREC> batch = calls[i].Records<RTPRICEREC>();
        EXPECT_TRUE(std::is_sorted(batch.begin(), batch.end(),
                                   [](const RTPRICEREC& a, const RTPRICEREC& b) {
                                       return a.date < b.date;
                                   }));
        if (i > 0) {
            EXPECT_LT(batch.back().date, calls[i - 1].Records<RTPRICEREC>().front().date);
        }
        for (const RTPRICEREC& r : batch) dates.push_back(r.date);
    }
    EXPECT_EQ(dates.size(), RowsOf("ACME.daily.csv"));
    EXPECT_EQ(calls.back().status, 0);
}

TEST(ReplayDriver, ReplayFromAStartSendsHistoryUpToItThenLiveDataOldestFirst) {
    const int64_t start = kJuly5Open + 90;
    ReplayDriver driver("data_dir=" + HandWrittenData() + ";start=" + std::to_string(start) +
                        ";speed=max;fast_step_seconds=30");
    TICKDATA request{};
    request.weight = 1;
    request.live = 1;
    const unsigned long handle = driver.History("ACME", request);
    const unsigned long quote = driver.reqSecurities(
        "ACME", 98, std::string{RTFIELD_LAST}.c_str(), &Recorder::Security, 1, 1, 1, 0);
    driver.Dispatch(8);

    std::vector<int64_t> history, live;
    bool ended = false;
    for (const Call& call : driver.recorder.ForRequest(CallKind::kTick, handle)) {
        EXPECT_TRUE(call.inDispatch);
        if (call.status == 0) {
            ended = true;
            continue;
        }
        const std::vector<int64_t> times = TimesOf(call);
        EXPECT_EQ(call.flags != 0, ended) << "live packets follow the end call";
        std::vector<int64_t>& into = call.flags != 0 ? live : history;
        into.insert(into.end(), times.begin(), times.end());
    }
    EXPECT_TRUE(std::is_sorted(history.rbegin(), history.rend()));
    EXPECT_TRUE(std::all_of(history.begin(), history.end(), [&](int64_t t) { return t <= start; }));
    EXPECT_TRUE(std::is_sorted(live.begin(), live.end()));
    EXPECT_TRUE(std::all_of(live.begin(), live.end(), [&](int64_t t) { return t > start; }));
    EXPECT_EQ(history.size() + live.size(), RowsOf("ACME.ticks.csv"));
    EXPECT_GT(driver.now(), start);

    // The streamed quote moved with the replay, to the last trade.
    const std::vector<Call> lasts = driver.recorder.ForRequest(CallKind::kSecurity, quote);
    std::vector<double> prices;
    for (const Call& call : lasts) {
        if (call.field == RTFIELD_LAST) prices.push_back(call.Double());
    }
    ASSERT_GE(prices.size(), 2u);
    EXPECT_FLOAT_EQ(static_cast<float>(prices.back()), 52.28f);
}

TEST(ReplayDriver, BadLinesAreNamedAndSkippedAndAFileOutOfOrderIsServedSorted) {
    qvnrt::test::TempDir dir;
    dir.write("B.ticks.csv",
              "time,price,volume,flag\n1720186200,10,1,0\n1720186260,x,1,0\n1720186100,11,1,0\n");
    ReplayDriver driver("data_dir=" + dir.path());
    TICKDATA request{};
    request.weight = 1;
    testing::internal::CaptureStderr();
    const unsigned long ticks = driver.History("B", request);
    request.weight = -1;
    const unsigned long bars = driver.History("B", request);  // no B.1m.csv
    const unsigned long unknown = driver.History("NOSUCH", request);
    driver.Dispatch();
    const std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_NE(reports.find("B.ticks.csv:3: malformed"), std::string::npos) << reports;
    EXPECT_NE(reports.find("B.ticks.csv:4: time out of order"), std::string::npos) << reports;

    const std::vector<Call> tickCalls = driver.recorder.ForRequest(CallKind::kTick, ticks);
    ASSERT_EQ(tickCalls.size(), 2u);
    EXPECT_EQ(TimesOf(tickCalls[0]), (std::vector<int64_t>{1720186200, 1720186100}));
    const std::vector<Call> barCalls = driver.recorder.ForRequest(CallKind::kTick, bars);
    ASSERT_EQ(barCalls.size(), 1u) << "a missing file is no data, not a failure";
    EXPECT_EQ(barCalls[0].status, 0);
    const std::vector<Call> unknownCalls = driver.recorder.ForRequest(CallKind::kTick, unknown);
    ASSERT_EQ(unknownCalls.size(), 1u);
    EXPECT_EQ(unknownCalls[0].status, -1);
}

TEST(ReplayDriver, BadSettingsAreReportedAndSkipped) {
    testing::internal::CaptureStderr();
    ReplayDriver driver("data_dir=" + HandWrittenData() + ";speed=fast;packet_records=0;colour=1");
    const std::string reports = testing::internal::GetCapturedStderr();
    EXPECT_FALSE(driver.configured);
    for (const char* named : {"speed", "packet_records", "colour"}) {
        EXPECT_NE(reports.find(named), std::string::npos) << reports;
    }
    // The good setting stood: the directory is served.
    char name[64] = {};
    long error = 1;
    driver.exchangeString(1, RTEXFIELD_LONG_NAME, name, sizeof name, &error);
    EXPECT_EQ(error, 0);
    EXPECT_STREQ(name, "New York Board");
}

}  // namespace
}  // namespace qvnreplay::test
