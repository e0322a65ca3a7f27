// The security change database: secmaint.dat's format and order, lookups, bad files, the
// stamp at connect, event 8, and what a change of kind 'S' does to the cache.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qvnrt/RTSecChangeDB.h>
#include <qvnrt/RTSecurity.h>

#include "store/SecCacheEntry.h"
#include "store/StoreHooks.h"
#include "store/StoreState.h"
#include "store/StoreTestSupport.h"
#include "store/TickFilePath.h"
#include "support/FakeSession.h"

namespace {

namespace fs = std::filesystem;
using RTSecCache::SecChangeFileHeader;
using Changes = std::vector<RTSecChange>;

RTSecChange Change(const char* symbol, uint32_t time, char kind, uint8_t tag = 0) {
    RTSecChange change{};
    std::memcpy(change.symbol, symbol, strnlen(symbol, sizeof change.symbol));
    change.time = time;
    change.kind = kind;
    for (size_t i = 0; i < sizeof change.rest; ++i) change.rest[i] = static_cast<uint8_t>(tag + i);
    return change;
}

long Found(const char* symbol, unsigned long time) {
    const auto [first, last] = GetRTSecChangeInfo(symbol, time);
    return first ? last - first : -1;
}

class SecChangeDB : public ::testing::Test {
  protected:
    void TearDown() override { RTSecCache::Store().changeDB().close(); }

    std::string FilePath() const { return session.home.host().file("secmaint.dat"); }
    std::string Bytes() const { return session.home.host().read("secmaint.dat"); }
    SecChangeFileHeader Header() const {
        SecChangeFileHeader header{};
        std::memcpy(&header, Bytes().data(), sizeof header);
        return header;
    }
    void WriteFile(SecChangeFileHeader header, const Changes& records = {}) const {
        std::string bytes(4096, '\0');
        std::memcpy(bytes.data(), &header, sizeof header);
        if (!records.empty()) {
            std::memcpy(bytes.data() + 256, records.data(), records.size() * sizeof(RTSecChange));
        }
        session.home.host().write("secmaint.dat", bytes);
    }
    void Store(long stamp, Changes batch) {
        SetRTSecChangeInfo(stamp, static_cast<int>(batch.size()), batch.data());
    }

    qvnrt::test::FakeSession session;
};

TEST_F(SecChangeDB, NothingBeforeTheFirstStampThenANewEmptyFile) {
    Changes batch{Change("ACME", 1, 'S')};
    EXPECT_EQ(-1, Found("ACME", 0));
    EXPECT_TRUE(SetRTSecChangeInfo(9, 1, batch.data()));
    EXPECT_FALSE(fs::exists(FilePath()));

    EXPECT_EQ(0, GetRTSecChangeTimestamp());
    EXPECT_EQ(4096u, fs::file_size(FilePath()));
    EXPECT_EQ(0, Found("ACME", 0));
    EXPECT_EQ(nullptr, GetRTSecChangeInfo(nullptr, 0).second);
}

TEST_F(SecChangeDB, BatchesAreSortedAndMergedNewReplacingOldTwinsKept) {
    GetRTSecChangeTimestamp();
    Store(11, {Change("B", 2, 'X', 1), Change("A", 1, 'S', 2)});
    // High bytes sort first: symbols compare as signed characters.
    Store(22, {Change("B", 2, 'X', 3), Change("AB", 0, 'S', 4), Change("A", 1, 'A', 5),
               Change("\xC1", 1, 'X', 6), Change("A", 1, 'A', 5)});

    const Changes expected{Change("\xC1", 1, 'X', 6), Change("A", 1, 'A', 5),
                           Change("A", 1, 'A', 5),    Change("A", 1, 'S', 2),
                           Change("AB", 0, 'S', 4),   Change("B", 2, 'X', 3)};
    const SecChangeFileHeader header = Header();
    EXPECT_EQ(expected.size(), header.slots);
    ASSERT_EQ(expected.size(), header.count);
    EXPECT_EQ(22, header.timestamp);
    const std::string bytes = Bytes();
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(0, std::memcmp(&expected[i], bytes.data() + 256 + i * sizeof(RTSecChange),
                                 sizeof(RTSecChange)))
            << i;
    }
}

TEST_F(SecChangeDB, TheFileGrowsAndEmptyOrBadBatchesMoveOnlyTheStamp) {
    GetRTSecChangeTimestamp();
    Changes many;
    for (uint32_t i = 0; i < 100; ++i) many.push_back(Change("GROW", i, 'S'));
    Store(1, many);
    EXPECT_EQ(256 + 100 * sizeof(RTSecChange), fs::file_size(FilePath()));
    SetRTSecChangeInfo(2, 0, many.data());
    SetRTSecChangeInfo(3, -1, many.data());
    SetRTSecChangeInfo(4, 5, nullptr);
    EXPECT_EQ(4, GetRTSecChangeTimestamp());
    EXPECT_EQ(100u, Header().count);
}

struct Lookup {
    const char* symbol;
    unsigned long time;
    long found;
    friend void PrintTo(const Lookup& l, std::ostream* out) {
        *out << l.symbol << " from " << l.time;
    }
};

class SecChangeLookup : public SecChangeDB, public ::testing::WithParamInterface<Lookup> {};

TEST_P(SecChangeLookup, RangeOfTheSymbolFromTheTime) {
    GetRTSecChangeTimestamp();
    Store(1, {Change("A", 9, 'S'), Change("A", 5, 'X'), Change("A", 1, 'S'), Change("AB", 3, 'S'),
              Change("ABCDEFGHIJKLMNO", 7, 'S')});
    EXPECT_EQ(GetParam().found, Found(GetParam().symbol, GetParam().time));
}

INSTANTIATE_TEST_SUITE_P(Table, SecChangeLookup,
                         ::testing::Values(Lookup{"A", 0, 3}, Lookup{"A", 5, 2}, Lookup{"A", 10, 0},
                                           Lookup{"AB", 0, 1}, Lookup{"Z", 0, 0},
                                           Lookup{"ABCDEFGHIJKLMNOPQ", 0, 1},
                                           Lookup{"A", 0x100000000ul, 0}));

TEST_F(SecChangeDB, AFileMarkedWithTheResetWordIsResetAtEachOpen) {
    WriteFile({RTSecCache::RTSecChangeDB::kResetMarker, 3, 3, 99, {}});
    EXPECT_EQ(0, GetRTSecChangeTimestamp());
    const SecChangeFileHeader header = Header();
    EXPECT_EQ(0u, header.count);
    EXPECT_EQ((4096u - 256) / sizeof(RTSecChange), header.slots);
    EXPECT_EQ(-1, Found("A", 0));

    Store(50, {Change("A", 1, 'S')});  // written through, yet never read back
    EXPECT_EQ(1u, Header().count);
    EXPECT_EQ(0, GetRTSecChangeTimestamp());
    EXPECT_EQ(0u, Header().count);
}

TEST_F(SecChangeDB, ABadCountIsClampedToTheFileAndReportedOnce) {
    WriteFile({0, 500, 2, 7, {}}, {Change("B", 1, 'S'), Change("A", 1, 'S')});  // out of order
    qvnrt::test::ClogCapture clog;
    EXPECT_EQ(7, GetRTSecChangeTimestamp());
    Found("A", 0);
    Found("B", 0);
    const size_t room = (4096 - 256) / sizeof(RTSecChange);
    EXPECT_NE(std::string::npos, clog.text().find("reading " + std::to_string(room)));
    EXPECT_EQ(clog.text().find("secmaint.dat"), clog.text().rfind("secmaint.dat"));
    Store(8, {Change("C", 1, 'S')});
    EXPECT_EQ(room + 1, Header().count);
}

TEST_F(SecChangeDB, AFileThatCannotBeMappedGivesStampZeroAndDropsBatches) {
    fs::create_directory(FilePath());
    EXPECT_EQ(0, GetRTSecChangeTimestamp());
    Store(5, {Change("A", 1, 'S')});
    EXPECT_EQ(0, GetRTSecChangeTimestamp());
    EXPECT_EQ(-1, Found("A", 0));
}

TEST_F(SecChangeDB, ConnectPassesTheStampAndEvent8MergesItsBatch) {
    WriteFile({0, 0, 0, 1234, {}});
    RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
    ASSERT_TRUE(session.Connect());
    EXPECT_EQ(1234u, session.fake.last("clientOpenServer").number("changeStamp"));

    const Changes batch{Change("ACME", 3, 'X'), Change("ACME", 2, 'X')};
    std::vector<long> storage(2 + batch.size() * sizeof(RTSecChange) / sizeof(long));
    auto* event = reinterpret_cast<RTNetSecChangeBatch*>(storage.data());
    event->timestamp = 2000;
    event->count = static_cast<int>(batch.size());
    std::memcpy(event->changes, batch.data(), batch.size() * sizeof(RTSecChange));
    session.fake.fireNetwork(RTNET_SECURITY_CHANGE, event);
    EXPECT_EQ(2000, GetRTSecChangeTimestamp());
    EXPECT_EQ(2, Found("ACME", 0));
}

TEST_F(SecChangeDB, KindSDropsWhatIsCachedForItsSymbolOtherKindsKeepIt) {
    RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
    ASSERT_TRUE(session.Connect());
    RTSecurity gone, kept;
    char fields[] = {6, 0};
    for (RTSecurity* security : {&gone, &kept}) {
        const char* symbol = security == &gone ? "GONE" : "KEPT";
        security->ReqSecurity(symbol, fields, static_cast<RTSecurityType>(1), 1, 0);
        session.fake.fireSecurityInt(security->m_request, 6, 42);
        session.fake.fireSecurityEnd(security->m_request);
        security->m_pCacheEntry->m_record->tikTime = 5;
        security->m_pCacheEntry->m_record->tikSize = 9;
        std::ofstream(RTSecCache::tickFilePath(security->m_strSymbol)) << "tik";
    }
    Store(1, {Change("GONE", 1, 'S'), Change("KEPT", 1, 'X')});

    long error = 0;
    EXPECT_EQ(0, gone.GetSecInt(6, &error));
    EXPECT_EQ(-4, error);
    EXPECT_EQ(42, kept.GetSecInt(6, &error));
    EXPECT_EQ(0u, gone.m_pCacheEntry->m_record->tikTime);
    EXPECT_EQ(9u, gone.m_pCacheEntry->m_record->tikSize);
    EXPECT_EQ(5u, kept.m_pCacheEntry->m_record->tikTime);
    EXPECT_FALSE(fs::exists(RTSecCache::tickFilePath("GONE")));
    EXPECT_TRUE(fs::exists(RTSecCache::tickFilePath("KEPT")));
}

}  // namespace
