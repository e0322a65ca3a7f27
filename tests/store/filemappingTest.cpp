#include "store/filemapping.h"

#include <string>

#include <gtest/gtest.h>

#include "support/TempDir.h"

using qvnrt::test::TempDir;
using RTSecCache::filemapping;

namespace {

std::string Viewed(const filemapping& file, size_t from, size_t count) {
    return std::string(static_cast<const char*>(file.view()) + from, count);
}

}  // namespace

TEST(filemapping, SetSizeGrowsWithZerosKeepsDataAndShrinksOnRequest) {
    TempDir dir;
    const std::string path = dir.file("sized.dat");
    filemapping file;
    EXPECT_FALSE(file.open(nullptr, 0, 1));
    ASSERT_TRUE(file.open(path.c_str(), 100, 1));  // never below one page
    EXPECT_EQ(4096u, file.fileSize());
    ASSERT_TRUE(file.setSize(10000));
    std::string(10000, 'x').copy(static_cast<char*>(file.view()), 10000);

    ASSERT_TRUE(file.setSize(50000));
    EXPECT_EQ(50000u, file.mappedSize());
    EXPECT_EQ(std::string(10000, 'x') + std::string(40000, '\0'), Viewed(file, 0, 50000));
    ASSERT_TRUE(file.setSize(6000));
    ASSERT_TRUE(file.setSize(0));  // the present size
    EXPECT_EQ(6000u, file.mappedSize());
    file.close();
    file.close();
    EXPECT_EQ(std::string(6000, 'x'), dir.read("sized.dat"));

    // Read-only, a view never reaches past the file's end: the file cannot grow to meet it.
    ASSERT_TRUE(file.open(path.c_str(), 0, 0));
    EXPECT_FALSE(file.setSize(8192));
    EXPECT_EQ(std::string(6000, 'x'), Viewed(file, 0, 6000));  // the old view stays
    dir.write("short.dat", "short");
    EXPECT_FALSE(file.open(dir.file("short.dat").c_str(), 0, 0));
}

TEST(filemapping, MappingNameEscapesAllButTheNameCharactersAndStopsAt259) {
    EXPECT_EQ("", filemapping::mappingName(""));
    EXPECT_EQ("@AZaz09$-_#. ", filemapping::mappingName("@AZaz09$-_#. "));
    EXPECT_EQ("%2ftmp%2fSec1.dat", filemapping::mappingName("/tmp/Sec1.dat"));
    EXPECT_EQ("%7e%25%5c%3a%e9%ff%01", filemapping::mappingName("~%\\:\xe9\xff\x01"));
    EXPECT_EQ(std::string(259, 'a'), filemapping::mappingName(std::string(300, 'a')));
    // The cut may fall inside an escape.
    EXPECT_EQ(std::string(257, 'a') + "%2",
              filemapping::mappingName(std::string(257, 'a') + "/bcd"));
}
