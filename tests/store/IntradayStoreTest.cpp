// The intraday stores against a recording link: what is served from the blocks, what is
// asked of the driver, what is kept on disk and how, and the damaged files.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "store/IntradayTestSupport.h"

namespace {

using namespace qvnrt::test;
using RTSecCache::BlockHeader;
using RTSecCache::BlockIndexEntry;
using RTSecCache::CompoundFile;
using RTSecCache::MinuteBar;
using RTSecCache::MinuteStore;
using RTSecCache::TickStore;

constexpr uint32_t kStart = 1763000000;  // store time of the first tick of the tests
constexpr int kKeepDays = 5;

class IntradayStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        RTSecCache::Store().configure(true, dir.path().c_str(), kKeepDays);
        RTSecCache::Store().refreshClock();
        file = CompoundFile::open(Path());
        ASSERT_TRUE(file);
        ticks = std::make_unique<TickStore>(*file, link);
    }
    std::string Path() const { return dir.file("IBM.tik"); }

    // The owner asks [from, to]; returns the spans the driver was asked for.
    std::vector<std::pair<uint32_t, uint32_t>> Ask(StoreOwner owner, uint32_t from, uint32_t to,
                                                   int flags = 0) {
        RecordingRequester driver(link, owner, nextHandle);
        ticks->request(owner, RequestTime(from), RequestTime(to), flags, driver);
        return driver.asked;
    }
    void Reply(StoreOwner owner, std::vector<TICKREC> records) {
        ticks->onDriverReply(link.handles[owner], static_cast<int>(records.size()), 0,
                             RTREC_TICKREC, records.data());
    }
    void End(StoreOwner owner) { ticks->onDriverReply(link.handles[owner], 0, 0, RTREC_TICKREC, nullptr); }
    // The owner asks [from, to] and the driver answers with a tick a second, then the end.
    void Fill(StoreOwner owner, uint32_t from, uint32_t to) {
        Ask(owner, from, to);
        Reply(owner, TicksDown(to, static_cast<int>(to - from + 1)));
        End(owner);
        ticks->unsubscribe(owner, nullptr);
        link.handles[owner] = 0;
    }
    void Reopen() {
        ticks.reset();
        file.reset();
        file = CompoundFile::open(Path());
        ticks = std::make_unique<TickStore>(*file, link);
    }

    TempDir dir;
    ManualClock clock{kStart + 86400};
    RecordingLink link;
    uint32_t nextHandle = 1;
    std::unique_ptr<CompoundFile> file;
    std::unique_ptr<TickStore> ticks;
    int a = 0, b = 0;  // the owners, by address
};

std::vector<uint32_t> Descending(uint32_t newest, uint32_t oldest) {
    std::vector<uint32_t> times;
    for (uint32_t t = newest; t >= oldest && t != 0; --t) times.push_back(t);
    return times;
}

TEST_F(IntradayStoreTest, ASpanInsideTheBlocksIsServedNewestFirstWithoutTheDriver) {
    Fill(&a, kStart, kStart + 99);
    link.sent.clear();
    EXPECT_TRUE(Ask(&b, kStart + 10, kStart + 89).empty());
    EXPECT_EQ(Descending(kStart + 89, kStart + 10), link.HistoryTimes(&b));
    EXPECT_EQ(1, link.Ends(&b));
    EXPECT_EQ(0, link.sent.back().count);
}

TEST_F(IntradayStoreTest, OnlyTheGapBetweenTwoBlocksIsAskedAndOneStreamArrives) {
    Fill(&a, kStart, kStart + 99);
    Fill(&a, kStart + 200, kStart + 299);
    link.sent.clear();
    const auto asked = Ask(&b, kStart, kStart + 299);
    ASSERT_EQ(1u, asked.size());
    EXPECT_EQ(std::make_pair(kStart + 100, kStart + 199), asked[0]);
    Reply(&b, TicksDown(kStart + 199, 100));
    End(&b);
    EXPECT_EQ(Descending(kStart + 299, kStart), link.HistoryTimes(&b));
    EXPECT_EQ(1, link.Ends(&b));
}

TEST_F(IntradayStoreTest, ASpanProvedEmptyIsKeptAsAnEmptyBlockAndNotAskedAgain) {
    Ask(&a, kStart, kStart + 99);
    End(&a);
    ASSERT_EQ(1u, ticks->index().size());
    EXPECT_EQ(0u, ticks->index()[0].count);
    EXPECT_TRUE(Ask(&b, kStart, kStart + 99).empty());
    EXPECT_EQ(1, link.Ends(&b));
    EXPECT_TRUE(link.HistoryTimes(&b).empty());
}

TEST_F(IntradayStoreTest, ANegativeCountEndsTheRequestWithoutRecordingTheSpan) {
    Ask(&a, kStart, kStart + 99);
    ticks->onDriverReply(link.handles[&a], -1, 0, RTREC_TICKREC, nullptr);
    EXPECT_TRUE(ticks->index().empty());
    EXPECT_EQ(1, link.Ends(&a));
}

TEST_F(IntradayStoreTest, OfflineTheBlocksAreDeliveredAndTheRequestEndsAtOnce) {
    Fill(&a, kStart, kStart + 49);
    link.online = false;
    RecordingRequester driver(link, &b, nextHandle);
    EXPECT_FALSE(ticks->request(&b, RequestTime(kStart), 0, 0, driver));
    EXPECT_TRUE(driver.asked.empty());
    EXPECT_EQ(Descending(kStart + 49, kStart), link.HistoryTimes(&b));
    EXPECT_EQ(1, link.Ends(&b));
}

TEST_F(IntradayStoreTest, TheRefreshFlagAsksForTheWholeSpan) {
    Fill(&a, kStart, kStart + 99);
    const auto asked = Ask(&b, kStart, kStart + 99, RTSecCache::kRefreshFlag);
    ASSERT_EQ(1u, asked.size());
    EXPECT_EQ(std::make_pair(kStart, kStart + 99), asked[0]);
}

// The blob of one stream, read by SQLite itself.
std::vector<unsigned char> Stream(const std::string& path, const char* storage, const std::string& name) {
    sqlite3* db = nullptr;
    std::vector<unsigned char> data;
    if (sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
        sqlite3_stmt* select = nullptr;
        sqlite3_prepare_v2(db, "SELECT data FROM stream WHERE storage = ? AND name = ?", -1, &select, nullptr);
        sqlite3_bind_text(select, 1, storage, -1, SQLITE_STATIC);
        sqlite3_bind_text(select, 2, name.c_str(), -1, SQLITE_STATIC);
        if (sqlite3_step(select) == SQLITE_ROW) {
            const auto* bytes = static_cast<const unsigned char*>(sqlite3_column_blob(select, 0));
            data.assign(bytes, bytes + sqlite3_column_bytes(select, 0));
        }
        sqlite3_finalize(select);
    }
    sqlite3_close(db);
    return data;
}

template <class T>
T At(const std::vector<unsigned char>& bytes, size_t offset) {
    T value{};
    if (offset + sizeof(T) <= bytes.size()) std::memcpy(&value, bytes.data() + offset, sizeof(T));
    return value;
}

TEST_F(IntradayStoreTest, ContentsAndBlockStreamsHaveTheirByteLayoutsInTheFile) {
    const uint32_t last = kStart + 9;
    Fill(&a, kStart, last);
    ticks.reset();  // saves the index and commits
    file.reset();

    const auto contents = Stream(Path(), "T", "Contents");
    ASSERT_EQ(8u + 16u, contents.size());
    EXPECT_EQ(1u, At<uint32_t>(contents, 0));
    EXPECT_EQ(1u, At<uint32_t>(contents, 4));
    EXPECT_EQ(kStart, At<uint32_t>(contents, 8));
    EXPECT_EQ(last, At<uint32_t>(contents, 12));
    EXPECT_EQ(10u, At<uint32_t>(contents, 16));
    EXPECT_EQ(static_cast<uint32_t>(clock.now), At<uint32_t>(contents, 20));

    char name[16];
    std::snprintf(name, sizeof(name), "%x", kStart);
    const auto block = Stream(Path(), "T", name);
    const auto expected = TicksDown(last, 10);
    ASSERT_EQ(20u + 13u * expected.size(), block.size());
    EXPECT_EQ(2u, At<uint32_t>(block, 0));
    EXPECT_EQ(kStart, At<uint32_t>(block, 4));
    EXPECT_EQ(last, At<uint32_t>(block, 8));
    EXPECT_EQ(10u, At<uint32_t>(block, 12));
    EXPECT_EQ(0u, At<uint32_t>(block, 16));
    EXPECT_EQ(0, std::memcmp(block.data() + 20, expected.data(), 13 * expected.size()));
}

// Files of this process may not grow past `bytes` while it lives, as on a full disk.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_signal(signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        signal(SIGXFSZ, m_signal);
    }

private:
    rlimit m_before{};
    sighandler_t m_signal;
};

TEST_F(IntradayStoreTest, ABlockThatCannotBeWrittenIsLeftOutAndItsSpanAskedAgain) {
    Fill(&a, kStart, kStart + 99);
    Reopen();  // committed
    const uint32_t from = kStart + 1000, to = kStart + 200999;
    {
        std::error_code ignored;
        FileSizeLimit full(std::filesystem::file_size(Path()) +
                           std::filesystem::file_size(Path() + "-wal", ignored) + 8192);
        Ask(&b, from, to);
        Reply(&b, TicksDown(to, static_cast<int>(to - from + 1)));  // about 2.6 MB
        End(&b);
        ticks->unsubscribe(&b, nullptr);
        link.handles[&b] = 0;
    }
    EXPECT_EQ(static_cast<size_t>(to - from + 1), link.HistoryTimes(&b).size());  // still delivered
    ASSERT_EQ(1u, ticks->index().size());
    EXPECT_EQ(kStart + 99, ticks->index()[0].last);
    EXPECT_EQ(1u, Ask(&b, from, to).size());
    Reopen();
    EXPECT_TRUE(Ask(&a, kStart, kStart + 99).empty());
}

struct Aging {
    uint32_t idleSeconds;
    bool kept;
};

class BlockAging : public IntradayStoreTest, public ::testing::WithParamInterface<Aging> {};

TEST_P(BlockAging, ABlockUnusedForTheKeepTimeGoesWhenTheStoreIsMade) {
    Fill(&a, kStart, kStart + 9);
    clock.now += GetParam().idleSeconds;
    RTSecCache::Store().refreshClock();
    Reopen();
    EXPECT_EQ(GetParam().kept ? 1u : 0u, ticks->index().size());
    EXPECT_EQ(GetParam().kept, !Ask(&b, kStart, kStart + 9).size());
}

constexpr uint32_t kKeepSeconds = kKeepDays * 86400;
INSTANTIATE_TEST_SUITE_P(Idle, BlockAging,
                         ::testing::Values(Aging{kKeepSeconds - 1, true}, Aging{kKeepSeconds, false}));

TEST_F(IntradayStoreTest, ABlockWhoseHeaderDisagreesWithTheIndexIsDropped) {
    Fill(&a, kStart, kStart + 9);
    Fill(&a, kStart + 100, kStart + 109);
    ticks.reset();
    file.reset();
    sqlite3* db = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(Path().c_str(), &db));
    char sql[160];
    std::snprintf(sql, sizeof(sql),
                  "UPDATE stream SET data = zeroblob(20) WHERE storage = 'T' AND name = '%x'", kStart);
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(db, sql, nullptr, nullptr, nullptr));
    sqlite3_close(db);
    Reopen();
    ASSERT_EQ(1u, ticks->index().size());
    EXPECT_EQ(kStart + 100, ticks->index()[0].first);
}

TEST_F(IntradayStoreTest, LiveRecordsOfTheSharedRequestSitAboveItsHistory) {
    RecordingRequester driver(link, &a, nextHandle);
    ticks->request(&a, RequestTime(kStart), 0, 0, driver);
    Reply(&a, TicksDown(kStart + 9, 10));
    End(&a);
    std::vector<TICKREC> live = {TICKREC{kStart + 9, 5, 1.0f, 0}, TICKREC{kStart + 10, 6, 1.0f, 0}};
    ticks->onDriverReply(link.handles[&a], 2, 1, RTREC_TICKREC, live.data());
    ticks->pushLive();
    ASSERT_FALSE(link.sent.empty());
    EXPECT_EQ(1, link.sent.back().live);
    EXPECT_EQ((std::vector<uint32_t>{kStart + 9, kStart + 10}), link.sent.back().times);
    EXPECT_EQ(kStart + 9, ticks->liveStart());
}

class OneSecondFlush : public IntradayStoreTest, public ::testing::WithParamInterface<int> {};

TEST_P(OneSecondFlush, TicksOfOneSecondNeverStraddleAFlush) {
    const int perSecond = GetParam();
    RecordingRequester driver(link, &a, nextHandle);
    ticks->request(&a, RequestTime(kStart), 0, 0, driver);
    Reply(&a, TicksDown(kStart, 1));
    End(&a);
    auto feed = [&](uint32_t from, int seconds) {
        std::vector<TICKREC> live;
        for (int s = 0; s < seconds; ++s) {
            for (int k = 0; k < perSecond; ++k) live.push_back(TICKREC{from + static_cast<uint32_t>(s), 1, 1.0f, 0});
        }
        ticks->onDriverReply(link.handles[&a], static_cast<int>(live.size()), 1, RTREC_TICKREC, live.data());
    };
    const int seconds = static_cast<int>(RTSecCache::kLiveBufferLimit) / perSecond;
    feed(kStart + 1, seconds);
    ticks->pushLive();  // the owner has them all: they may go to disk
    feed(kStart + 1 + static_cast<uint32_t>(seconds), 2);
    ASSERT_LT(ticks->liveBuffer().size(), RTSecCache::kLiveBufferLimit);
    const uint32_t onDisk = ticks->index().back().last;
    EXPECT_EQ(onDisk, ticks->liveStart());
    EXPECT_LT(onDisk, ticks->liveBuffer().front().time);
}

INSTANTIATE_TEST_SUITE_P(TicksPerSecond, OneSecondFlush, ::testing::Values(1, 2, 3, 7));

TEST_F(IntradayStoreTest, AMinuteBarSentAgainCarriesOnlyItsAddedVolume) {
    MinuteStore minutes(*file, link);
    RecordingRequester driver(link, &a, nextHandle);
    minutes.request(&a, RequestTime(kStart), 0, 0, driver);
    MinuteBar history{kStart, 3, 1, 1, 1, 1};
    minutes.onDriverReply(link.handles[&a], 1, 0, RTREC_INTRADAY_PRICEREC, &history);
    minutes.onDriverReply(link.handles[&a], 0, 0, RTREC_INTRADAY_PRICEREC, nullptr);
    const uint32_t minute = (kStart / 60 + 2) * 60;
    const int32_t first = 10, added = 7;
    TICKREC tick{minute + 5, first, 2.0f, 0};
    minutes.onDriverReply(link.handles[&a], 1, 1, RTREC_TICKREC, &tick);
    minutes.pushLive();
    tick = TICKREC{minute + 30, added, 2.5f, 0};
    minutes.onDriverReply(link.handles[&a], 1, 1, RTREC_TICKREC, &tick);
    minutes.pushLive();
    ASSERT_GE(link.sent.size(), 2u);
    const StoreDelivery& again = link.sent.back();
    EXPECT_EQ((std::vector<uint32_t>{minute}), again.times);
    EXPECT_EQ((std::vector<int32_t>{added}), again.volumes);
    minutes.pushLive();  // nothing new: nothing sent
    EXPECT_EQ(&again, &link.sent.back());
}

struct Damage {
    const char* what;
    std::string bytes;
};

class DamagedFile : public ::testing::TestWithParam<Damage> {};

TEST_P(DamagedFile, IsReplacedByAnEmptyOneThatWorks) {
    TempDir dir;
    ManualClock clock{kStart};
    RTSecCache::Store().configure(true, dir.path().c_str(), kKeepDays);
    const std::string path = dir.file("X.tik");
    std::string bytes = GetParam().bytes;
    if (bytes == "another schema" || bytes == "truncated") {
        sqlite3* db = nullptr;
        sqlite3_open(path.c_str(), &db);
        sqlite3_exec(db, "CREATE TABLE quotes(a, b); INSERT INTO quotes VALUES(1, zeroblob(9000));",
                     nullptr, nullptr, nullptr);
        sqlite3_close(db);
        if (bytes == "truncated") {
            bytes = dir.read("X.tik").substr(0, 700);
            dir.write("X.tik", bytes);
        }
    } else {
        dir.write("X.tik", bytes);
    }
    auto file = CompoundFile::open(path);
    ASSERT_TRUE(file);
    RecordingLink link;
    TickStore store(*file, link);
    EXPECT_TRUE(store.index().empty());
    const std::vector<unsigned char> data(20, 7);
    EXPECT_TRUE(file->write("T", "x", data.data(), data.size()));
    std::vector<unsigned char> back;
    EXPECT_TRUE(file->read("T", "x", back));
    EXPECT_EQ(data, back);
}

INSTANTIATE_TEST_SUITE_P(Kinds, DamagedFile,
                         ::testing::Values(Damage{"empty", ""}, Damage{"text", "not a database at all\n"},
                                           Damage{"another_schema", "another schema"},
                                           Damage{"truncated", "truncated"}),
                         [](const auto& info) { return std::string(info.param.what); });

TEST(CompoundFileShare, ASecondOpenOfAHeldFileFailsAndLeavesItAlone) {
    TempDir dir;
    const std::string path = dir.file("Y.tik");
    auto held = CompoundFile::open(path);
    ASSERT_TRUE(held);
    const std::vector<unsigned char> data(4, 1);
    ASSERT_TRUE(held->write("T", "Contents", data.data(), data.size()));
    ASSERT_TRUE(held->commit());
    CompoundFile::OpenResult result{};
    EXPECT_FALSE(CompoundFile::open(path, &result));
    EXPECT_EQ(CompoundFile::OpenResult::Busy, result);
    std::vector<unsigned char> back;
    EXPECT_TRUE(held->read("T", "Contents", back));
}

}  // namespace
