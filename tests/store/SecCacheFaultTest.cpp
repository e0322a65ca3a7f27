// Damaged cache files, written by hand: every loss bounded and reported, and no symbol ever
// shown another symbol's data.
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qvnrt/RTServer.h>

#include "store/SecCache.h"
#include "store/SecCacheEntry.h"
#include "store/StoreState.h"
#include "store/StoreTestSupport.h"
#include "support/TempDir.h"

namespace RTSecCache {
namespace {

constexpr int kField41 = 41;  // a text kept in Sec2.dat
constexpr int kName = 2;      // a text kept in Sec1.dat, 32 bytes wide

struct Files {
    CacheFileHeader sec1Header = {};
    std::vector<SecData1> sec1;
    CacheFileHeader sec2Header = {};
    std::vector<SecData2> sec2;
    size_t sec1Cut = 0;  // bytes cut from the end of Sec1.dat
};

SecData1 Record(const char* symbol, int32_t sec2Index) {
    SecData1 record;
    std::memset(&record, 0, sizeof(record));
    std::strncpy(record.symbol, symbol, 19);
    record.secData2Index = sec2Index;
    record.presence = (uint64_t{1} << 1) | (sec2Index >= 0 ? uint64_t{1} << kField41 : 0);
    return record;
}

SecData2 Extended(const char* text, int32_t link) {
    SecData2 record;
    std::memset(&record, 0, sizeof(record));
    record.first = -1;
    std::strncpy(record.field41, text, sizeof(record.field41) - 1);
    std::memcpy(reinterpret_cast<char*>(&record) + 68, &link, sizeof(link));
    return record;
}

// Two symbols, each with its own Sec2 record; a case then damages what it tests.
Files Healthy() {
    Files files;
    files.sec1 = {Record("AAA", 0), Record("BBB", 1)};
    files.sec2 = {Extended("of AAA", 0), Extended("of BBB", 0)};
    files.sec1Header.signature = kSec1Signature;
    files.sec1Header.version = 1;
    files.sec1Header.capacity = 2;
    files.sec2Header.signature = kSec2Signature;
    files.sec2Header.version = 1;
    files.sec2Header.capacity = 2;
    return files;
}

template <class T>
void Write(const std::string& path, CacheFileHeader header, const std::vector<T>& records) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&header), sizeof(header));
    out.write(reinterpret_cast<const char*>(records.data()),
              static_cast<std::streamsize>(records.size() * sizeof(T)));
}

struct Fault {
    const char* name;
    std::function<void(Files&)> damage;
    const char* aaa;  // what AAA's field 41 reads afterwards; null: absent
    const char* bbb;
    bool reported;    // a line on std::clog
};

class SecCacheFiles : public testing::Test {
protected:
    // Writes the files and opens the cache on them, keeping what it says on std::clog.
    void OpenOn(const Files& files) {
        Write(dir.file("Sec1.dat"), files.sec1Header, files.sec1);
        if (files.sec1Cut) {
            std::filesystem::resize_file(dir.file("Sec1.dat"),
                                         std::filesystem::file_size(dir.file("Sec1.dat")) - files.sec1Cut);
        }
        written = ReadBytes(dir.file("Sec1.dat"));
        Write(dir.file("Sec2.dat"), files.sec2Header, files.sec2);
        RTServer::InitCache(true, dir.path().c_str(), 5, 0);
        const qvnrt::test::ClogCapture capture;
        ASSERT_TRUE(Store().secCache().ensureOpen());
        log = capture.text();
    }
    void ExpectField41(const char* symbol, const char* expected) {
        SecCacheEntry* entry = Store().secCache().acquire(symbol);
        ASSERT_NE(nullptr, entry);
        long error = 0;
        const char* text = entry->getSecString(kField41, &error);
        if (expected) {
            EXPECT_STREQ(expected, text) << symbol;
        } else {
            EXPECT_EQ(nullptr, text) << symbol << " reads " << text;
            EXPECT_EQ(-4, error);
        }
        Store().secCache().release(entry);
    }

    static std::string ReadBytes(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }

    qvnrt::test::TempDir dir;
    std::string log;  // what the cache said while it opened
    std::string written;  // Sec1.dat as written, before the cache opened it
};

class SecCacheFaults : public SecCacheFiles, public testing::WithParamInterface<Fault> {};

TEST_P(SecCacheFaults, LossIsBoundedReportedAndNeverAnotherSymbols) {
    Files files = Healthy();
    GetParam().damage(files);
    OpenOn(files);
    ExpectField41("AAA", GetParam().aaa);
    ExpectField41("BBB", GetParam().bbb);
    EXPECT_EQ(GetParam().reported, !log.empty()) << log;
}

INSTANTIATE_TEST_SUITE_P(
    Files, SecCacheFaults,
    testing::Values(
        Fault{"Healthy", [](Files&) {}, "of AAA", "of BBB", false},
        Fault{"IndexPastSec2", [](Files& f) { f.sec1[1].secData2Index = 7; }, "of AAA", nullptr,
              true},
        Fault{"NegativeIndex", [](Files& f) { f.sec1[1].secData2Index = -9; }, "of AAA", nullptr,
              true},
        Fault{"TwoSymbolsOneRecord", [](Files& f) { f.sec1[1].secData2Index = 0; }, "of AAA",
              nullptr, true},
        Fault{"Sec2Restarted", [](Files& f) { f.sec2Header.signature ^= 1; }, nullptr, nullptr,
              true},
        Fault{"Sec2CapacityFlipped", [](Files& f) { f.sec2Header.capacity = 1 << 20; }, nullptr,
              nullptr, true},
        Fault{"Sec2Lost", [](Files& f) { f.sec2.clear(), f.sec2Header = {}; }, nullptr, nullptr,
              true}),
    [](const testing::TestParamInfo<Fault>& info) { return std::string(info.param.name); });

// Damage to Sec1.dat's header: a file the cache cannot trust restarts empty, as ever, but
// says so and keeps the old bytes beside it; damage the start-up repairs costs nothing.
struct HeaderFault {
    const char* name;
    std::function<void(Files&)> damage;
    bool restarts;
};

class Sec1HeaderFaults : public SecCacheFiles, public testing::WithParamInterface<HeaderFault> {};

TEST_P(Sec1HeaderFaults, ARestartKeepsTheOldFileAndSaysSo) {
    Files files = Healthy();
    GetParam().damage(files);
    OpenOn(files);
    const std::string aside = dir.file("Sec1.dat.damaged");
    if (GetParam().restarts) {
        EXPECT_NE(std::string::npos, log.find(aside)) << log;
        EXPECT_EQ(written, ReadBytes(aside));
        EXPECT_EQ(0u, Store().secCache().map().size());
    } else {
        EXPECT_EQ("", log);
        EXPECT_FALSE(std::filesystem::exists(aside));
        ExpectField41("AAA", "of AAA");
        ExpectField41("BBB", "of BBB");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, Sec1HeaderFaults,
    testing::Values(
        HeaderFault{"Signature", [](Files& f) { f.sec1Header.signature ^= 0x100; }, true},
        HeaderFault{"Version", [](Files& f) { f.sec1Header.version ^= 2; }, true},
        HeaderFault{"CapacityPastTheEnd", [](Files& f) { f.sec1Header.capacity ^= 4; }, true},
        HeaderFault{"OneByteShort", [](Files& f) { f.sec1Cut = 1; }, true},
        HeaderFault{"FreeCount", [](Files& f) { f.sec1Header.freeCount ^= 64; }, false},
        HeaderFault{"FreeHead", [](Files& f) { f.sec1Header.freeHead ^= 1 << 30; }, false}),
    [](const testing::TestParamInfo<HeaderFault>& info) { return std::string(info.param.name); });

// A free list whose head names a record that a symbol holds: a new symbol's record is made
// elsewhere, and the holder's text stays its own.
TEST_F(SecCacheFiles, ADamagedSec2FreeListNeverHandsOutAHeldRecord) {
    Files files = Healthy();
    files.sec2Header.freeCount = 1;
    files.sec2Header.freeHead = 0;
    OpenOn(files);

    SecCacheEntry* entry = Store().secCache().acquire("CCC");
    ASSERT_NE(nullptr, entry);
    char text[] = "of CCC";
    entry->storeSecField(0, 0, kField41, 2, text);
    EXPECT_STREQ("of CCC", entry->getSecString(kField41, nullptr));
    EXPECT_NE(0, entry->m_record->secData2Index);
    Store().secCache().release(entry);
    ExpectField41("AAA", "of AAA");
}

// A read of a field that has no record behind it makes none, and answers "absent".
TEST_F(SecCacheFiles, AReadNeverMakesASec2Record) {
    Files files = Healthy();
    files.sec1[1].secData2Index = -1;
    files.sec1[1].presence |= uint64_t{1} << 48;  // present, with nowhere to read it
    OpenOn(files);
    SecCacheEntry* entry = Store().secCache().acquire("BBB");
    long error = 0;
    EXPECT_EQ(0, entry->getSecInt(48, &error));
    EXPECT_EQ(-4, error);
    EXPECT_EQ(-1, entry->m_record->secData2Index);
    Store().secCache().release(entry);
}

// A name that fills its field without a terminator reads as the field's width less one.
TEST_F(SecCacheFiles, ATextWithoutItsTerminatorStopsAtItsField) {
    Files files = Healthy();
    std::memset(files.sec1[0].name, 'N', sizeof(files.sec1[0].name));
    std::memset(files.sec1[0].bytes52, 'X', sizeof(files.sec1[0].bytes52));
    files.sec1[0].presence |= uint64_t{1} << kName;
    OpenOn(files);
    SecCacheEntry* entry = Store().secCache().acquire("AAA");
    const char* name = entry->getSecString(kName, nullptr);
    ASSERT_NE(nullptr, name);
    EXPECT_EQ(sizeof(files.sec1[0].name) - 1, std::strlen(name));
    Store().secCache().release(entry);
}

}  // namespace
}  // namespace RTSecCache
