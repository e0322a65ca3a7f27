// Session rules, lists, exchanges, properties, news, connection events and settings.
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "tests/drivers/SimHarness.h"

namespace qvnsim::test {
namespace {

SESSION_INFO RulesOf(const Call& call) {
    SESSION_INFO rules{};
    std::memcpy(&rules, call.bytes.data(), sizeof rules);
    return rules;
}

std::vector<HOLIDAY_ROW> HolidayRows(const Call& call, HOLIDAYS_INFO& header) {
    std::memcpy(&header, call.extra.data(), sizeof header);
    std::vector<HOLIDAY_ROW> rows(static_cast<size_t>(header.sNumHolidays));
    std::memcpy(rows.data(), call.extra.data() + sizeof header, rows.size() * sizeof(HOLIDAY_ROW));
    return rows;
}

Call SessionAnswer(SimDriver& sim, const char* symbol) {
    std::string text = symbol;
    const unsigned long handle = sim.reqSessionInfo(text.data(), 98, &Recorder::Session, 1);
    sim.Dispatch();
    const std::vector<Call> calls = sim.recorder.ForRequest(CallKind::kSession, handle);
    EXPECT_EQ(calls.size(), 1u);
    return calls.empty() ? Call{CallKind::kSession, false} : calls[0];
}

// The rows of a service-built list: each a batch under one status, field 1 first.
struct Row {
    int status;
    std::vector<Call> fields;
};

std::vector<Row> RowsOf(const std::vector<Call>& calls) {
    std::vector<Row> rows;
    bool open = false;
    for (const Call& call : calls) {
        if (!open) rows.push_back({call.status, {}});
        EXPECT_EQ(call.status, rows.back().status) << "a row keeps its status";
        open = call.field != RTFIELD_END;
        if (open) rows.back().fields.push_back(call);
    }
    EXPECT_FALSE(open) << "the last row lacks its field 0";
    return rows;
}

const Call* FieldOf(const Row& row, int field) {
    for (const Call& call : row.fields) {
        if (call.field == field) return &call;
    }
    return nullptr;
}

TEST(SimSessions, AnEquityTradesNineThirtyToFourInNewYork) {
    SimDriver sim;
    sim.Connect();
    const Call answer = SessionAnswer(sim, "ACME");
    ASSERT_EQ(answer.status, 0);
    ASSERT_EQ(answer.bytes.size(), 38u);
    const SESSION_INFO rules = RulesOf(answer);
    EXPECT_EQ(rules.size, 38);
    EXPECT_EQ(rules.bSession[0], 1);
    EXPECT_EQ(rules.bSession[1] | rules.bSession[2] | rules.bSession[3], 0);
    EXPECT_EQ(rules.sStartTime[0], 0x091E);
    EXPECT_EQ(rules.sEndTime[0], 0x1000);
    EXPECT_EQ(rules.tradeDays[0] & 0xFF, 0x44);
    EXPECT_EQ(rules.chTimeZone, 18);
    EXPECT_EQ(rules.bIsFirstSessionSameDay, 1);
    EXPECT_EQ(rules.bSingleSessionStandard, 1);

    HOLIDAYS_INFO header{};
    const std::vector<HOLIDAY_ROW> rows = HolidayRows(answer, header);
    ASSERT_EQ(answer.extra.size(), 4 + 10 * rows.size());
    EXPECT_EQ(header.bAreAllHolidaysFull, 0);
    bool juneteenth = false;
    bool shortFriday = false;
    for (size_t i = 0; i < rows.size(); ++i) {
        const HOLIDAY_ROW& r = rows[i];
        if (i > 0) {
            const HOLIDAY_ROW& p = rows[i - 1];
            const auto key = [](const HOLIDAY_ROW& x) {
                return ((x.year * 12 + x.month) * 31 + x.day) * 8 + x.session;
            };
            EXPECT_LT(key(p), key(r)) << "rows sorted by date, then session";
        }
        if (r.year == 2024 && r.month == 6 && r.day == 19) {
            juneteenth = r.session == 4 && r.endTime == 0xFFFF;
        }
        if (r.year == 2024 && r.month == 11 && r.day == 29) {
            shortFriday = r.session == 0 && r.endTime == 0x0D00;
        }
    }
    EXPECT_TRUE(juneteenth);
    EXPECT_TRUE(shortFriday) << "the day after Thanksgiving closes at 13:00";
}

TEST(SimSessions, FuturesTradeOvernightAndCurrenciesRoundTheClock) {
    SimDriver sim;
    sim.Connect();
    const SESSION_INFO oil = RulesOf(SessionAnswer(sim, "@OIL"));
    EXPECT_EQ(oil.bIsFirstSessionSameDay, 0);
    EXPECT_EQ(oil.bSingleSessionStandard, 0);
    EXPECT_EQ(oil.sStartTime[0], 0x1100);
    EXPECT_EQ(oil.sEndTime[0], 0x1000) << "starts the evening before, ends next afternoon";
    EXPECT_EQ(oil.chTimeZone, 13);

    const SESSION_INFO corn = RulesOf(SessionAnswer(sim, "@CRN"));
    EXPECT_EQ(corn.bSession[0] + corn.bSession[1], 2);
    EXPECT_GT(corn.sStartTime[0], corn.sEndTime[0]);
    EXPECT_LT(corn.sEndTime[0], corn.sStartTime[1]);

    const SESSION_INFO euro = RulesOf(SessionAnswer(sim, "EURUSD"));
    EXPECT_EQ(euro.sStartTime[0], euro.sEndTime[0]) << "24 hours";

    const SESSION_INFO tokyo = RulesOf(SessionAnswer(sim, "7101.T"));
    EXPECT_EQ(tokyo.chTimeZone, 45);
    EXPECT_EQ(tokyo.bSession[1], 1) << "a lunch break splits the day";
}

TEST(SimLists, ASymbolListCountsItsRowsDownToOne) {
    SimDriver sim;
    sim.Connect();
    char name[] = "STOCKS";
    unsigned char fields[] = {RTFIELD_NAME, RTFIELD_ASSET_TYPE, RTFIELD_LAST, 0};
    const unsigned long handle =
        sim.reqSecurityList(name, 0, fields, nullptr, &Recorder::Security, 1, 1, 0);
    ASSERT_NE(handle, 0u);
    sim.Dispatch(15);

    const std::vector<Row> rows = RowsOf(sim.recorder.ForRequest(CallKind::kSecurity, handle));
    ASSERT_EQ(rows.size(), 15u);
    std::set<std::string> symbols;
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i].status, static_cast<int>(rows.size() - i));
        ASSERT_EQ(rows[i].fields.size(), 4u);
        EXPECT_EQ(rows[i].fields[0].field, RTFIELD_SYMBOL) << "the symbol leads every row";
        EXPECT_EQ(FieldOf(rows[i], RTFIELD_ASSET_TYPE)->Int(), 1);
        symbols.insert(rows[i].fields[0].text);
    }
    EXPECT_EQ(symbols.size(), rows.size());
    EXPECT_EQ(rows.back().status, 1) << "the list ends with status 1 and field 0";

    char bogus[] = "NO SUCH LIST";
    EXPECT_EQ(sim.reqSecurityList(bogus, 0, fields, nullptr, &Recorder::Security, 1, 1, 0), 0u);
}

TEST(SimLists, AnOptionChainKeepsWhatTheFilterAsks) {
    SimDriver sim;
    sim.Connect();
    char underlying[] = "acme";
    unsigned char fields[] = {37, 44, 47, 41, 0};
    QvnSimOptionFilter calls{};
    calls.kind = 'C';
    calls.minStrike = 80;
    calls.maxStrike = 90;
    const unsigned long filtered =
        sim.reqSecurityList(underlying, 9, fields, reinterpret_cast<RTSec_OptionFilter*>(&calls),
                            &Recorder::Security, 1, 1, 0);
    QvnSimOptionFilter everything{};
    const unsigned long whole = sim.reqSecurityList(
        underlying, 9, fields, reinterpret_cast<RTSec_OptionFilter*>(&everything),
        &Recorder::Security, 2, 1, 0);
    sim.Dispatch();

    const std::vector<Row> rows = RowsOf(sim.recorder.ForRequest(CallKind::kSecurity, filtered));
    ASSERT_EQ(rows.size(), 6u) << "two expiries, three strikes";
    for (const Row& row : rows) {
        EXPECT_EQ(FieldOf(row, 44)->Int(), 'C');
        EXPECT_GE(FieldOf(row, 37)->Float(), 80.0f);
        EXPECT_LE(FieldOf(row, 37)->Float(), 90.0f);
        EXPECT_EQ(FieldOf(row, 41)->text, "ACME");
        EXPECT_GT(UnixOf(static_cast<uint32_t>(FieldOf(row, 47)->Int())), sim.now() - 86400);
    }
    EXPECT_EQ(RowsOf(sim.recorder.ForRequest(CallKind::kSecurity, whole)).size(), 20u);
}

TEST(SimLists, ARankedListIsOrderedAndStartsOverEveryMinute) {
    SimDriver sim;
    sim.Connect();
    const unsigned long handle = sim.reqRankedList(1, 1, 5, &Recorder::Security, 1, 0);
    ASSERT_NE(handle, 0u);
    EXPECT_EQ(sim.reqRankedList(9, 0, 5, &Recorder::Security, 1, 0), 0u);
    sim.Dispatch(13);  // 65 simulated seconds

    const std::vector<Row> rows = RowsOf(sim.recorder.ForRequest(CallKind::kSecurity, handle));
    ASSERT_EQ(rows.size(), 10u) << "two rounds of five";
    double previous = 1e9;
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(rows[i].status, static_cast<int>(5 - i));
        EXPECT_EQ(rows[i + 5].status, static_cast<int>(5 - i));
        const double last = FieldOf(rows[i], RTFIELD_LAST)->Double();
        const double close = FieldOf(rows[i], RTFIELD_PREV_CLOSE)->Float();
        const double change = (last - close) / close;
        EXPECT_LE(change, previous + 1e-9) << "gainers first";
        previous = change;
        EXPECT_EQ(FieldOf(rows[i], RTFIELD_ASSET_TYPE)->Int(), 1);
    }
}

TEST(SimExchanges, BothShapesAnswerAndTellThemApartByFieldNumber) {
    SimDriver sim;
    long error = 99;
    auto number = [&](long exchange, int field) {
        error = 99;
        return reinterpret_cast<intptr_t>(sim.exchangeFieldAccess(exchange, field, &error));
    };
    EXPECT_EQ(number(1, RTEXFIELD_INDEX), 1);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(number(1, RTEXFIELD_START_HOUR), 9);
    EXPECT_EQ(number(1, RTEXFIELD_START_MIN), 30);
    EXPECT_EQ(number(1, RTEXFIELD_CLOSE_HOUR), 16);
    EXPECT_EQ(number(2, RTEXFIELD_CLOSE_MIN), 30);
    EXPECT_EQ(number(99, RTEXFIELD_INDEX), 0);
    EXPECT_EQ(error, -4) << "no such exchange";
    number(1, RTEXFIELD_SHORT_NAME);
    EXPECT_EQ(error, -4) << "a text field has no number";

    char buffer[40];
    error = 99;
    EXPECT_EQ(sim.exchangeStringFieldAccess(1, RTEXFIELD_SHORT_NAME, buffer, 40, &error), 3);
    EXPECT_STREQ(buffer, "NYX");
    EXPECT_EQ(error, 0);
    sim.exchangeStringFieldAccess(2, RTEXFIELD_CURRENCY, buffer, 40, &error);
    EXPECT_STREQ(buffer, "GBP");
    EXPECT_EQ(sim.exchangeStringFieldAccess(1, RTEXFIELD_LONG_NAME, buffer, 4, &error), 3);
    EXPECT_STREQ(buffer, "New") << "cut to the buffer, terminated";
    sim.exchangeStringFieldAccess(1, RTEXFIELD_INDEX, buffer, 40, &error);
    EXPECT_EQ(error, -4);

    EXPECT_EQ(sim.exchangeLong(2, RTEXPROP_DELAY, 77), 20u);
    EXPECT_EQ(sim.exchangeLong(1, RTEXPROP_DELAY, 77), 0u);
    EXPECT_EQ(sim.exchangeLong(2, RTEXPROP_ZONE, 77), 22u);
    EXPECT_EQ(sim.exchangeLong(3, RTEXPROP_ZONE, 77), 45u);
    EXPECT_EQ(sim.exchangeLong(42, RTEXPROP_ZONE, 77), 77u) << "unknown exchange: the default";
    EXPECT_EQ(sim.exchangeLong(1, 3, 77), 77u) << "unknown property: the default";
    // In the plain shape only the low 32 bits of the exchange are meant.
    EXPECT_EQ(
        reinterpret_cast<intptr_t>(sim.exchangeFieldAccess(
            static_cast<long>(0x5A5A00000000L | 2), RTEXPROP_DELAY, reinterpret_cast<long*>(77))),
        20);

    char unknown[] = "Unknown";
    EXPECT_GT(sim.exchangeString(3, RTEXPROP_NAME, buffer, 40, unknown), 0);
    EXPECT_STREQ(buffer, "Tokyo Exchange");
    sim.exchangeString(42, RTEXPROP_NAME, buffer, 40, unknown);
    EXPECT_STREQ(buffer, "Unknown");
}

TEST(SimProperties, PropertiesAndNewsSourcesAnswer) {
    SimDriver sim;
    EXPECT_NE(sim.propertyLong(RTPROP_NEWS_WHOLE_SYMBOL_LIST, 0), 0);
    EXPECT_EQ(sim.propertyLong(static_cast<RTProperties>(2), 0), sim.now());
    EXPECT_EQ(sim.propertyLong(static_cast<RTProperties>(999), 0), 0);
    char buffer[8];
    EXPECT_EQ(sim.propertyString(1, buffer, sizeof buffer, nullptr), 7);
    EXPECT_EQ(std::strlen(buffer), 7u);
    EXPECT_EQ(sim.propertyString(999, buffer, sizeof buffer, nullptr), 0);
    char name[40];
    EXPECT_GT(sim.newsSource(1, 0, name, sizeof name), 0);
    EXPECT_STRNE(name, "");
    EXPECT_EQ(sim.newsSource(9, 0, name, sizeof name), 0);
}

TEST(SimNews, HistoryCountsDownToOneAndStoriesFollow) {
    SimDriver sim;
    sim.Connect();
    char any[] = "";
    const unsigned long all =
        sim.reqHeadlines(any, 1, 0, 0, 10, nullptr, 0, 0, 0, &Recorder::Headline, 1, 1, 0);
    char keyword[] = "DIVIDEND";
    const unsigned long dividends =
        sim.reqHeadlines(keyword, 1, 0, 1, 10, nullptr, 0, 0, 0, &Recorder::Headline, 2, 0, 0);
    char symbols[] = "ACME glxs";
    const unsigned long bySymbol =
        sim.reqHeadlines(symbols, 0, 0, 0, 10, nullptr, 0, 0, 0, &Recorder::Headline, 3, 0, 0);
    sim.Dispatch();

    const std::vector<Call> history = sim.recorder.ForRequest(CallKind::kHeadline, all);
    ASSERT_EQ(history.size(), 10u);
    std::set<unsigned long> ids;
    for (size_t i = 0; i < history.size(); ++i) {
        EXPECT_EQ(history[i].status, static_cast<int>(10 - i));
        EXPECT_EQ(history[i].flags, 1) << "from history";
        EXPECT_LE(history[i].time, sim.now());
        if (i > 0) {
            EXPECT_LE(history[i].time, history[i - 1].time);
        }
        ids.insert(history[i].articleId);
    }
    EXPECT_EQ(ids.size(), 10u);
    for (const Call& call : sim.recorder.ForRequest(CallKind::kHeadline, dividends)) {
        EXPECT_NE(call.text.find("dividend"), std::string::npos) << call.text;
    }
    const std::vector<Call> symbolNews = sim.recorder.ForRequest(CallKind::kHeadline, bySymbol);
    ASSERT_FALSE(symbolNews.empty());
    for (const Call& call : symbolNews) {
        EXPECT_TRUE(call.text.find("(ACME)") != std::string::npos ||
                    call.text.find("(GLXS)") != std::string::npos)
            << call.text;
    }

    const unsigned long story =
        sim.reqStory(history[0].articleId, static_cast<unsigned char>(history[0].source),
                     &Recorder::Story, 4, 0);
    // An article of next week does not exist yet.
    const unsigned long missing =
        sim.reqStory(static_cast<unsigned long>(sim.now() / 300 + 2016), 1, &Recorder::Story, 5, 0);
    sim.Dispatch(600);  // fifty simulated minutes
    const std::vector<Call> body = sim.recorder.ForRequest(CallKind::kStory, story);
    ASSERT_EQ(body.size(), 1u);
    EXPECT_EQ(body[0].status, 0);
    EXPECT_EQ(body[0].text.rfind(history[0].text, 0), 0u) << "the story opens with its headline";
    EXPECT_LT(sim.recorder.ForRequest(CallKind::kStory, missing).at(0).status, 0);

    const std::vector<Call> all2 = sim.recorder.ForRequest(CallKind::kHeadline, all);
    ASSERT_GT(all2.size(), history.size()) << "live headlines followed";
    for (size_t i = history.size(); i < all2.size(); ++i) {
        EXPECT_EQ(all2[i].flags, 0);
        EXPECT_GT(all2[i].time, history[0].time);
        EXPECT_GE(all2[i].status, 1);
    }
    EXPECT_EQ(sim.recorder.ForRequest(CallKind::kHeadline, dividends).size() +
                  sim.recorder.ForRequest(CallKind::kHeadline, bySymbol).size(),
              sim.recorder.ForRequest(CallKind::kHeadline, dividends).size() + symbolNews.size())
        << "searches without live get nothing more";
}

TEST(SimEvents, EventsComeOnDemandWithTheirPayloads) {
    SimDriver sim("speed_ms=0; time_events=0");
    ASSERT_EQ(sim.Connect(1), RTOPEN_REMOTE);
    EXPECT_EQ(sim.raiseEvent(RTNET_EOD_PROCESSING, 1), 1);
    EXPECT_EQ(sim.raiseEvent(RTNET_EOD_PROCESSING, -1), 1);
    EXPECT_EQ(sim.raiseEvent(RTNET_SERVER_TIME, 1700000000), 1);
    EXPECT_EQ(sim.raiseEvent(RTNET_NO_LIMIT, 0), 1);
    EXPECT_EQ(sim.raiseEvent(RTNET_SECURITY_CHANGE, 2), 1);
    EXPECT_EQ(sim.securityChange("ACME", 'X'), 1);
    EXPECT_EQ(sim.raiseEvent(3, 0), 0) << "not an event the contract has";
    EXPECT_TRUE(sim.recorder.calls.empty());
    sim.Dispatch();

    const std::vector<Call> events = sim.recorder.Of(CallKind::kNetwork);
    ASSERT_EQ(events.size(), 6u);
    EXPECT_EQ(events[0].event, RTNET_EOD_PROCESSING);
    EXPECT_EQ(events[0].Int(), 1);
    EXPECT_FALSE(events[1].hasData) << "a null flag counts as finished";
    EXPECT_EQ(events[2].event, RTNET_SERVER_TIME);
    long serverTime = 0;
    std::memcpy(&serverTime, events[2].bytes.data(), sizeof serverTime);
    EXPECT_EQ(serverTime, 1700000000);
    EXPECT_EQ(events[3].event, RTNET_NO_LIMIT);
    EXPECT_EQ(events[4].event, RTNET_SECURITY_CHANGE);
    EXPECT_EQ(events[4].status, 2);
    const auto changes = events[4].Records<RTSecChange>();
    ASSERT_EQ(changes.size(), 2u);
    EXPECT_EQ(changes[0].kind, 'S');
    EXPECT_EQ(events[5].Records<RTSecChange>().at(0).kind, 'X');
    EXPECT_STREQ(events[5].Records<RTSecChange>().at(0).symbol, "ACME");

    // Losing the connection ends every request; a new connection starts afresh.
    const unsigned long stream = sim.Quotes(std::string("ACME", 5), 1, "\x04", true);
    sim.Dispatch();
    EXPECT_EQ(sim.raiseEvent(RTNET_CONNECTION_LOST, 2), 1);
    const size_t before = sim.recorder.ForRequest(CallKind::kSecurity, stream).size();
    sim.Dispatch(10);
    const Call lost = sim.recorder.calls.back();
    EXPECT_EQ(lost.event, RTNET_CONNECTION_LOST);
    EXPECT_EQ(lost.status, 2) << "the reason travels in the pointer's value";
    EXPECT_EQ(sim.recorder.ForRequest(CallKind::kSecurity, stream).size(), before);
    EXPECT_EQ(sim.Quotes(std::string("ACME", 5), 1, "\x04", true), 0u);
    EXPECT_EQ(sim.raiseEvent(RTNET_NO_LIMIT, 0), 0);
    EXPECT_EQ(sim.Connect(1), RTOPEN_REMOTE);
    EXPECT_NE(sim.Quotes(std::string("ACME", 5), 1, "\x04", true), 0u);
}

TEST(SimEvents, AConnectOutsideModeOneCompletesThroughEvent6) {
    {
        SimDriver refusing("speed_ms=0; connect=refuse");
        EXPECT_EQ(refusing.Connect(1), RTOPEN_REFUSED);
        refusing.Dispatch();
        EXPECT_TRUE(refusing.recorder.calls.empty());
    }
    SimDriver sim("speed_ms=0; server_limit=250");
    EXPECT_EQ(sim.Connect(0, 0), RTOPEN_PENDING);
    EXPECT_TRUE(sim.recorder.calls.empty());
    sim.Dispatch();
    const std::vector<Call> events = sim.recorder.Of(CallKind::kNetwork);
    ASSERT_FALSE(events.empty());
    EXPECT_EQ(events[0].event, RTNET_CONNECTED);
    RTNetConnectResult result{};
    std::memcpy(&result, events[0].bytes.data(), sizeof result);
    EXPECT_EQ(result.value, 250);
    EXPECT_EQ(result.result, 0);
    // A change stamp of 0 brings the change log.
    bool changeLog = false;
    for (const Call& e : events) changeLog |= e.event == RTNET_SECURITY_CHANGE && e.status > 0;
    EXPECT_TRUE(changeLog);
}

TEST(SimSettings, BadSettingsAreRefusedAndTheUniverseCanShrink) {
    SimDriver sim;
    EXPECT_EQ(sim.configure("seed = abc"), 0);
    EXPECT_EQ(sim.configure("no_such_setting = 1"), 0);
    EXPECT_EQ(sim.configure("start = 2024-13-01"), 0);
    EXPECT_EQ(sim.configure("events = 5@x"), 0);
    ASSERT_EQ(sim.configure("speed_ms=0\nuniverse = currencies # only these"), 1);
    sim.Connect();
    EXPECT_EQ(sim.configure("seed=2"), 0) << "not while connected";
    char all[] = "ALL";
    const unsigned long list =
        sim.reqSecurityList(all, 0, nullptr, nullptr, &Recorder::Security, 1, 1, 0);
    const unsigned long acme = sim.Quotes(std::string("ACME", 5), 1, "\x04", false);
    sim.Dispatch();
    EXPECT_EQ(RowsOf(sim.recorder.ForRequest(CallKind::kSecurity, list)).size(), 4u);
    EXPECT_LT(sim.recorder.ForRequest(CallKind::kSecurity, acme).at(0).status, 0);
}

TEST(SimSettings, ScheduledEventsFireAtTheirStep) {
    SimDriver sim("speed_ms=0; time_events=off; events=5@3:1, 5@4:0");
    sim.Connect();
    sim.Dispatch(2);
    EXPECT_TRUE(sim.recorder.Of(CallKind::kNetwork).empty());
    sim.Dispatch();
    ASSERT_EQ(sim.recorder.Of(CallKind::kNetwork).size(), 1u);
    EXPECT_EQ(sim.recorder.Of(CallKind::kNetwork)[0].Int(), 1);
    sim.Dispatch();
    ASSERT_EQ(sim.recorder.Of(CallKind::kNetwork).size(), 2u);
    EXPECT_EQ(sim.recorder.Of(CallKind::kNetwork)[1].Int(), 0);
}

}  // namespace
}  // namespace qvnsim::test
