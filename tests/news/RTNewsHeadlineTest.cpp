// RTNewsHeadline: the body's formatting, its three states, and stories that arrive late.
#include <qvnrt/RTNewsHeadline.h>

#include <gtest/gtest.h>

#include <string>

#include "support/FakeSession.h"

namespace {

using qvnrt::test::FakeSession;

struct FormatCase {
    const char* name;
    std::string source;
    std::string formatted;
};
void PrintTo(const FormatCase& c, std::ostream* os) { *os << c.name; }

class FormatBodyCopyTest : public testing::TestWithParam<FormatCase> {};

TEST_P(FormatBodyCopyTest, RewritesLineEndsAndTabs) {
    struct Formatter : RTNewsHeadline {
        Formatter() : RTNewsHeadline(1, "H", 0, nullptr, 0, 0) {}
        using RTNewsHeadline::FormatBodyCopy;
    } formatter;
    CString out("stale");
    formatter.FormatBodyCopy(GetParam().source.c_str(), out);
    EXPECT_EQ(GetParam().formatted, out.str());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FormatBodyCopyTest,
    testing::Values(FormatCase{"Lf", "a\nb", "a\r\nb"}, FormatCase{"Cr", "a\rb", "a\r\nb"},
                    FormatCase{"CrLf", "a\r\nb", "a\r\nb"}, FormatCase{"LfCr", "a\n\rb", "a\r\nb"},
                    FormatCase{"LfLf", "a\n\nb", "a\r\n\r\nb"},
                    FormatCase{"CrCr", "a\r\rb", "a\r\n\r\nb"},
                    FormatCase{"LineEndLast", "a\n", "a\r\n"},
                    FormatCase{"TabAnyColumn", "\tabc\td", "    abc    d"},
                    FormatCase{"EmptyGivesOneNul", "", std::string(1, '\0')}),
    [](const auto& info) { return std::string(info.param.name); });

// Counts the calls of the body callback, and which headline they named.
struct BodyWatch {
    static int Ready(RTNewsHeadline* headline, unsigned long user) {
        auto* watch = reinterpret_cast<BodyWatch*>(user);
        ++watch->calls;
        watch->last = headline;
        return 0;
    }
    unsigned long user() { return reinterpret_cast<unsigned long>(this); }
    int calls = 0;
    RTNewsHeadline* last = nullptr;
};

TEST(RTNewsHeadline, SetArticleBodyPrefixesTheHeadlineAndNotifiesEveryTime) {
    RTNewsHeadline headline(5, "Title", 2, nullptr, 100, 0);
    CString source("old");
    EXPECT_EQ(0, headline.GetNewsSource(source));  // a null name is an empty one
    EXPECT_EQ(2, headline.GetNewsSource());
    BodyWatch watch;
    headline.m_pfnBodyReady = &BodyWatch::Ready;
    headline.m_bodyUserData = watch.user();

    headline.SetArticleBody("");
    EXPECT_EQ(std::string("Title\r\n\r\n") + '\0', headline.m_body.str());
    EXPECT_EQ(1, headline.HasBodyBeenRetrieved());
    headline.SetArticleBody(nullptr);
    EXPECT_EQ(0, headline.HasBodyBeenRetrieved());
    EXPECT_EQ(2, watch.calls);  // the callback stays stored through deliveries
    EXPECT_EQ(&headline, watch.last);
}

struct BodyCase {
    const char* name;
    bool hasBody;
    bool withCallback;
    bool connected;
    const char* returned;  // null: the headline's own body
    int requests;
    bool callbackStored;
};
void PrintTo(const BodyCase& c, std::ostream* os) { *os << c.name; }

class GetArticleBodyTest : public testing::TestWithParam<BodyCase> {};

TEST_P(GetArticleBodyTest, AnswersInItsStatedOrder) {
    const BodyCase& c = GetParam();
    FakeSession session;
    ASSERT_TRUE(c.connected ? session.Connect() : session.Load());
    RTNewsHeadline headline(77, "Headline", 3, "Wire", 10, 0);
    if (c.hasBody) headline.SetArticleBody("story");
    BodyWatch watch;

    const char* text = headline.GetArticleBody(c.withCallback ? &BodyWatch::Ready : nullptr,
                                               watch.user(), 12);

    EXPECT_STREQ(c.returned ? c.returned : headline.m_body.GetString(), text);
    ASSERT_EQ(c.requests, session.fake.count("clientReqNewsStory"));
    EXPECT_EQ(c.callbackStored, headline.m_pfnBodyReady != nullptr);
    if (c.requests) {
        const auto call = session.fake.calls("clientReqNewsStory").front();
        EXPECT_EQ(77u, call.number("storyKey"));
        EXPECT_EQ(3u, call.number("source"));
        EXPECT_EQ(reinterpret_cast<uintptr_t>(&headline), call.number("user"));
        EXPECT_EQ(12, call.integer("limit"));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, GetArticleBodyTest,
    testing::Values(
        BodyCase{"BodyPresent", true, true, true, nullptr, 0, false},
        BodyCase{"NoCallback", false, false, true, "Headline", 0, false},
        BodyCase{"Connected", false, true, true, "Retrieving article body...Please wait.", 1, true},
        BodyCase{"NotConnected", false, true, false, "Retrieving article body...Please wait.", 0,
                 true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(RTNewsHeadline, StoriesArriveForLiveHeadlinesOnly) {
    FakeSession session;
    ASSERT_TRUE(session.Connect());
    BodyWatch watch;
    RTNewsHeadline waiting(1, "W", 0, nullptr, 0, 0);
    RTNewsHeadline cancelled(2, "C", 0, nullptr, 0, 0);
    auto* deleted = new RTNewsHeadline(3, "D", 0, nullptr, 0, 0);
    for (RTNewsHeadline* headline : {&waiting, &cancelled, deleted}) {
        headline->GetArticleBody(&BodyWatch::Ready, watch.user(), 0);
    }
    cancelled.CancelBodyRetrieval();
    delete deleted;

    const auto requests = session.fake.calls("clientReqNewsStory");
    ASSERT_EQ(3u, requests.size());
    char story[] = "line\nnext";
    for (const auto& request : requests) EXPECT_EQ(0, session.fake.fireStory(request.result, 0, 0, story));
    EXPECT_EQ("W\r\n\r\nline\r\nnext", waiting.m_body.str());
    EXPECT_EQ(1, cancelled.HasBodyBeenRetrieved());  // stored, without a callback
    EXPECT_EQ(1, watch.calls);
    EXPECT_EQ(&waiting, watch.last);
}

}  // namespace
