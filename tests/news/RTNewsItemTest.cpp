// RTNewsItem without a driver: adding and removing headlines, the date order with its kept
// exits, the map's order, and the comparisons.
#include <qvnrt/RTNewsItem.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "NewsTestSupport.h"

namespace {

using qvnrt::test::ArticleCall;
using qvnrt::test::ArticleLog;
using qvnrt::test::DateOrder;
using Calls = std::vector<ArticleCall>;
using Ids = std::vector<unsigned long>;

class RTNewsItemTest : public testing::Test {
protected:
    // Adds one headline per date, identifiers 1, 2, ... in order, each a batch of its own.
    void AddDates(const std::vector<long>& dates) {
        unsigned long id = 0;
        for (const long date : dates) item.AddHeadline(++id, "h", 1, "s", date, 1, 0);
        log.calls.clear();
    }

    ArticleLog log;
    RTNewsItem item{"ACME", 0, 0, 1, 50, 0, 0, nullptr, 0, &ArticleLog::Record, log.user()};
};

TEST_F(RTNewsItemTest, DeliveriesWithoutANewArticleReportANullHeadline) {
    EXPECT_EQ(log.answer, item.AddHeadline(4, "first", 1, "s", 10, 2, 1));
    EXPECT_EQ(log.answer, item.AddHeadline(5, "none", 1, "s", 10, 0, 0));
    EXPECT_EQ(log.answer, item.AddHeadline(5, "none", 1, "s", 10, -3, 0));
    EXPECT_EQ(0, item.AddHeadline(4, "second", 1, "s", 20, 1, 0));
    EXPECT_EQ((Calls{{4, ARTICLE_ADDED, 2}, {0, ARTICLE_ADDED, 0}, {0, ARTICLE_ADDED, -3},
                     {0, ARTICLE_ADDED, 0}}),
              log.calls);
    ASSERT_EQ(1u, item.GetHeadlineCount());
    EXPECT_STREQ("first", item.GetNewsHeadline(4)->GetHeadline());
}

TEST_F(RTNewsItemTest, NullTextsAndANullCallbackAreTolerated) {
    item.m_pfnArticle = nullptr;
    EXPECT_EQ(0, item.AddHeadline(1, nullptr, 1, nullptr, 10, 1, 0));
    EXPECT_EQ(1, item.RemoveOldestHeadlines(1));
    EXPECT_EQ(0u, item.GetHeadlineCount());
}

struct DateSortCase {
    const char* name;
    std::vector<long> dates;  // added in this order as identifiers 1, 2, ...
    Ids order;
};
void PrintTo(const DateSortCase& c, std::ostream* os) { *os << c.name; }

class DateSortTest : public RTNewsItemTest, public testing::WithParamInterface<DateSortCase> {};

TEST_P(DateSortTest, KeepsTheSearchExits) {
    AddDates(GetParam().dates);
    EXPECT_EQ(GetParam().order, DateOrder(item));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, DateSortTest,
    testing::Values(DateSortCase{"Ascending", {5, 10, 15, 20}, {1, 2, 3, 4}},
                    DateSortCase{"Descending", {20, 15, 10, 5}, {4, 3, 2, 1}},
                    DateSortCase{"IntoTheMiddle", {5, 20, 10}, {1, 3, 2}},
                    DateSortCase{"TieAtTheLastElementGoesAfter", {10, 10}, {1, 2}},
                    DateSortCase{"TieMetOnTheWayGoesBefore", {10, 10, 10}, {3, 1, 2}},
                    // The bounds cross with the lower one above 0: 12 goes to the front.
                    DateSortCase{"CrossedBoundsGoFirst", {5, 10, 15, 20, 12}, {5, 1, 2, 3, 4}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(RTNewsItemTest, RemoveOldestFollowsTheArrayAsItStands) {
    EXPECT_EQ(0, item.RemoveOldestHeadlines(1));  // empty
    AddDates({5, 10, 15, 20, 12});                // 12 (identifier 5) lands at the front
    EXPECT_EQ(0, item.RemoveOldestHeadlines(0));
    EXPECT_EQ(2, item.RemoveOldestHeadlines(2));
    EXPECT_EQ((Calls{{1, ARTICLE_REMOVED, 2}, {5, ARTICLE_REMOVED, 1}}), log.calls);
    EXPECT_EQ((Ids{2, 3, 4}), DateOrder(item));

    log.calls.clear();
    EXPECT_EQ(5, item.RemoveOldestHeadlines(5));  // past the end: those present, same counts
    EXPECT_EQ((Calls{{4, ARTICLE_REMOVED, 3}, {3, ARTICLE_REMOVED, 2}, {2, ARTICLE_REMOVED, 1}}),
              log.calls);
}

TEST_F(RTNewsItemTest, HeadlineThatCannotBeDeletedOnlyLeavesTheDateOrder) {
    AddDates({5, 10});
    item.GetNewsHeadline(1)->SetCanDelete(0);
    EXPECT_EQ(0, item.RemoveArticle(1, 1));
    EXPECT_TRUE(log.calls.empty());
    EXPECT_EQ(2u, item.GetHeadlineCount());
    EXPECT_EQ((Ids{2}), DateOrder(item));
    EXPECT_EQ(1, item.RemoveArticle(2, 1));
    EXPECT_EQ(0, item.RemoveArticle(2, 1));
}

TEST_F(RTNewsItemTest, GetHeadlinesIsInTheMapsOrder) {
    // Buckets by (id >> 4) % 17 in index order, the newest of a bucket first: 0x110 is in
    // bucket 0, 0x10 and 0x11 in bucket 1, 0x20 in bucket 2.
    for (const unsigned long id : {0x20ul, 0x10ul, 0x11ul, 0x110ul}) {
        item.AddHeadline(id, "h", 0, "", 1, 1, 0);
    }
    CPtrArray out;
    out.Add(nullptr);  // replaced, not appended to
    ASSERT_EQ(4, item.GetHeadlines(out));
    Ids ids;
    for (void* p : out) ids.push_back(static_cast<RTNewsHeadline*>(p)->GetArticleID());
    EXPECT_EQ((Ids{0x110, 0x11, 0x10, 0x20}), ids);
}

TEST(RTNewsItem, EqualityComparesEverySearchParameter) {
    unsigned char sources[] = {1, 2};
    unsigned char others[] = {1, 3};
    auto same = [&](RTNewsItem&& other) {
        RTNewsItem base("oil", 1, 0, 1, 10, 5, 6, sources, 2, nullptr, 0);
        return base == other;
    };
    EXPECT_EQ(1, same({"oil", 1, 0, 1, 10, 5, 6, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"Oil", 1, 0, 1, 10, 5, 6, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 0, 0, 1, 10, 5, 6, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 1, 1, 1, 10, 5, 6, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 1, 0, 0, 10, 5, 6, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 1, 0, 1, 11, 5, 6, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 1, 0, 1, 10, 4, 6, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 1, 0, 1, 10, 5, 7, sources, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 1, 0, 1, 10, 5, 6, others, 2, nullptr, 0}));
    EXPECT_EQ(0, same({"oil", 1, 0, 1, 10, 5, 6, sources, 1, nullptr, 0}));
}

TEST(RTNewsItem, GreaterIsTheSameTestAsLess) {
    const char* texts[] = {"", "A", "B", "AB", "a"};
    for (const char* left : texts) {
        for (const char* right : texts) {
            RTNewsItem a(left, 1, 0, 1, 1, 0, 0, nullptr, 0, nullptr, 0);
            RTNewsItem b(right, 1, 0, 1, 1, 0, 0, nullptr, 0, nullptr, 0);
            EXPECT_EQ(std::string(left) < std::string(right) ? 1 : 0, a < b);
            EXPECT_EQ(a < b, a > b) << left << " " << right;
        }
    }
}

}  // namespace
