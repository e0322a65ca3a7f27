#include "fake_driver/FakeDriver.h"

#include <poll.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/DynamicLibrary.h"

namespace qvnrt::test {
namespace {

// The binding table, in lookup order; the two exchange entries appear twice, as bound.
const char* const kBindingTable[] = {
    "clientOpenServer",       "clientCloseServer",       "clientGetPropertyLong",
    "clientGetPropertyString", "clientGetExchangeLong",  "clientGetExchangeString",
    "clientReqSecurities",    "clientReqRankedList",     "clientReqSecurityList",
    "clientCloseEvent",       "clientModifySecurity",    "clientChangeEvent",
    "clientGetExchangeLong",  "clientGetExchangeString", "DisplayPreferencesDialog",
    "clientReqEodRecords",    "clientReqTickBars",       "clientReqNewsStory",
    "clientReqNewsHeadlines", "clientGetNewsSource",     "clientReqSessionInfo",
};
const char* const kDispatchPair[] = {"clientGetPollFd", "clientDispatch"};

// What the library's callbacks would have seen.
struct Seen {
    std::string callback;
    unsigned long request;
    std::vector<long long> values;
    unsigned long user;
};
std::vector<Seen> g_seen;

void OnNetwork(int event, void* data) {
    g_seen.push_back({"network", 0, {event, reinterpret_cast<intptr_t>(data)}, 0});
}
int OnSecurity(unsigned long request, int status, int field, int dataType, void* data,
               unsigned long user) {
    long long value = 0;
    if (dataType == RTDATA_DOUBLE) value = static_cast<long long>(*static_cast<double*>(data));
    if (dataType == RTDATA_INT) value = *static_cast<int32_t*>(data);
    if (dataType == RTDATA_TEXT) {
        value = static_cast<long long>(std::strlen(static_cast<char*>(data)));
    }
    g_seen.push_back({"security", request, {status, field, dataType, value}, user});
    return 7;
}
int OnEod(unsigned long request, int count, int flags, RTPRICEREC* records, unsigned long user) {
    g_seen.push_back({"eod", request, {count, flags, records ? records->date : -1}, user});
    return 8;
}
int OnTick(unsigned long request, int count, int live, int type, void*, unsigned long user) {
    g_seen.push_back({"tick", request, {count, live, type}, user});
    return 9;
}
int OnSession(unsigned long request, int status, SESSION_INFO* rules, void*, unsigned long user) {
    g_seen.push_back({"session", request, {status, rules ? rules->size : -1}, user});
    return 10;
}
int OnHeadline(unsigned long request, int count, unsigned long articleID, char*, unsigned char,
               char*, long dateTime, int history, unsigned long user) {
    g_seen.push_back({"headline", request,
                      {count, static_cast<long long>(articleID), dateTime, history}, user});
    return 11;
}
int OnStory(unsigned long request, int status, unsigned long articleID, char*,
            unsigned long user) {
    g_seen.push_back({"story", request, {status, static_cast<long long>(articleID)}, user});
    return 12;
}

// The entry points as the library binds them, through the platform layer.
class BoundDriver {
public:
    explicit BoundDriver(const char* path) : m_library(platform::LoadLibrary(path)) {}
    ~BoundDriver() { platform::FreeLibrary(m_library); }
    template <class T>
    T get(const char* entry) const {
        return reinterpret_cast<T>(platform::GetProcAddress(m_library, entry));
    }
    bool has(const char* entry) const { return platform::GetProcAddress(m_library, entry); }
    void* library() const { return m_library; }

private:
    void* m_library;
};

class FakeDriverTest : public ::testing::Test {
protected:
    void SetUp() override { g_seen.clear(); }
    FakeDriver fake;
    BoundDriver driver{QVNFAKE_PATH};
};

TEST_F(FakeDriverTest, BindsEveryEntryOfTheTableAndRecordsACall) {
    ASSERT_NE(nullptr, driver.library()) << platform::LastLoadError();
    for (const char* entry : kBindingTable) EXPECT_TRUE(driver.has(entry)) << entry;
    for (const char* entry : kDispatchPair) EXPECT_FALSE(driver.has(entry)) << entry;

    auto open = driver.get<clientOpenServer_t>("clientOpenServer");
    EXPECT_EQ(RTOPEN_REMOTE, open("host", nullptr, OnNetwork, 65536, 4, 0x7fffffff, 0, 1));
    ASSERT_EQ(1, fake.callCount());
    const FakeCall call = fake.call(0);
    EXPECT_EQ("clientOpenServer", call.name);
    EXPECT_EQ("host", call.text("firstText"));
    EXPECT_TRUE(call.isNull("secondText"));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(&OnNetwork), call.number("callback"));
    EXPECT_EQ(65536u, call.number("connectBuffer"));
    EXPECT_EQ(0x7fffffffu, call.number("changeStamp"));
    EXPECT_EQ(1, call.integer("connectMode"));
    EXPECT_EQ(RTOPEN_REMOTE, call.result);
    EXPECT_THROW(call.arg("noSuchArgument"), std::out_of_range);

    EXPECT_TRUE(fake.connectionLost(2));
    ASSERT_EQ(1u, g_seen.size());
    EXPECT_EQ((std::vector<long long>{RTNET_CONNECTION_LOST, 2}), g_seen[0].values);
}

TEST(FakeDriverVariants, EachLacksExactlyItsMissingEntryPoints) {
    struct Variant {
        const char* path;
        std::vector<std::string> missing;
    } variants[] = {
        {QVNFAKE_PATH, {"clientGetPollFd", "clientDispatch"}},
        {QVNFAKE_NO_DISPLAY_PATH,
         {"DisplayPreferencesDialog", "clientGetPollFd", "clientDispatch"}},
        {QVNFAKE_NO_CHANGE_PATH, {"clientChangeEvent", "clientGetPollFd", "clientDispatch"}},
        {QVNFAKE_DISPATCH_PATH, {}},
    };
    for (const Variant& variant : variants) {
        BoundDriver driver(variant.path);
        ASSERT_NE(nullptr, driver.library()) << platform::LastLoadError();
        std::vector<std::string> missing;
        for (const char* entry : kBindingTable) {
            if (!driver.has(entry) &&
                std::find(missing.begin(), missing.end(), entry) == missing.end()) {
                missing.push_back(entry);
            }
        }
        for (const char* entry : kDispatchPair) {
            if (!driver.has(entry)) missing.push_back(entry);
        }
        EXPECT_EQ(variant.missing, missing) << variant.path;
        EXPECT_TRUE(driver.has("fake_reset")) << variant.path;
    }
}

TEST_F(FakeDriverTest, RecordsDeepCopiesOfTextsSymbolsFieldsAndRecords) {
    char symbols[] = "IBM\0MSFT\nMS\0T";  // three symbols, the second a mapped pair
    char fields[] = {1, 2, 4, 59, 0};
    auto request = driver.get<clientReqSecurities_t>("clientReqSecurities");
    request(symbols, 98, fields, OnSecurity, 0x1234, 1, 3, 5);
    std::memset(symbols, 'x', sizeof(symbols));  // the log holds its own copy
    fields[0] = 9;

    const FakeCall call = fake.last("clientReqSecurities");
    EXPECT_EQ((std::vector<std::string>{"IBM", "MSFT\nMS", "T"}), call.symbols());
    EXPECT_EQ(std::string("\x01\x02\x04\x3b"), call.text("fields"));
    EXPECT_EQ(0x1234u, call.number("user"));
    EXPECT_EQ(3, call.integer("count"));
    EXPECT_EQ(5, call.integer("limit"));

    TICKDATA tick = {};
    tick.start = 3000000;
    tick.weight = -5;
    tick.route = 0x11;
    auto ticks = driver.get<clientReqTickBars_t>("clientReqTickBars");
    ticks("IBM", 98, &tick, OnTick, 1, 0);
    tick.weight = 60;
    const FakeCall tickCall = fake.last("clientReqTickBars");
    EXPECT_EQ(-5, tickCall.tickData().weight);
    EXPECT_EQ(0x11, tickCall.tickData().route);
    EXPECT_EQ(&tick, tickCall.pointer<TICKDATA>("requestAddress"));

    auto eod = driver.get<clientReqEodRecords_t>("clientReqEodRecords");
    EODDATA* opaque = reinterpret_cast<EODDATA*>(&tick);
    eod("IBM", 98, opaque, OnEod, 1, 0, 0);
    EXPECT_EQ(opaque, fake.last("clientReqEodRecords").pointer<EODDATA>("request"));

    unsigned char sources[] = {3, 0, 7};
    auto headlines = driver.get<clientReqNewsHeadlines_t>("clientReqNewsHeadlines");
    headlines(nullptr, 1, 0, 1, 10, sources, 3, 10, 0, OnHeadline, 1, 1, 0);
    const FakeCall news = fake.last("clientReqNewsHeadlines");
    EXPECT_TRUE(news.isNull("searchText"));
    EXPECT_EQ(std::string("\x03\x00\x07", 3), news.text("sources"));
    EXPECT_EQ(10, news.integer("startTime"));

    EXPECT_EQ((std::vector<std::string>{"clientReqSecurities", "clientReqTickBars",
                                        "clientReqEodRecords", "clientReqNewsHeadlines"}),
              fake.names());
    fake.clearLog();
    EXPECT_EQ(0, fake.callCount());
}

TEST_F(FakeDriverTest, RequestsGetIncreasingHandlesUnlessScripted) {
    auto securities = driver.get<clientReqSecurities_t>("clientReqSecurities");
    auto session = driver.get<clientReqSessionInfo_t>("clientReqSessionInfo");
    auto ranked = driver.get<clientReqRankedList_t>("clientReqRankedList");
    EXPECT_EQ(1u, session(const_cast<char*>("IBM"), 98, OnSession, 1));
    EXPECT_EQ(2u, securities("A\0B\0C", 98, "\x01", OnSecurity, 2, 0, 3, 0));
    EXPECT_EQ(5u, ranked(1, 2, 3, OnSecurity, 3, 0));  // 2, 3 and 4 went to A, B and C
    EXPECT_EQ(2u, fake.userOf(4));
    EXPECT_EQ("clientReqSecurities", fake.entryOf(3).value_or(""));

    fake.pushResult("clientReqRankedList", 0);  // refused once
    fake.setResult("clientReqSessionInfo", 77);
    EXPECT_EQ(0u, ranked(1, 2, 3, OnSecurity, 3, 0));
    EXPECT_EQ(6u, ranked(1, 2, 3, OnSecurity, 3, 0));
    EXPECT_EQ(77u, session(nullptr, 98, OnSession, 9));
    EXPECT_EQ(77u, session(nullptr, 98, OnSession, 10));
    EXPECT_EQ(10u, fake.userOf(77));
    EXPECT_FALSE(fake.entryOf(0));
    fake.clearResult("clientReqSessionInfo");
    fake.setNextHandle(100);
    EXPECT_EQ(100u, session(nullptr, 98, OnSession, 9));

    // Closing marks the handle, and a callback can still be fired for it afterwards.
    driver.get<clientCloseEvent_t>("clientCloseEvent")(100);
    EXPECT_FALSE(fake.isOpen(100));
    EXPECT_TRUE(fake.isOpen(5));
    EXPECT_EQ(10, fake.fireSession(100, 0, nullptr, nullptr));

    fake.setResult("clientOpenServer", RTOPEN_PENDING);
    EXPECT_EQ(RTOPEN_PENDING,
              driver.get<clientOpenServer_t>("clientOpenServer")(nullptr, nullptr, nullptr, 0, 0,
                                                                 0, 0, 0));
    EXPECT_FALSE(fake.hasNetworkCallback());
    EXPECT_FALSE(fake.fireNetwork(4));
}

TEST_F(FakeDriverTest, AnswersPropertiesAndExchangesInBothCallShapes) {
    fake.setPropertyLong(RTPROP_NEWS_WHOLE_SYMBOL_LIST, 1);
    fake.setPropertyString(3, "Fake service");
    EXPECT_EQ(1, driver.get<clientGetPropertyLong_t>("clientGetPropertyLong")(
                     RTPROP_NEWS_WHOLE_SYMBOL_LIST, 0));
    char buffer[8] = "zzzzzzz";
    auto propertyString = driver.get<clientGetPropertyString_t>("clientGetPropertyString");
    EXPECT_EQ(7, propertyString(3, buffer, sizeof(buffer), nullptr));
    EXPECT_STREQ("Fake se", buffer);
    EXPECT_EQ(0, propertyString(4, nullptr, 0, nullptr));

    fake.setExchangeLong(12, RTEXFIELD_START_HOUR, 9);
    fake.setExchangeLong(12, RTEXFIELD_CLOSE_HOUR, 16, -9);
    fake.setExchangeLong(12, RTEXPROP_ZONE, 5);
    auto fieldLong = driver.get<clientGetExchangeFieldAccess_t>("clientGetExchangeLong");
    long error = 1;
    EXPECT_EQ(9, reinterpret_cast<intptr_t>(fieldLong(12, RTEXFIELD_START_HOUR, &error)));
    EXPECT_EQ(0, error);
    EXPECT_EQ(16, reinterpret_cast<intptr_t>(fieldLong(12, RTEXFIELD_CLOSE_HOUR, &error)));
    EXPECT_EQ(-9, error);
    EXPECT_EQ(0, reinterpret_cast<intptr_t>(fieldLong(13, RTEXFIELD_START_HOUR, &error)));
    EXPECT_EQ(-4, error);
    fieldLong(12, RTEXFIELD_START_HOUR, nullptr);  // no error word: nothing written

    auto plainLong = driver.get<clientGetExchangeLong_t>("clientGetExchangeLong");
    EXPECT_EQ(5u, plainLong(12, RTEXPROP_ZONE, 18));
    EXPECT_EQ(18u, plainLong(12, RTEXPROP_DELAY, 18));  // unscripted: the default
    EXPECT_EQ(18, fake.last("clientGetExchangeLong").integer("defaultValue"));

    fake.setExchangeString(12, RTEXFIELD_SHORT_NAME, "NYSE", 0);
    fake.setExchangeString(12, RTEXPROP_NAME, "New York");
    auto fieldString =
        driver.get<clientGetExchangeStringFieldAccess_t>("clientGetExchangeString");
    char name[4];
    EXPECT_EQ(3, fieldString(12, RTEXFIELD_SHORT_NAME, name, sizeof(name), &error));
    EXPECT_STREQ("NYS", name);
    EXPECT_EQ(0, error);
    EXPECT_EQ(0, fieldString(12, RTEXFIELD_CURRENCY, name, sizeof(name), &error));
    EXPECT_EQ(-4, error);
    EXPECT_STREQ("", name);

    auto plainString = driver.get<clientGetExchangeString_t>("clientGetExchangeString");
    char text[40];
    EXPECT_EQ(8, plainString(12, RTEXPROP_NAME, text, sizeof(text), const_cast<char*>("Unknown")));
    EXPECT_STREQ("New York", text);
    EXPECT_EQ(7, plainString(99, RTEXPROP_NAME, text, sizeof(text), const_cast<char*>("Unknown")));
    EXPECT_STREQ("Unknown", text);
    EXPECT_EQ("Unknown", fake.last("clientGetExchangeString").text("defaultText"));

    fake.setNewsSource(1, 0, "Wire");
    EXPECT_EQ(4, driver.get<clientGetNewsSource_t>("clientGetNewsSource")(1, 0, text, 40));
    EXPECT_STREQ("Wire", text);
}

TEST_F(FakeDriverTest, FiresEachKindOfCallbackWithTheStoredOrAGivenUser) {
    auto securities = driver.get<clientReqSecurities_t>("clientReqSecurities");
    const unsigned long first = securities("A\0B", 98, "", OnSecurity, 0xAA, 1, 2, 0);
    EXPECT_EQ(7, fake.fireSecurityDouble(first + 1, RTFIELD_LAST, 42.0));
    EXPECT_EQ(7, fake.fireSecurityInt(first, RTFIELD_VOLUME, -3));
    EXPECT_EQ(7, fake.fireSecurityText(first, RTFIELD_NAME, "Name"));
    EXPECT_EQ(7, fake.fireSecurityEnd(first, -2));
    EXPECT_EQ(7, fake.fireSecurityWithUser(999, 0, 4, 0, nullptr, 0));  // foreign handle, null user
    EXPECT_FALSE(fake.fireSecurity(999, 0, 4, 0, nullptr));  // no such request
    ASSERT_EQ(5u, g_seen.size());
    EXPECT_EQ(first + 1, g_seen[0].request);
    EXPECT_EQ((std::vector<long long>{0, RTFIELD_LAST, RTDATA_DOUBLE, 42}), g_seen[0].values);
    EXPECT_EQ(0xAAu, g_seen[0].user);
    EXPECT_EQ(-3, g_seen[1].values[3]);
    EXPECT_EQ(4, g_seen[2].values[3]);
    EXPECT_EQ((std::vector<long long>{-2, 0, 0, 0}), g_seen[3].values);
    EXPECT_EQ(0u, g_seen[4].user);

    const unsigned long eod = driver.get<clientReqEodRecords_t>("clientReqEodRecords")(
        "A", 98, nullptr, OnEod, 0xE0, 0, 0);
    RTPRICEREC record = {};
    record.date = 1234;
    EXPECT_EQ(8, fake.fireEod(eod, 1, 0, &record));
    EXPECT_EQ(8, fake.fireEodWithUser(eod, 0, 0, nullptr, 0xBAD));
    EXPECT_FALSE(fake.fireTick(eod, 0, 0, 0, nullptr));  // its handle has no tick callback

    const unsigned long tick = driver.get<clientReqTickBars_t>("clientReqTickBars")(
        "A", 98, nullptr, OnTick, 0x71, 0);
    EXPECT_EQ(9, fake.fireTick(tick, 0, 0, RTREC_NONE, nullptr));
    const unsigned long session = driver.get<clientReqSessionInfo_t>("clientReqSessionInfo")(
        nullptr, 98, OnSession, 0x5E);
    SESSION_INFO rules = {};
    rules.size = 38;
    EXPECT_EQ(10, fake.fireSession(session, 0, &rules, nullptr));
    const unsigned long headline = driver.get<clientReqNewsHeadlines_t>("clientReqNewsHeadlines")(
        const_cast<char*>("IBM"), 0, 0, 1, 10, nullptr, 0, 0, 0, OnHeadline, 0x4E, 1, 0);
    EXPECT_EQ(11, fake.fireHeadline(headline, 1, 555, nullptr, 2, nullptr, 1700000000, 0));
    const unsigned long story = driver.get<clientReqNewsStory_t>("clientReqNewsStory")(
        555, 2, OnStory, 0x57, 0);
    EXPECT_EQ(12, fake.fireStoryWithUser(story, -1, 555, nullptr, 0));

    ASSERT_EQ(11u, g_seen.size());
    EXPECT_EQ((std::vector<long long>{1, 0, 1234}), g_seen[5].values);
    EXPECT_EQ(0xE0u, g_seen[5].user);
    EXPECT_EQ(0xBADu, g_seen[6].user);
    EXPECT_EQ(0x71u, g_seen[7].user);
    EXPECT_EQ(38, g_seen[8].values[1]);
    EXPECT_EQ((std::vector<long long>{1, 555, 1700000000, 0}), g_seen[9].values);
    EXPECT_EQ("story", g_seen[10].callback);
    EXPECT_EQ(0u, g_seen[10].user);
}

TEST_F(FakeDriverTest, HookRunsInsideTheCallWithItsResult) {
    auto securities = driver.get<clientReqSecurities_t>("clientReqSecurities");
    std::vector<long long> results;
    fake.onCall("clientReqSecurities", [&](long long handle) {
        results.push_back(handle);
        // A driver answering before the request returns; the log already holds the call.
        EXPECT_EQ(1, fake.count("clientReqSecurities"));
        fake.fireSecurityEnd(static_cast<unsigned long>(handle));
        fake.clearHook("clientReqSecurities");  // removing itself while it runs
    });
    const unsigned long handle = securities("A", 98, "", OnSecurity, 1, 0, 1, 0);
    securities("B", 98, "", OnSecurity, 1, 0, 1, 0);
    EXPECT_EQ(std::vector<long long>{static_cast<long long>(handle)}, results);
    ASSERT_EQ(1u, g_seen.size());
    EXPECT_EQ(handle, g_seen[0].request);

    int closes = 0;
    fake.onCall("clientCloseServer", [&](long long) { ++closes; });
    driver.get<clientCloseServer_t>("clientCloseServer")();
    EXPECT_EQ(1, closes);
}

TEST_F(FakeDriverTest, SurvivesNullPointersEverywhere) {
    driver.get<clientOpenServer_t>("clientOpenServer")(nullptr, nullptr, nullptr, 0, 0, 0, 0, 0);
    driver.get<clientGetPropertyString_t>("clientGetPropertyString")(1, nullptr, 10, nullptr);
    driver.get<clientGetExchangeStringFieldAccess_t>("clientGetExchangeString")(
        1, RTEXFIELD_SUFFIX, nullptr, 10, nullptr);
    driver.get<clientGetExchangeString_t>("clientGetExchangeString")(1, 2, nullptr, 10, nullptr);
    driver.get<clientReqSecurities_t>("clientReqSecurities")(nullptr, 0, nullptr, nullptr, 0, 0,
                                                             5, 0);
    driver.get<clientReqSecurityList_t>("clientReqSecurityList")(nullptr, 0, nullptr, nullptr,
                                                                 nullptr, 0, 1, 0);
    driver.get<clientModifySecurity_t>("clientModifySecurity")(1, nullptr);
    driver.get<clientChangeEvent_t>("clientChangeEvent")(nullptr, 0);
    driver.get<DisplayPreferencesDialog_t>("DisplayPreferencesDialog")(nullptr);
    driver.get<clientReqTickBars_t>("clientReqTickBars")(nullptr, 0, nullptr, nullptr, 0, 0);
    driver.get<clientReqNewsHeadlines_t>("clientReqNewsHeadlines")(
        nullptr, 0, 0, 0, 0, nullptr, 4, 0, 0, nullptr, 0, 0, 0);
    driver.get<clientGetNewsSource_t>("clientGetNewsSource")(1, 1, nullptr, 0);
    EXPECT_EQ(12, fake.callCount());
    EXPECT_TRUE(fake.last("clientReqSecurities").isNull("symbols"));
    EXPECT_TRUE(fake.last("clientReqTickBars").isNull("request"));
    // A request without a callback has nothing to fire.
    EXPECT_FALSE(fake.fireSecurityEnd(
        static_cast<unsigned long>(fake.last("clientReqSecurities").result)));
}

TEST(FakeDriverDispatch, QueuedCallbacksArriveOnlyInsideClientDispatch) {
    g_seen.clear();
    FakeDriver fake(QVNFAKE_DISPATCH_PATH);
    BoundDriver driver(QVNFAKE_DISPATCH_PATH);
    const int fd = driver.get<clientGetPollFd_t>("clientGetPollFd")();
    ASSERT_GE(fd, 0);
    EXPECT_EQ(fd, fake.pollFd());
    auto readable = [fd] {
        struct pollfd entry = {fd, POLLIN, 0};
        return ::poll(&entry, 1, 0) == 1;
    };
    auto dispatch = driver.get<clientDispatch_t>("clientDispatch");

    const unsigned long handle = driver.get<clientReqSecurities_t>("clientReqSecurities")(
        "A", 98, "", OnSecurity, 1, 1, 1, 0);
    EXPECT_FALSE(readable());
    bool insideDispatch = false;
    fake.onCall("clientDispatch", [&](long long) { insideDispatch = true; });
    fake.queue([&] {
        EXPECT_TRUE(insideDispatch);
        fake.fireSecurityDouble(handle, RTFIELD_LAST, 1.0);
        // Queued from a delivery: it waits for the next dispatch.
        fake.queue([&] { fake.fireSecurityEnd(handle); });
    });
    EXPECT_TRUE(readable());
    EXPECT_EQ(1, fake.pending());
    EXPECT_TRUE(g_seen.empty());

    dispatch();
    EXPECT_EQ(1u, g_seen.size());
    EXPECT_EQ(1, fake.pending());
    EXPECT_TRUE(readable());
    dispatch();
    EXPECT_EQ(2u, g_seen.size());
    EXPECT_FALSE(readable());
    dispatch();  // nothing queued: harmless
    EXPECT_EQ(3, fake.dispatchCount());
    EXPECT_EQ(3, fake.count("clientDispatch"));

    fake.queue([] { FAIL() << "a reset drops what is queued"; });
    fake.reset();
    EXPECT_EQ(0, fake.pending());
    EXPECT_FALSE(readable());
    dispatch();
}

TEST(FakeDriverState, IsSharedWithTheLibrarysLoadAndResetOnlyByAFreshView) {
    BoundDriver driver(QVNFAKE_PATH);
    FakeDriver fresh(QVNFAKE_PATH);
    driver.get<clientCloseServer_t>("clientCloseServer")();
    {
        FakeDriver view(QVNFAKE_PATH, FakeDriver::Start::kKeepState);
        EXPECT_EQ(1, view.count("clientCloseServer"));
    }
    EXPECT_EQ(1, fresh.count("clientCloseServer"));
    FakeDriver another(QVNFAKE_PATH);
    EXPECT_EQ(0, fresh.callCount());
    EXPECT_THROW(FakeDriver("/nonexistent/libqvnfake.so"), std::runtime_error);
}

}  // namespace
}  // namespace qvnrt::test
