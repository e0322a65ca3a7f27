// The simulation driver's side of the quote protocol, and the dispatch extension.
#include <limits.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <chrono>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/drivers/SimHarness.h"

namespace qvnsim::test {
namespace {

std::string DefaultFields() {
    std::string fields;
    for (const int f : {1, 2, 3, 4, 5, 6, 7, 59, 8}) fields.push_back(static_cast<char>(f));
    for (int f = 10; f <= 18; ++f) fields.push_back(static_cast<char>(f));
    fields += "\x1b\x1c";
    for (int f = 31; f <= 39; ++f) fields.push_back(static_cast<char>(f));
    for (int f = 41; f <= 58; ++f) fields.push_back(static_cast<char>(f));
    return fields;
}

int ExpectedType(int field) {
    if (field == 1 || field == 2 || field == 41 || field == 42) return RTDATA_TEXT;
    if (field == 4) return RTDATA_DOUBLE;
    for (const int f : {5, 10, 11, 12, 13, 14, 27, 28, 31, 32, 33, 34, 37, 40, 53, 54, 55}) {
        if (f == field) return RTDATA_FLOAT;
    }
    return RTDATA_INT;
}

const Call* FieldOf(const std::vector<Call>& calls, int field) {
    for (const Call& call : calls) {
        if (call.field == field) return &call;
    }
    return nullptr;
}

bool Readable(int fd) {
    pollfd p{fd, POLLIN, 0};
    return ::poll(&p, 1, 0) == 1 && (p.revents & POLLIN);
}

TEST(SimDriverLoading, ExportsTheWholeContractAndIsLinkedAsClientDll) {
    SimDriver sim;
    for (const char* name :
         {"clientOpenServer",         "clientCloseServer",      "clientGetPropertyLong",
          "clientGetPropertyString",  "clientGetExchangeLong",  "clientGetExchangeString",
          "clientReqSecurities",      "clientReqRankedList",    "clientReqSecurityList",
          "clientCloseEvent",         "clientModifySecurity",   "clientChangeEvent",
          "DisplayPreferencesDialog", "clientReqEodRecords",    "clientReqTickBars",
          "clientReqNewsStory",       "clientReqNewsHeadlines", "clientGetNewsSource",
          "clientReqSessionInfo",     "clientGetPollFd",        "clientDispatch"}) {
        EXPECT_TRUE(sim.Exports(name)) << name;
    }
    char link[PATH_MAX];
    char driver[PATH_MAX];
    ASSERT_NE(realpath(QVNSIM_CLIENT_DLL, link), nullptr) << QVNSIM_CLIENT_DLL;
    ASSERT_NE(realpath(QVNSIM_PATH, driver), nullptr);
    EXPECT_STREQ(link, driver);
}

TEST(SimQuotes, BatchCarriesEveryDefaultFieldInTheLibrarysTypesAndEndsWithFieldZero) {
    SimDriver sim;
    ASSERT_EQ(sim.Connect(), RTOPEN_REMOTE);
    const std::string fields = DefaultFields();
    const unsigned long handle = sim.Quotes(std::string("ACME", 5), 1, fields, false);
    ASSERT_NE(handle, 0u);
    sim.Dispatch(20);

    const std::vector<Call> calls = sim.recorder.ForRequest(CallKind::kSecurity, handle);
    ASSERT_EQ(calls.size(), fields.size() + 1) << "one batch, then nothing: not streaming";
    for (size_t i = 0; i < fields.size(); ++i) {
        const int field = static_cast<unsigned char>(fields[i]);
        EXPECT_EQ(calls[i].field, field);
        EXPECT_EQ(calls[i].status, 0);
        EXPECT_EQ(calls[i].type, ExpectedType(field)) << "field " << field;
        EXPECT_TRUE(calls[i].hasData) << "field " << field;
    }
    EXPECT_EQ(calls.back().field, RTFIELD_END);
    EXPECT_EQ(calls.back().status, 0);

    EXPECT_EQ(FieldOf(calls, 1)->text, "ACME");
    EXPECT_EQ(FieldOf(calls, 3)->Int(), 1);
    EXPECT_EQ(FieldOf(calls, 7)->Int() & RTFLAG_DELAYED, 0);
    const double last = FieldOf(calls, 4)->Double();
    EXPECT_GT(last, 0);
    EXPECT_LE(FieldOf(calls, 11)->Float(), last);
    EXPECT_GE(FieldOf(calls, 10)->Float(), last);
    EXPECT_LT(FieldOf(calls, 13)->Float(), FieldOf(calls, 14)->Float());
    EXPECT_GT(FieldOf(calls, 15)->Int(), 0) << "10:00 in New York: the market has traded";
    const int64_t quoteTime = UnixOf(static_cast<uint32_t>(FieldOf(calls, 57)->Int()));
    EXPECT_LE(quoteTime, sim.now());
    EXPECT_GT(quoteTime, sim.now() - 120);
}

TEST(SimQuotes, EachSymbolIsAnsweredUnderItsOwnHandle) {
    SimDriver sim;
    sim.Connect();
    const std::string symbols("ACME\0NOSUCH\0thms.l\nMAPPED\0", 26);
    const unsigned long first = sim.Quotes(symbols, 3, "\x01\x07\x08", false);
    ASSERT_NE(first, 0u);
    sim.Dispatch();

    const std::vector<Call> acme = sim.recorder.ForRequest(CallKind::kSecurity, first);
    ASSERT_EQ(acme.size(), 4u);
    EXPECT_EQ(acme[0].text, "ACME");

    const std::vector<Call> unknown = sim.recorder.ForRequest(CallKind::kSecurity, first + 1);
    ASSERT_EQ(unknown.size(), 1u);
    EXPECT_LT(unknown[0].status, 0);

    // The first line of a mapped symbol is the one looked up.
    const std::vector<Call> london = sim.recorder.ForRequest(CallKind::kSecurity, first + 2);
    ASSERT_EQ(london.size(), 4u);
    EXPECT_EQ(london[0].text, "THMS.L");
    EXPECT_EQ(london[1].Int() & RTFLAG_DELAYED, RTFLAG_DELAYED);
    EXPECT_EQ(london[2].Int(), 2);

    for (const Call& call : sim.recorder.Of(CallKind::kSecurity)) {
        EXPECT_GE(call.request, first);
        EXPECT_LE(call.request, first + 2);
    }
}

TEST(SimQuotes, StreamingSendsChangedFieldsInBatchesUntilClosed) {
    SimDriver sim;
    sim.Connect();
    const std::string fields("\x04\x0f\x39", 3);
    const unsigned long stream = sim.Quotes(std::string("EURUSD", 7), 1, fields, true);
    const unsigned long once = sim.Quotes(std::string("EURUSD", 7), 1, fields, false);
    sim.Dispatch(30);

    const std::vector<Call> streamed = sim.recorder.ForRequest(CallKind::kSecurity, stream);
    int batches = 0;
    bool inBatch = false;
    for (const Call& call : streamed) {
        if (call.field == RTFIELD_END) {
            ++batches;
            inBatch = false;
            continue;
        }
        inBatch = true;
        EXPECT_NE(fields.find(static_cast<char>(call.field)), std::string::npos);
    }
    EXPECT_FALSE(inBatch) << "a batch was left without its field 0";
    EXPECT_GT(batches, 5);
    EXPECT_EQ(sim.recorder.ForRequest(CallKind::kSecurity, once).size(), fields.size() + 1);

    sim.closeEvent(stream);
    const size_t before = streamed.size();
    sim.Dispatch(30);
    EXPECT_EQ(sim.recorder.ForRequest(CallKind::kSecurity, stream).size(), before);
}

TEST(SimQuotes, ModifyReplacesTheFieldsOfAStream) {
    SimDriver sim;
    sim.Connect();
    const unsigned long handle = sim.Quotes(std::string("GBPUSD", 7), 1, "\x04", true);
    sim.Dispatch(2);
    char fields[] = "\x0d\x0e";
    EXPECT_EQ(sim.modifySecurity(handle, fields), 1);
    EXPECT_EQ(sim.modifySecurity(handle + 100, fields), 0);
    const size_t before = sim.recorder.calls.size();
    sim.Dispatch(20);

    std::vector<Call> after(sim.recorder.calls.begin() + static_cast<long>(before),
                            sim.recorder.calls.end());
    ASSERT_GE(after.size(), 3u);
    EXPECT_EQ(after[0].field, 13) << "the new fields come in full first";
    EXPECT_EQ(after[1].field, 14);
    EXPECT_EQ(after[2].field, RTFIELD_END);
    for (const Call& call : after) {
        EXPECT_TRUE(call.field == 13 || call.field == 14 || call.field == 0) << call.field;
    }
}

TEST(SimDispatch, CallbacksArriveOnlyFromInsideClientDispatch) {
    SimDriver sim;
    EXPECT_EQ(sim.Connect(0), RTOPEN_PENDING);
    sim.Quotes(std::string("ACME", 5), 1, "\x01\x04", true);
    TICKDATA bars{};
    bars.weight = -1;
    bars.live = 1;
    sim.Ticks("GLXS", bars);
    sim.Eod("HRBR", nullptr, true);
    char symbol[] = "@OIL";
    sim.reqSessionInfo(symbol, 98, &Recorder::Session, 4);
    char stocks[] = "STOCKS";
    sim.reqSecurityList(stocks, 0, nullptr, nullptr, &Recorder::Security, 5, 1, 0);
    sim.reqRankedList(3, 0, 5, &Recorder::Security, 6, 0);
    char any[] = "";
    sim.reqHeadlines(any, 1, 0, 0, 5, nullptr, 0, 0, 0, &Recorder::Headline, 7, 1, 0);
    sim.raiseEvent(RTNET_EOD_PROCESSING, 1);
    EXPECT_TRUE(sim.recorder.calls.empty());

    sim.Dispatch(40);
    ASSERT_FALSE(sim.recorder.calls.empty());
    std::set<CallKind> kinds;
    for (const Call& call : sim.recorder.calls) {
        EXPECT_TRUE(call.inDispatch);
        kinds.insert(call.kind);
    }
    EXPECT_EQ(kinds.size(), 6u) << "every kind of callback was exercised";
}

TEST(SimDispatch, PollDescriptorIsReadableExactlyWhileWorkWaits) {
    {
        SimDriver sim("speed_ms=0");
        const int fd = sim.pollFd();
        ASSERT_GE(fd, 0);
        sim.Connect();
        EXPECT_TRUE(Readable(fd)) << "the server time waits for delivery";
        sim.Dispatch();
        EXPECT_FALSE(Readable(fd));
        sim.Quotes(std::string("ACME", 5), 1, "\x04", false);
        EXPECT_TRUE(Readable(fd));
        sim.Dispatch();
        EXPECT_FALSE(Readable(fd));
    }
    SimDriver paced("speed_ms=10");
    paced.Connect();
    paced.Dispatch();
    usleep(30000);
    EXPECT_TRUE(Readable(paced.pollFd())) << "the step timer ticks";
}

TEST(SimDispatch, APacedClockNeverOutrunsItsTimerHoweverOftenItIsDispatched) {
    // Streaming quotes keep answers waiting, so the descriptor is readable far more often
    // than the timer ticks; only ticks may move the clock.
    SimDriver sim("step_seconds=60");  // at the default pace of 250 ms a step
    sim.Connect();
    const long start = sim.now();
    sim.Quotes(std::string("ACME\0BLTN\0EURUSD\0$USX\0", 23), 4, DefaultFields(), true);
    const auto began = std::chrono::steady_clock::now();
    long dispatches = 0;
    while (std::chrono::steady_clock::now() - began < std::chrono::milliseconds(800)) {
        pollfd ready{sim.pollFd(), POLLIN, 0};
        if (::poll(&ready, 1, 10) > 0) {
            sim.Dispatch();
            ++dispatches;
        }
    }
    const auto elapsedMs = std::chrono::duration_cast<std::chrono::milliseconds>(
                               std::chrono::steady_clock::now() - began)
                               .count();
    const long steps = (sim.now() - start) / 60;
    EXPECT_GE(steps, 1) << "the timer moved the clock";
    EXPECT_LE(steps, elapsedMs / 250 + 1) << dispatches << " dispatches";
}

TEST(SimDispatch, ARequestClosedBeforeItsAnswerIsNeverAnswered) {
    SimDriver sim;
    sim.Connect();
    const unsigned long handle = sim.Quotes(std::string("ACME", 5), 1, "\x04", true);
    sim.closeEvent(handle);
    sim.Dispatch(5);
    EXPECT_TRUE(sim.recorder.ForRequest(CallKind::kSecurity, handle).empty());
}

TEST(SimDispatch, ClosingTheServerFromACallbackStopsAtThatCallback) {
    SimDriver sim;
    sim.Connect();
    sim.Quotes(std::string("ACME\0GLXS\0", 10), 2, DefaultFields(), true);
    int securityCalls = 0;
    sim.recorder.onCall = [&](const Call& call) {
        if (call.kind == CallKind::kSecurity && ++securityCalls == 3) sim.close();
    };
    sim.Dispatch(10);
    EXPECT_EQ(securityCalls, 3);
    EXPECT_EQ(sim.Quotes(std::string("ACME", 5), 1, "\x04", false), 0u) << "not connected";
}

}  // namespace
}  // namespace qvnsim::test
