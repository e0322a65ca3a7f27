#include "store/cache.h"

#include <sys/mman.h>

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "store/StoreTestSupport.h"
#include "support/TempDir.h"

using qvnrt::test::ClogCapture;
using qvnrt::test::TempDir;
using RTSecCache::CacheFileHeader;

namespace {

constexpr uint32_t kSignature = 0x9432e204;

struct Quote {
    Quote() : made(0x600d), value(0) {}
    int32_t made, value, spare, tail;  // tail: the free list's link while the slot is free
};

constexpr size_t FileBytes(size_t capacity) {
    return 4096 + capacity * sizeof(Quote);
}

class QuoteCache : public RTSecCache::cache<Quote> {
public:
    QuoteCache() : cache<Quote>(kSignature) {}
    void rebase(void* newBase, void* oldBase) override { rebased.emplace_back(newBase, oldBase); }
    long index(const void* slot) const {
        return (static_cast<const char*>(slot) - static_cast<char*>(view()) - 4096) / 16;
    }
    std::vector<std::pair<void*, void*>> rebased;
};

}  // namespace

TEST(cache, ANewFileGrowsByTheStepThenByDoublingAndKeepsItsFreeList) {
    TempDir dir;
    const std::string path = dir.file("Sec2.dat");
    ClogCapture log;
    {
        QuoteCache file;
        ASSERT_TRUE(file.open(path.c_str()));
        EXPECT_EQ(4096u, file.fileSize());
        const CacheFileHeader h = *file.header();
        EXPECT_EQ(std::vector<uint32_t>({kSignature, 1, 0, 0, 1}),
                  std::vector<uint32_t>({h.signature, h.version, uint32_t(h.capacity),
                                         uint32_t(h.freeCount), uint32_t(h.lockCount)}));
        std::vector<long> grownAt;
        for (long i = 0, capacity = 0; i < 4097; ++i) {
            Quote* quote = file.allocate();
            ASSERT_EQ(i, file.index(quote));
            ASSERT_EQ(0x600d, quote->made);
            if (file.header()->capacity != capacity) {
                grownAt.push_back(i);
                capacity = file.header()->capacity;
                EXPECT_EQ(FileBytes(capacity), file.fileSize());
                EXPECT_EQ(capacity, file.link(capacity - 1));  // the chain ends past the end
            }
        }
        EXPECT_EQ(std::vector<long>({0, 1024, 2048, 4096}), grownAt);
    }
    EXPECT_EQ(0, qvnrt::test::ReadCacheHeader(path).lockCount);
    QuoteCache again;
    ASSERT_TRUE(again.open(path.c_str()));
    EXPECT_EQ(4097, again.index(again.allocate()));
    EXPECT_EQ("", log.text());
}

TEST(cache, AForeignWrongVersionOrShortFileRestartsEmptyWithoutAWord) {
    TempDir dir;
    const std::string path = dir.file("Sec2.dat");
    const struct {
        CacheFileHeader header;
        size_t size;
        int32_t capacityAfter;
    } cases[] = {{{0x1234, 1, 10, 2, 7, 0, {}}, FileBytes(10), 0},
                 {{kSignature, 2, 10, 2, 7, 0, {}}, FileBytes(10), 0},
                 {{kSignature, 1, 10, 2, 7, 0, {}}, FileBytes(10) - 1, 0},
                 {{kSignature, 1, -1, 2, 7, 0, {}}, FileBytes(10), 0},
                 {{kSignature, 1, 10, 2, 7, 0, {}}, FileBytes(10), 10}};  // accepted
    for (const auto& c : cases) {
        qvnrt::test::WriteCacheFile(path, c.header, c.size);
        ClogCapture log;
        QuoteCache file;
        ASSERT_TRUE(file.open(path.c_str()));
        EXPECT_EQ(c.capacityAfter, file.header()->capacity);
        EXPECT_EQ(c.capacityAfter ? 2 : 0, file.header()->freeCount);
        EXPECT_EQ(kSignature, file.header()->signature);
        EXPECT_EQ(7, file.header()->freeHead);  // left as it was
        EXPECT_EQ(c.size, file.fileSize());     // not shortened
        EXPECT_EQ("", log.text());
    }
}

TEST(cache, AnUncleanFileIsReportedOnceAndLeftWithLockCountOne) {
    TempDir dir;
    const std::string path = dir.file("Sec2.dat");
    for (const int32_t count : {1, 7}) {
        qvnrt::test::WriteCacheFile(path, {kSignature, 1, 0, 0, 0, count, {}}, 4096);
        ClogCapture log;
        QuoteCache first;
        ASSERT_TRUE(first.open(path.c_str()));
        EXPECT_EQ(1, qvnrt::test::ReadCacheHeader(path).lockCount);  // flushed at open
        ASSERT_TRUE(first.open(path.c_str()));  // reopened without closing in between
        EXPECT_EQ(1, first.header()->lockCount);
        const std::string report = "\n !!! Cache : " + path + " Lock count ";
        EXPECT_EQ(report + std::to_string(count) + report + "1", log.text());
    }
    ClogCapture log;
    QuoteCache missing;
    EXPECT_FALSE(missing.open(dir.file("none/Sec2.dat").c_str()));
    EXPECT_EQ("\n !!! Cache : Can't open " + dir.file("none/Sec2.dat"), log.text());
    EXPECT_EQ(nullptr, missing.allocate());
}

TEST(cache, ADamagedFreeListYieldsTheSlotTakenThenForcesGrowth) {
    TempDir dir;
    for (const int32_t damaged : {1024, -3}) {
        QuoteCache file;
        ASSERT_TRUE(file.open(dir.file(std::to_string(damaged)).c_str()));
        file.allocate();
        file.setLink(1, damaged);
        EXPECT_EQ(1, file.index(file.allocate()));
        EXPECT_EQ(0, file.header()->freeCount);
        EXPECT_EQ(1024, file.index(file.allocate()));
    }
    // A head outside the file is dropped rather than written through.
    qvnrt::test::WriteCacheFile(dir.file("head"), {kSignature, 1, 10, 5, 99999, 0, {}},
                                FileBytes(10));
    QuoteCache file;
    ASSERT_TRUE(file.open(dir.file("head").c_str()));
    EXPECT_EQ(10, file.index(file.allocate()));
}

TEST(cache, RebaseHearsTheNewAndOldViewsWhenGrowthMovesTheMapping) {
    TempDir dir;
    QuoteCache file;
    ASSERT_TRUE(file.open(dir.file("Sec2.dat").c_str()));
    for (int i = 0; i < 1024; ++i) file.allocate()->value = i;
    file.rebased.clear();  // whether the first growth moved is the kernel's choice
    // Taking the address space just past the view makes the next growth move it.
    char* const before = static_cast<char*>(file.view());
    void* block = ::mmap(before + file.mappedSize(), 4096, PROT_NONE,
                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    ASSERT_EQ(1024, file.index(file.allocate()));
    ASSERT_EQ(1u, file.rebased.size());
    EXPECT_EQ(std::make_pair(file.view(), static_cast<void*>(before)), file.rebased[0]);
    EXPECT_EQ(1023, static_cast<Quote*>(file.slot(1023))->value);
    if (block != MAP_FAILED) ::munmap(block, 4096);
}
