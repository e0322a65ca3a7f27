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
int OnHeadline(unsigned long request, int count, unsigned long articleID, char*, unsigned char,
               char*, long dateTime, int history, unsigned long user) {
    g_seen.push_back({"headline", request,
                      {count, static_cast<long long>(articleID), dateTime, history}, user});
    return 11;
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
