// RTNewsHeadline: the body's formatting, its three states, and stories that arrive late.
#include <qvnrt/RTNewsHeadline.h>

#include <gtest/gtest.h>

#include <string>

#include "support/FakeSession.h"

namespace {

using qvnrt::test::FakeSession;

// Exposes the protected formatter.
struct Formatter : RTNewsHeadline {
    Formatter() : RTNewsHeadline(1, "H", 0, nullptr, 0, 0) {}
    std::string Format(const char* source) {
        CString out("stale");
        FormatBodyCopy(source, out);
        return out.str();
    }
};

struct FormatCase {
    const char* name;
    std::string source;
    std::string formatted;
};
void PrintTo(const FormatCase& c, std::ostream* os) { *os << c.name; }

class FormatBodyCopyTest : public testing::TestWithParam<FormatCase> {};

TEST_P(FormatBodyCopyTest, RewritesLineEndsAndTabs) {
    EXPECT_EQ(GetParam().formatted, Formatter().Format(GetParam().source.c_str()));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, FormatBodyCopyTest,
    testing::Values(FormatCase{"Lf", "a\nb", "a\r\nb"}, FormatCase{"Cr", "a\rb", "a\r\nb"},
                    FormatCase{"CrLf", "a\r\nb", "a\r\nb"}, FormatCase{"LfCr", "a\n\rb", "a\r\nb"},
                    FormatCase{"LfLf", "a\n\nb", "a\r\n\r\nb"},
                    FormatCase{"CrCr", "a\r\rb", "a\r\n\r\nb"},
                    FormatCase{"CrLfCrLf", "a\r\n\r\nb", "a\r\n\r\nb"},
                    FormatCase{"LineEndLast", "a\n", "a\r\n"},
                    FormatCase{"TabFirst", "\tx", "    x"},
                    FormatCase{"TabMidLine", "abc\td", "abc    d"},
                    FormatCase{"Plain", "plain text", "plain text"},
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
    RTNewsHeadline headline(5, "Title", 2, "Wire", 100, 0);
    BodyWatch watch;
    headline.m_pfnBodyReady = &BodyWatch::Ready;
    headline.m_bodyUserData = watch.user();

    headline.SetArticleBody("");
    EXPECT_EQ(std::string("Title\r\n\r\n") + '\0', headline.m_body.str());
    EXPECT_EQ(1, headline.HasBodyBeenRetrieved());

    headline.SetArticleBody("x\ty");
    EXPECT_EQ("Title\r\n\r\nx    y", headline.m_body.str());

    headline.SetArticleBody(nullptr);
    EXPECT_EQ(0, headline.HasBodyBeenRetrieved());
    EXPECT_EQ(3, watch.calls);  // the callback stays stored through deliveries
    EXPECT_EQ(&headline, watch.last);
}

TEST(RTNewsHeadline, NullTextsAreEmptyAndCopiesKeepTheCallback) {
    RTNewsHeadline headline(9, nullptr, 4, nullptr, 1, 1);
    CString source("old");
    EXPECT_EQ(0, headline.GetNewsSource(source));
    EXPECT_TRUE(source.IsEmpty());
    EXPECT_EQ(4, headline.GetNewsSource());
    EXPECT_STREQ("", headline.GetHeadline());
    EXPECT_EQ(1, headline.CanDelete());

    BodyWatch watch;
    headline.m_pfnBodyReady = &BodyWatch::Ready;
    headline.m_bodyUserData = watch.user();
    RTNewsHeadline copy(headline);
    copy.SetArticleBody("b");
    EXPECT_EQ(&copy, watch.last);
    EXPECT_EQ(0, headline.HasBodyBeenRetrieved());
}

// GetArticleBody against the fake driver, connected or not.
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

TEST(RTNewsHeadline, StoryArrivesThroughTheDriverAndEachCallAsksAgain) {
    FakeSession session;
    ASSERT_TRUE(session.Connect());
    RTNewsHeadline headline(1, "H", 0, nullptr, 0, 0);
    BodyWatch watch;
    headline.GetArticleBody(&BodyWatch::Ready, watch.user(), 0);
    headline.GetArticleBody(&BodyWatch::Ready, watch.user(), 0);
    EXPECT_EQ(2, session.fake.count("clientReqNewsStory"));

    char story[] = "line\nnext";
    const auto handle = session.fake.calls("clientReqNewsStory").back().result;
    EXPECT_EQ(0, session.fake.fireStory(handle, 0, 1, story));
    EXPECT_EQ("H\r\n\r\nline\r\nnext", headline.m_body.str());
    EXPECT_EQ(1, watch.calls);
}

TEST(RTNewsHeadline, LateStoryAfterCancelIsStoredWithoutCallback) {
    FakeSession session;
    ASSERT_TRUE(session.Connect());
    RTNewsHeadline headline(1, "H", 0, nullptr, 0, 0);
    BodyWatch watch;
    headline.GetArticleBody(&BodyWatch::Ready, watch.user(), 0);
    headline.CancelBodyRetrieval();

    char story[] = "late";
    const auto handle = session.fake.calls("clientReqNewsStory").back().result;
    session.fake.fireStory(handle, 0, 1, story);
    EXPECT_EQ(1, headline.HasBodyBeenRetrieved());
    EXPECT_EQ(0, watch.calls);
}

TEST(RTNewsHeadline, StoryForADeletedHeadlineIsDropped) {
    FakeSession session;
    ASSERT_TRUE(session.Connect());
    BodyWatch watch;
    auto* headline = new RTNewsHeadline(1, "H", 0, nullptr, 0, 0);
    headline->GetArticleBody(&BodyWatch::Ready, watch.user(), 0);
    const auto handle = session.fake.calls("clientReqNewsStory").back().result;
    delete headline;

    char story[] = "too late";
    EXPECT_EQ(0, session.fake.fireStory(handle, 0, 1, story));
    EXPECT_EQ(0, session.fake.fireStoryWithUser(handle, 0, 1, story, 0));
    EXPECT_EQ(0, watch.calls);
}

}  // namespace
