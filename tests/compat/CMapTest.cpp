#include <qvnrt/compat/CMap.h>

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::vector<std::string> KeysInOrder(const CMapStringToString& map) {
    std::vector<std::string> keys;
    CString key, value;
    for (POSITION at = map.GetStartPosition(); at;) {
        map.GetNextAssoc(at, key, value);
        keys.emplace_back(key);
    }
    return keys;
}

}  // namespace

TEST(CMapStringToString, HashIsTimes33PlusByte) {
    qvnrt::compat::StringHash hash;
    EXPECT_EQ(0u, hash(""));
    EXPECT_EQ(97u, hash("a"));
    EXPECT_EQ((97u * 33 + 98) * 33 + 99, hash("abc"));
    // Unsigned 32-bit wrap-around on a long key.
    uint32_t expected = 0;
    for (int i = 0; i < 40; ++i) expected = expected * 33 + 'z';
    EXPECT_EQ(expected, hash(CString('z', 40)));
}

TEST(CMapStringToString, IteratesBucketsInOrderNewestFirstWithinABucket) {
    // Worked example with 17 buckets: "a" = 97 -> 12, "b" = 98 -> 13, "r" = 114 -> 12,
    // "ab" = 3299 -> 1. So "ab" (bucket 1) comes first, then bucket 12 newest first: "r",
    // "a", then "b" in bucket 13.
    CMapStringToString map;
    map["a"] = "1";
    map["b"] = "2";
    map["r"] = "3";
    map["ab"] = "4";
    EXPECT_EQ((std::vector<std::string>{"ab", "r", "a", "b"}), KeysInOrder(map));

    // Setting a key again keeps its place; removing one closes the gap.
    map.SetAt("a", "changed");
    EXPECT_EQ((std::vector<std::string>{"ab", "r", "a", "b"}), KeysInOrder(map));
    EXPECT_TRUE(map.RemoveKey("r"));
    EXPECT_FALSE(map.RemoveKey("r"));
    EXPECT_EQ((std::vector<std::string>{"ab", "a", "b"}), KeysInOrder(map));
    // A removed key inserted again is now the newest of its bucket.
    map["r"] = "again";
    EXPECT_EQ((std::vector<std::string>{"ab", "r", "a", "b"}), KeysInOrder(map));

    CString value;
    ASSERT_TRUE(map.Lookup("a", value));
    EXPECT_STREQ("changed", value);
    EXPECT_EQ(4, map.GetCount());
}

TEST(CMapStringToString, EmptyMapHasNoStartPosition) {
    CMapStringToString map;
    EXPECT_EQ(nullptr, map.GetStartPosition());
    map["x"] = "y";
    map.RemoveAll();
    EXPECT_EQ(nullptr, map.GetStartPosition());
    CString value;
    EXPECT_FALSE(map.Lookup("x", value));
}

TEST(CMapStringToString, OtherTableSizesChangeTheOrder) {
    CMapStringToString map;
    map.InitHashTable(7);
    // 97 % 7 = 6, 98 % 7 = 0, 99 % 7 = 1.
    map["a"] = "";
    map["b"] = "";
    map["c"] = "";
    EXPECT_EQ((std::vector<std::string>{"b", "c", "a"}), KeysInOrder(map));
}

TEST(HashMap, NumericKeysHashShiftedByFour) {
    // The news map: key >> 4, modulo 17. 0x10 -> 1, 0x20 -> 2, 0x110 -> 17 % 17 = 0.
    qvnrt::compat::HashMap<unsigned long, int, qvnrt::compat::ShiftHash> map;
    map[0x20] = 2;
    map[0x10] = 1;
    map[0x110] = 0;
    std::vector<unsigned long> keys;
    unsigned long key;
    int value;
    for (POSITION at = map.GetStartPosition(); at;) {
        map.GetNextAssoc(at, key, value);
        keys.push_back(key);
    }
    EXPECT_EQ((std::vector<unsigned long>{0x110, 0x10, 0x20}), keys);
}

// The index beside the buckets must never disagree with them: after a run of inserts,
// re-sets and removals from the middle, head and tail of chains, the order and every
// lookup still follow the plain model of 17 lists with the newest key in front.
TEST(CMapStringToString, ManyChangesKeepTheBucketOrderAndEveryLookup) {
    constexpr unsigned kBuckets = 17;
    std::vector<std::vector<std::string>> model(kBuckets);
    CMapStringToString map;
    qvnrt::compat::StringHash hash;
    auto bucketOf = [&](const std::string& key) { return hash(key.c_str()) % kBuckets; };
    uint32_t seed = 12345;
    auto next = [&] { return seed = seed * 1103515245u + 12345u, (seed >> 8) % 600; };
    for (int step = 0; step < 4000; ++step) {
        const std::string key = "K" + std::to_string(next());
        auto& chain = model[bucketOf(key)];
        const auto at = std::find(chain.begin(), chain.end(), key);
        if (step % 3 == 2) {
            EXPECT_EQ(at != chain.end(), map.RemoveKey(key.c_str())) << key;
            if (at != chain.end()) chain.erase(at);
        } else {
            map.SetAt(key.c_str(), std::to_string(step).c_str());
            if (at == chain.end()) chain.insert(chain.begin(), key);
        }
    }
    std::vector<std::string> expected;
    for (const auto& chain : model) expected.insert(expected.end(), chain.begin(), chain.end());
    EXPECT_EQ(expected, KeysInOrder(map));
    EXPECT_EQ(static_cast<int>(expected.size()), map.GetCount());
    CString value;
    for (const std::string& key : expected) EXPECT_TRUE(map.Lookup(key.c_str(), value)) << key;
    EXPECT_FALSE(map.Lookup("K600", value));
}
