// RTNewsItem without a driver: adding and removing headlines, the date order with its kept
// exits, the map's order, and the comparisons.
#include <qvnrt/RTNewsItem.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "NewsTestSupport.h"

namespace {

using qvnrt::test::ArticleCall;
using qvnrt::test::ArticleLog;
using qvnrt::test::DateOrder;

class RTNewsItemTest : public testing::Test {
protected:
    // Adds one headline per (identifier, date), each as a batch of its own.
    void Add(const std::vector<std::pair<unsigned long, long>>& headlines) {
        for (const auto& [id, date] : headlines) item.AddHeadline(id, "h", 1, "s", date, 1, 0);
    }

    ArticleLog log;
    RTNewsItem item{"ACME", 0, 0, 1, 50, 0, 0, nullptr, 0, &ArticleLog::Record, log.user()};
};

TEST_F(RTNewsItemTest, CountZeroOrBelowReportsANullHeadlineAndAddsNothing) {
    for (const int count : {0, -3}) {
        EXPECT_EQ(log.answer, item.AddHeadline(1, "h", 1, "s", 10, count, 0));
        EXPECT_EQ((ArticleCall{0, ARTICLE_ADDED, count}), log.calls.back());
    }
    EXPECT_EQ(0u, item.GetHeadlineCount());
}

TEST_F(RTNewsItemTest, RepeatedIdentifierKeepsTheFirstAndReturnsZero) {
    EXPECT_EQ(log.answer, item.AddHeadline(4, "first", 1, "s", 10, 2, 1));
    EXPECT_EQ(0, item.AddHeadline(4, "second", 1, "s", 20, 1, 0));
    EXPECT_EQ((std::vector<ArticleCall>{{4, ARTICLE_ADDED, 2}, {0, ARTICLE_ADDED, 0}}), log.calls);
    ASSERT_EQ(1u, item.GetHeadlineCount());
    EXPECT_STREQ("first", item.GetNewsHeadline(4)->GetHeadline());
    EXPECT_EQ(1, item.GetNewsHeadline(4)->IsHeadlineForHistory());
}

TEST_F(RTNewsItemTest, NullTextsAndANullCallbackAreTolerated) {
    item.m_pfnArticle = nullptr;
    EXPECT_EQ(0, item.AddHeadline(1, nullptr, 1, nullptr, 10, 1, 0));
    EXPECT_EQ(0, item.AddHeadline(1, nullptr, 1, nullptr, 10, 1, 0));
    EXPECT_EQ(1, item.RemoveOldestHeadlines(1));
    EXPECT_EQ(0u, item.GetHeadlineCount());
}

// Dates go in in the given order; the date order is then read as identifiers 1, 2, ...
struct DateSortCase {
    const char* name;
    std::vector<long> dates;
    std::vector<unsigned long> order;
};
void PrintTo(const DateSortCase& c, std::ostream* os) { *os << c.name; }

class DateSortTest : public testing::TestWithParam<DateSortCase> {};

TEST_P(DateSortTest, KeepsTheSearchExits) {
    RTNewsItem item("k", 1, 0, 1, 50, 0, 0, nullptr, 0, nullptr, 0);
    unsigned long id = 0;
    for (const long date : GetParam().dates) item.AddHeadline(++id, "h", 0, "", date, 1, 0);
    EXPECT_EQ(GetParam().order, DateOrder(item));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DateSortTest,
    testing::Values(
        DateSortCase{"Ascending", {5, 10, 15, 20}, {1, 2, 3, 4}},
        DateSortCase{"Descending", {20, 15, 10, 5}, {4, 3, 2, 1}},
        DateSortCase{"IntoTheMiddleFromTheLeft", {5, 20, 10}, {1, 3, 2}},
        DateSortCase{"TieAtTheLastElementGoesAfter", {10, 10}, {1, 2}},
        DateSortCase{"TieMetOnTheWayGoesBefore", {10, 10, 10}, {3, 1, 2}},
        // The bounds cross with the lower one above 0: 12 goes to the front.
        DateSortCase{"CrossedBoundsGoToTheFront", {5, 10, 15, 20, 12}, {5, 1, 2, 3, 4}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(RTNewsItemTest, RemoveOldestFollowsTheArrayAsItStands) {
    Add({{1, 5}, {2, 10}, {3, 15}, {4, 20}, {5, 12}});  // 5 lands at the front
    log.calls.clear();
    EXPECT_EQ(2, item.RemoveOldestHeadlines(2));
    // Index 1 first, then index 0, with counts 2 then 1.
    EXPECT_EQ((std::vector<ArticleCall>{{1, ARTICLE_REMOVED, 2}, {5, ARTICLE_REMOVED, 1}}),
              log.calls);
    EXPECT_EQ((std::vector<unsigned long>{2, 3, 4}), DateOrder(item));
}

TEST_F(RTNewsItemTest, RemoveOldestRefusesNothingToDoAndSkipsPastTheEnd) {
    EXPECT_EQ(0, item.RemoveOldestHeadlines(1));  // empty
    Add({{1, 5}, {2, 10}});
    EXPECT_EQ(0, item.RemoveOldestHeadlines(0));
    log.calls.clear();
    EXPECT_EQ(4, item.RemoveOldestHeadlines(4));
    EXPECT_EQ((std::vector<ArticleCall>{{2, ARTICLE_REMOVED, 2}, {1, ARTICLE_REMOVED, 1}}),
              log.calls);
}

TEST_F(RTNewsItemTest, HeadlineThatCannotBeDeletedOnlyLeavesTheDateOrder) {
    Add({{1, 5}, {2, 10}});
    item.GetNewsHeadline(1)->SetCanDelete(0);
    log.calls.clear();
    EXPECT_EQ(0, item.RemoveArticle(1, 1));
    EXPECT_TRUE(log.calls.empty());
    EXPECT_EQ(2u, item.GetHeadlineCount());
    EXPECT_EQ((std::vector<unsigned long>{2}), DateOrder(item));

    EXPECT_EQ(1, item.RemoveArticle(2, 1));
    EXPECT_EQ(0, item.RemoveArticle(2, 1));  // gone
    EXPECT_EQ(1u, item.GetHeadlineCount());
}

TEST_F(RTNewsItemTest, GetHeadlinesIsInTheMapsOrder) {
    // Bucket (id >> 4) % 17, in bucket order, the newest of a bucket first: 0x110 is in
    // bucket 0, 0x10 and 0x11 in bucket 1, 0x20 in bucket 2.
    Add({{0x20, 1}, {0x10, 2}, {0x11, 3}, {0x110, 4}});
    CPtrArray out;
    out.Add(nullptr);  // replaced, not appended to
    ASSERT_EQ(4, item.GetHeadlines(out));
    std::vector<unsigned long> ids;
    for (void* p : out) ids.push_back(static_cast<RTNewsHeadline*>(p)->GetArticleID());
    EXPECT_EQ((std::vector<unsigned long>{0x110, 0x11, 0x10, 0x20}), ids);
}

TEST(RTNewsItem, EqualityComparesEverySearchParameter) {
    unsigned char sources[] = {1, 2};
    unsigned char others[] = {1, 3};
    auto make = [&](const char* text, int byKeyword, int caseSensitive, int wholeWords,
                    long maxHeadlines, long start, long end, unsigned char* s, int n) {
        return std::make_unique<RTNewsItem>(text, byKeyword, caseSensitive, wholeWords,
                                            maxHeadlines, start, end, s, n, nullptr, 0);
    };
    auto base = make("oil", 1, 0, 1, 10, 5, 6, sources, 2);
    EXPECT_EQ(1, *base == *make("oil", 1, 0, 1, 10, 5, 6, sources, 2));
    const std::vector<std::unique_ptr<RTNewsItem>> differing = [&] {
        std::vector<std::unique_ptr<RTNewsItem>> v;
        v.push_back(make("Oil", 1, 0, 1, 10, 5, 6, sources, 2));
        v.push_back(make("oil", 0, 0, 1, 10, 5, 6, sources, 2));
        v.push_back(make("oil", 1, 1, 1, 10, 5, 6, sources, 2));
        v.push_back(make("oil", 1, 0, 0, 10, 5, 6, sources, 2));
        v.push_back(make("oil", 1, 0, 1, 11, 5, 6, sources, 2));
        v.push_back(make("oil", 1, 0, 1, 10, 4, 6, sources, 2));
        v.push_back(make("oil", 1, 0, 1, 10, 5, 7, sources, 2));
        v.push_back(make("oil", 1, 0, 1, 10, 5, 6, others, 2));
        v.push_back(make("oil", 1, 0, 1, 10, 5, 6, sources, 1));
        return v;
    }();
    for (const auto& other : differing) EXPECT_EQ(0, *base == *other) << other->m_searchString;
    base->SetMaxHeadlinesToArchive(3);  // not a search parameter
    EXPECT_EQ(1, *base == *make("oil", 1, 0, 1, 10, 5, 6, sources, 2));
}

TEST(RTNewsItem, GreaterIsTheSameTestAsLess) {
    const char* texts[] = {"", "A", "B", "AB", "a"};
    for (const char* left : texts) {
        for (const char* right : texts) {
            RTNewsItem a(left, 1, 0, 1, 1, 0, 0, nullptr, 0, nullptr, 0);
            RTNewsItem b(right, 1, 0, 1, 1, 0, 0, nullptr, 0, nullptr, 0);
            EXPECT_EQ(a < b, a > b) << left << " " << right;
            EXPECT_EQ(std::string(left) < std::string(right) ? 1 : 0, a < b);
        }
    }
}

TEST(RTNewsItem, SetNewsSourcesCopiesClearsOrKeeps) {
    unsigned char sources[] = {7, 8, 9};
    RTNewsItem item("k", 1, 0, 1, 1, 0, 0, sources, 3, nullptr, 0);
    sources[0] = 1;  // the item has its own copy
    ASSERT_EQ(3, item.m_nSources);
    EXPECT_EQ(7, item.m_sources[0]);
    item.SetNewsSources(sources, -1);
    EXPECT_EQ(3, item.m_nSources);
    item.SetNewsSources(sources, 0);
    EXPECT_EQ(nullptr, item.m_sources);
    EXPECT_EQ(0, item.m_nSources);
    item.SetNewsSources(nullptr, 2);
    EXPECT_EQ(0, item.m_nSources);
}

}  // namespace
