#include "store/SecCacheMap.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "store/SecCacheEntry.h"

namespace RTSecCache {
namespace {

// Records in an array standing in for the mapped file, one symbol each.
std::vector<SecData1> Records(const std::vector<std::string>& symbols) {
    std::vector<SecData1> records(symbols.size());
    for (size_t i = 0; i < symbols.size(); ++i) {
        std::memset(&records[i], 0, sizeof(SecData1));
        std::strncpy(records[i].symbol, symbols[i].c_str(), sizeof(records[i].symbol) - 1);
    }
    return records;
}

std::vector<std::string> Symbols(int count) {
    std::vector<std::string> symbols;
    for (int i = 0; i < count; ++i) symbols.push_back("S" + std::to_string(i * 7919));
    return symbols;
}

// From an empty table through several growths, and from one sized up front: every record is
// found by its symbol, and only by it.
class SecCacheMapSizes : public testing::TestWithParam<size_t> {};

TEST_P(SecCacheMapSizes, FindsEveryRecordByItsSymbolOnly) {
    const std::vector<std::string> symbols = Symbols(3000);
    std::vector<SecData1> records = Records(symbols);
    SecCacheMap map;
    map.reserve(GetParam());
    for (SecData1& record : records) map.insert(&record);
    ASSERT_EQ(records.size(), map.size());
    for (size_t i = 0; i < records.size(); ++i) {
        const SecCacheMap::Node node = map.find(symbols[i].c_str());
        ASSERT_TRUE(node) << symbols[i];
        EXPECT_EQ(&records[i], node.record);
        EXPECT_EQ(nullptr, *node.entry);
        EXPECT_FALSE(map.find((symbols[i] + "X").c_str()));
    }
}

INSTANTIATE_TEST_SUITE_P(Reserved, SecCacheMapSizes, testing::Values(0, 3000));

// The scan hashes a record's field in place, a lookup hashes the text it is given: for every
// length, with anything after the NUL, both must meet.
TEST(SecCacheMap, ARecordsFieldAndItsTextHashAlike) {
    const std::string letters = "ABCDEFGHIJKLMNOPQRS";
    for (size_t length = 0; length <= letters.size(); ++length) {
        SecData1 record;
        std::memset(record.symbol, 0x5a, sizeof(record.symbol));  // stale bytes after the NUL
        std::memcpy(record.symbol, letters.data(), length);
        record.symbol[length] = '\0';
        EXPECT_EQ(HashSymbol(letters.substr(0, length).c_str()), HashRecordSymbol(record))
            << length;
    }
}

TEST(SecCacheMap, ASecondRecordOfOneSymbolGetsTheFirstOnesNode) {
    std::vector<SecData1> records = Records({"IBM", "IBM"});
    SecCacheMap map;
    map.insert(&records[0]);
    EXPECT_EQ(&records[0], map.insert(&records[1]).record);
    EXPECT_EQ(1u, map.size());
}

TEST(SecCacheMap, RebaseMovesEveryKeyAndEveryEntrysRecord) {
    const std::vector<std::string> symbols = Symbols(100);
    std::vector<SecData1> before = Records(symbols);
    std::vector<SecData1> after = before;  // the file's bytes at their new place
    SecCacheMap map;
    for (SecData1& record : before) map.insert(&record);
    SecCacheEntry entry(&before[42]);
    *map.find(symbols[42].c_str()).entry = &entry;

    map.rebase(reinterpret_cast<char*>(after.data()) - reinterpret_cast<char*>(before.data()));
    for (size_t i = 0; i < symbols.size(); ++i) {
        EXPECT_EQ(&after[i], map.find(symbols[i].c_str()).record);
    }
    EXPECT_EQ(&after[42], entry.m_record);
}

TEST(SecCacheMap, ClearGivesEveryNodeBack) {
    std::vector<SecData1> records = Records(Symbols(1000));
    SecCacheMap map;
    for (SecData1& record : records) map.insert(&record);
    ASSERT_GT(map.pool().blocksInUse(), 1);
    map.clear();
    EXPECT_EQ(0, map.pool().blocksInUse());
    EXPECT_FALSE(map.find(records[0].symbol));
}

}  // namespace
}  // namespace RTSecCache
