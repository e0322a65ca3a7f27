// RTNewsItem against the fake driver: starting and stopping its requests through the
// service-rights gate, the messages of a partly failed symbol search, headlines arriving
// through the driver's callback, and callbacks that come after the item is gone.
#include <qvnrt/CDataServiceRights.h>
#include <qvnrt/CNewsUnavailableDlg.h>
#include <qvnrt/RTNewsItem.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "NewsTestSupport.h"
#include "config/Strings.h"
#include "support/FakeSession.h"
#include "support/ManualClock.h"

namespace {

using qvnrt::test::ArticleCall;
using qvnrt::test::ArticleLog;
using qvnrt::test::FakeSession;

constexpr const char* kRequest = "clientReqNewsHeadlines";

class NewsCollectionTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(session.Connect());
        session.fake.clearLog();
        // A shown panel is read rather than run.
        session.ui.onPanel = [this](qvnrt::Panel& panel) {
            auto& shown = dynamic_cast<CNewsUnavailableDlg&>(panel);
            panelMessage = shown.m_strMessage.str();
            panelSymbols = shown.m_strSymbols.str();
            return qvnrt::IDOK;
        };
    }

    std::unique_ptr<RTNewsItem> Make(const char* search, int byKeyword, long endTime = 0) {
        return std::make_unique<RTNewsItem>(search, byKeyword, 1, 0, 25, 3, endTime, sources, 2,
                                            &ArticleLog::Record, log.user());
    }
    std::vector<std::string> RequestedTexts() const {
        std::vector<std::string> texts;
        for (const auto& call : session.fake.calls(kRequest)) texts.push_back(call.text("searchText"));
        return texts;
    }

    FakeSession session;
    ArticleLog log;
    unsigned char sources[2] = {4, 9};
    std::string panelMessage;
    std::string panelSymbols;
};

// One row per way a search starts.
struct StartCase {
    const char* name;
    const char* search;
    int byKeyword;
    long wholeListProperty;      // property 13
    int gateLimit;               // the gate's limit for the search's kind; -1 none
    std::vector<int> handles;    // the fake's answers, in order (0 fails the request)
    int showMessages;
    std::vector<std::string> requested;
    int result;
    int open;                    // items the gate counts as open afterwards
    const char* message;         // null: no message box; else the string's id as text
    std::string panelSymbols;    // empty: no panel
};
void PrintTo(const StartCase& c, std::ostream* os) { *os << c.name; }

class StartNewsCollectionTest : public NewsCollectionTest,
                                public testing::WithParamInterface<StartCase> {};

TEST_P(StartNewsCollectionTest, RequestsAndReports) {
    const StartCase& c = GetParam();
    session.fake.setPropertyLong(RTPROP_NEWS_WHOLE_SYMBOL_LIST, c.wholeListProperty);
    (c.byKeyword ? g_appDataServiceRights.m_keywordItemLimit
                 : g_appDataServiceRights.m_symbolItemLimit) = c.gateLimit;
    unsigned long next = 100;
    for (const int handle : c.handles) session.fake.pushResult(kRequest, handle ? next++ : 0);
    auto item = Make(c.search, c.byKeyword);

    EXPECT_EQ(c.result, item->StartNewsCollection(c.showMessages, 6));

    EXPECT_EQ(c.requested, RequestedTexts());
    EXPECT_EQ(c.result, item->IsCollecting());
    EXPECT_EQ(c.open, c.byKeyword ? g_appDataServiceRights.m_keywordItemsOpen
                                  : g_appDataServiceRights.m_symbolItemsOpen);
    CDWordArray events;
    EXPECT_EQ(c.open, item->GetRTNewsEvents(events));
    if (c.message) {
        ASSERT_EQ(1u, session.ui.messages.size());
        EXPECT_EQ(qvnrt::LoadString(std::stoi(c.message)), session.ui.messages[0].text);
        EXPECT_EQ("Symbol News Search", session.ui.messages[0].caption);
        EXPECT_EQ(qvnrt::MB_ICONINFORMATION,
                  session.ui.messages[0].style & qvnrt::MB_ICONMASK);
    } else {
        EXPECT_TRUE(session.ui.messages.empty());
    }
    EXPECT_EQ(c.panelSymbols, panelSymbols);
    EXPECT_EQ(c.panelSymbols.empty() ? 0u : 1u, session.ui.panels.size());
    EXPECT_EQ(0, session.ui.waitCursorDepth);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, StartNewsCollectionTest,
    testing::Values(
        StartCase{"Keyword", "oil gas", 1, 0, -1, {1}, 1, {"oil gas"}, 1, 1, nullptr, ""},
        StartCase{"KeywordRefusedIsSilent", "oil", 1, 0, 0, {}, 1, {}, 0, 0, nullptr, ""},
        StartCase{"KeywordFails", "oil", 1, 0, -1, {0}, 1, {"oil"}, 0, 0, nullptr, ""},
        StartCase{"WholeList", "IBM T", 0, 1, -1, {1}, 1, {"IBM T"}, 1, 1, nullptr, ""},
        StartCase{"WholeListRefusedIsSilent", "IBM T", 0, 1, 0, {}, 1, {}, 0, 0, nullptr, ""},
        StartCase{"TwoBlanksMakeAnEmptySymbol", "IBM  T", 0, 0, -1, {1, 1, 1}, 1,
                  {"IBM", "", "T"}, 1, 3, nullptr, ""},
        StartCase{"TrailingBlankEndsTheList", "IBM ", 0, 0, -1, {1}, 1, {"IBM"}, 1, 1, nullptr,
                  ""},
        StartCase{"PartialFailureShowsThePanel", "IBM X T", 0, 0, -1, {1, 0, 0}, 1,
                  {"IBM", "X", "T"}, 1, 1, nullptr, "X T "},
        StartCase{"PartialFailureSilentWithoutMessages", "IBM X", 0, 0, -1, {1, 0}, 0,
                  {"IBM", "X"}, 1, 1, nullptr, ""},
        StartCase{"AllFailingShowsNothing", "IBM X", 0, 0, -1, {0, 0}, 1, {"IBM", "X"}, 0, 0,
                  nullptr, ""},
        StartCase{"GateRefusalSays118", "IBM X T", 0, 0, 1, {1}, 1, {"IBM"}, 1, 1, "118", ""},
        StartCase{"GateRefusingAllSays118", "IBM X", 0, 0, 0, {}, 1, {}, 0, 0, "118", ""}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(NewsCollectionTest, PanelMessageIsString116WithFailuresThenSymbols) {
    session.fake.pushResult(kRequest, 0);
    auto item = Make("X IBM T", 0);
    EXPECT_EQ(1, item->StartNewsCollection(1, 0));
    CString expected;
    expected.Format(qvnrt::LoadString(116), 1, 3);
    EXPECT_EQ(expected.str(), panelMessage);
    EXPECT_EQ(1, session.ui.waitCursorCount);
}

TEST_F(NewsCollectionTest, RequestCarriesTheSearchAndTheLiveFlagFollowsTheWindow) {
    qvnrt::test::ManualClock clock;
    const struct {
        long endTime;
        int live;
    } cases[] = {{0, 1}, {clock.now - 1, 0}, {clock.now, 1}, {clock.now + 60, 1}};
    for (const auto& c : cases) {
        session.fake.clearLog();
        auto item = Make("oil", 1, c.endTime);
        item->StartNewsCollection(0, 0);
        EXPECT_EQ(c.live, session.fake.call(0).integer("live")) << c.endTime;
        EXPECT_EQ(c.endTime, session.fake.call(0).integer("endTime"));
    }
    const auto call = session.fake.call(0);
    EXPECT_EQ(std::string("\x04\x09", 2), call.text("sources"));
    EXPECT_EQ(3, call.integer("startTime"));
    EXPECT_EQ(25, call.integer("maxHeadlines"));
    EXPECT_EQ(1, call.integer("caseSensitive"));
}

TEST_F(NewsCollectionTest, StopClosesEveryHandleAndReleasesItAtTheGate) {
    auto item = Make("A B", 0);
    ASSERT_EQ(1, item->StartNewsCollection(0, 0));
    EXPECT_EQ(1, item->StartNewsCollection(0, 0));  // already collecting: nothing sent
    EXPECT_EQ(2, session.fake.count(kRequest));
    item->AddHeadline(1, "h", 0, "", 5, 1, 0);
    CDWordArray events;
    ASSERT_EQ(2, item->GetRTNewsEvents(events));

    EXPECT_EQ(1, item->StopNewsCollection());
    const auto closes = session.fake.calls("clientCloseEvent");
    ASSERT_EQ(2u, closes.size());
    EXPECT_EQ(events[0], closes[0].number("request"));
    EXPECT_EQ(events[1], closes[1].number("request"));
    EXPECT_EQ(0, g_appDataServiceRights.m_symbolItemsOpen);
    EXPECT_EQ(0, item->IsCollecting());
    EXPECT_EQ(1u, item->GetHeadlineCount());  // headlines stay
    EXPECT_EQ(1, item->StopNewsCollection());
    RTServer::Disconnect();
    EXPECT_EQ(0, item->StartNewsCollection(1, 0));
}

TEST_F(NewsCollectionTest, RemoveRTNewsEventResults) {
    auto item = Make("oil", 1);
    EXPECT_EQ(0, item->RemoveRTNewsEvent(0));
    EXPECT_EQ(55, item->RemoveRTNewsEvent(55));  // empty list: the handle itself
    ASSERT_EQ(1, item->StartNewsCollection(0, 0));
    CDWordArray events;
    item->GetRTNewsEvents(events);
    EXPECT_EQ(56, item->RemoveRTNewsEvent(56));  // not held
    EXPECT_EQ(1, item->RemoveRTNewsEvent(events[0]));
    EXPECT_EQ(1, session.fake.count("clientCloseEvent"));
    EXPECT_EQ(0, item->IsCollecting());
    EXPECT_EQ(1, g_appDataServiceRights.m_keywordItemsOpen);  // the gate is not told
}

TEST_F(NewsCollectionTest, ArchiveLimitHoldsAtTheEndOfABatch) {
    auto item = Make("oil", 1);
    item->SetMaxHeadlinesToArchive(3);
    ASSERT_EQ(1, item->StartNewsCollection(0, 0));
    const unsigned long handle = session.fake.call(0).result;
    char text[] = "h";
    char source[] = "Wire";
    for (int count = 5; count >= 1; --count) {
        // Identifiers 1..5 at dates 10..50: the oldest are 1 and 2.
        const unsigned long id = 6 - count;
        EXPECT_EQ(log.answer, session.fake.fireHeadline(handle, count, id, text, 2, source,
                                                        static_cast<long>(id) * 10, 1));
        if (count > 1) {
            EXPECT_EQ(id, item->GetHeadlineCount());  // the batch may pass the limit
        }
    }
    EXPECT_EQ(3u, item->GetHeadlineCount());
    const std::vector<ArticleCall> tail(log.calls.end() - 2, log.calls.end());
    EXPECT_EQ((std::vector<ArticleCall>{{2, ARTICLE_REMOVED, 2}, {1, ARTICLE_REMOVED, 1}}), tail);
}

TEST_F(NewsCollectionTest, LateCallbacksForADestroyedItemAreDropped) {
    auto item = Make("oil", 1);
    ASSERT_EQ(1, item->StartNewsCollection(0, 0));
    const unsigned long headlines = session.fake.call(0).result;
    const unsigned long user = reinterpret_cast<unsigned long>(item.get());
    char text[] = "h";
    session.fake.fireHeadline(headlines, 1, 1, text, 0, text, 1, 0);
    item->GetNewsHeadline(1)->GetArticleBody(
        [](RTNewsHeadline*, unsigned long) { return 0; }, 0, 0);
    const unsigned long story = session.fake.calls("clientReqNewsStory").back().result;
    const size_t heard = log.calls.size();
    item.reset();

    EXPECT_TRUE(session.fake.isOpen(story));  // nobody told the driver
    EXPECT_EQ(0, session.fake.fireStory(story, 0, 1, text));
    EXPECT_EQ(0, session.fake.fireHeadlineWithUser(headlines, 1, 2, text, 0, text, 2, 0, user));
    EXPECT_EQ(heard, log.calls.size());
}

}  // namespace
