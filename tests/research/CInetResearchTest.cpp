#include <qvnrt/CInetResearch.h>

#include <set>
#include <string>

#include <gtest/gtest.h>

#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CPrivateProfile.h>

#include "support/RecordingUiHost.h"
#include "support/TempDir.h"

namespace {

using qvnrt::test::RecordingUiHost;
using Names = std::set<std::string>;

constexpr char kCaption[] = "Quorvane Internet Trader";

// Reaches the protected operations.
class Research : public CInetResearch {
  public:
    using CInetResearch::CInetResearch;
    using CInetResearch::OpenURL;
    using CInetResearch::SetInetSearchURL;
};

// The template with its tags filled as the search page would open it.
std::string Filled(Research& research, const char* url) {
    CString text = url;
    research.SetInetSearchURL(text);
    return text.str();
}

Names Enumerate(CInetResearch& research, int flags) {
    CStringArray out;
    const int count = research.EnumInetServiceNames(out, flags);
    EXPECT_EQ(out.GetSize(), count);
    Names names;
    for (const CString& name : out) names.insert(name.str());
    return names;
}

class InetResearchTest : public ::testing::Test {
  protected:
    void Services(const std::string& lines) {
        home.host().write("inetres.txt", "[Internet Background Page]\n" + lines);
    }
    void HomePages(const std::string& lines) {
        home.host().write("HomePages.txt", "[HomePages]\n" + lines);
    }

    qvnrt::test::IsolatedHome home;
    // Message `index` said `text` under `style`, and under `caption` when one is given.
    void ExpectMessage(size_t index, const std::string& text, unsigned style,
                       const char* caption = nullptr) {
        ASSERT_LT(index, host.messages.size());
        EXPECT_EQ(text, host.messages[index].text);
        EXPECT_EQ(style, host.messages[index].style);
        if (caption) EXPECT_EQ(caption, host.messages[index].caption);
    }

    RecordingUiHost host;
};

TEST_F(InetResearchTest, FillsTheFirstOfEachTagOnly) {
    Research research("ibm", nullptr);
    EXPECT_EQ("IBM", research.m_symbol);

    EXPECT_EQ("http://h/q?s=IBM&x=<SYMBOL>", Filled(research, "http://h/q?s=<SYMBOL>&x=<SYMBOL>"));
    // No extra text: the symbol stands in.
    EXPECT_EQ("http://h/q?e=IBM", Filled(research, "http://h/q?e=<EXTRA>"));
    research.UpdateExtraSearchText("Big Blue");
    EXPECT_EQ("http://h/Big Blue/IBM/<EXTRA>",
              Filled(research, "http://h/<EXTRA>/<SYMBOL>/<EXTRA>"));
    EXPECT_EQ("http://h/<SYMBOL", Filled(research, "http://h/<SYMBOL"));  // a broken tag is text

    research.UpdateSymbolName("msft");  // drops the extra text too
    EXPECT_EQ("MSFT", research.m_symbol);
    EXPECT_TRUE(research.m_extraText.IsEmpty());
}

TEST_F(InetResearchTest, EnumeratesServicesByTheirTags) {
    Services(
        "Sym = http://s/<SYMBOL>\n"
        "Extra = http://e/<EXTRA>\n"
        "Both = http://b/<SYMBOL>?<EXTRA>\n"
        "Plain = http://p/\n");
    CInetResearch research("x", nullptr);
    EXPECT_EQ((Names{"Sym", "Extra", "Both", "Plain"}), Enumerate(research, 0));
    EXPECT_EQ(Names{}, Enumerate(research, 4));
    EXPECT_EQ((Names{"Sym", "Both"}), Enumerate(research, 5));
    EXPECT_EQ(Names{"Sym"}, Enumerate(research, 6));
    EXPECT_EQ(Names{"Extra"}, Enumerate(research, 10));
    EXPECT_EQ((Names{"Sym", "Extra", "Both"}), Enumerate(research, 13));
    EXPECT_EQ(Names{"Both"}, Enumerate(research, 14));

    EXPECT_EQ(1, research.IsServiceAvailable("Plain"));
    EXPECT_EQ(0, research.IsServiceAvailable("plain"));
    EXPECT_EQ(0, research.IsServiceAvailable(nullptr));
}

TEST_F(InetResearchTest, LastServiceIsKeptInTheServicesFile) {
    Services("Sym = http://s/<SYMBOL>\n");
    CInetResearch research;
    research.SetLastService("Sym");
    EXPECT_STREQ("Sym", CInetResearch().GetLastService());

    research.SetLastService("");
    EXPECT_STREQ("", research.GetLastService());
    CPrivateProfile file("inetres.txt");
    EXPECT_EQ(nullptr, file.GetStartKeyPos("Last Internet Search Service"));
    EXPECT_NE(nullptr, file.GetStartKeyPos("Internet Background Page"));
}

TEST_F(InetResearchTest, ServicesReadAnewAfterTheEditorOnlyGrow) {
    Services("Old = http://o/<SYMBOL>\n");
    CInetResearch research("x", "extra");
    host.onPanel = [this](qvnrt::Panel&) {
        Services("New = http://n/<SYMBOL>\n");
        return qvnrt::IDOK;
    };
    EXPECT_EQ(qvnrt::IDOK, research.EditInetSearchURLs(nullptr));
    EXPECT_EQ((std::vector<std::string>{"Internet Symbol Search"}), host.panels);
    EXPECT_EQ((Names{"Old", "New"}), Enumerate(research, 0));
    EXPECT_EQ("extra", research.m_extraText);

    CString url = "stale";
    EXPECT_EQ(0, research.GetInetSearchURL("Missing", url, 0, nullptr));
    EXPECT_TRUE(url.IsEmpty());
    EXPECT_EQ(1, research.GetInetSearchURL("New", url, 0, nullptr));
    EXPECT_EQ("http://n/<SYMBOL>", url);  // raw, unfilled
}

TEST_F(InetResearchTest, OpensOnlyHttpAddresses) {
    Research research("ibm", nullptr);
    for (const char* refused :
         {"ftp://h/file", "file:///etc/passwd", "https://h/", "www.example.com", "http:/h"}) {
        EXPECT_EQ(0, research.OpenURL(refused)) << refused;
    }
    EXPECT_EQ(0, research.OpenURL(nullptr));
    EXPECT_TRUE(host.urls.empty());

    EXPECT_EQ(1, research.OpenURL("HTTP://user@Host:8080/x?q=Big Blue"));
    EXPECT_EQ((std::vector<std::string>{"HTTP://user@Host:8080/x?q=Big Blue"}), host.urls);
}

TEST_F(InetResearchTest, SearchPageOpensTheFilledTemplateOrExplainsWhy) {
    Research research("ibm", nullptr);
    research.GotoInetSearchPage("Sym", 1, nullptr);  // no services at all
    ExpectMessage(0,
                  "There is no Internet research information available. Cannot perform "
                  "Internet research.",
                  qvnrt::MB_OK | qvnrt::MB_ICONINFORMATION);
    EXPECT_EQ((std::vector<std::string>{"Internet Symbol Search"}), host.panels);

    Services("Sym = http://s/q?s=<SYMBOL>\nFtp = ftp://f/<SYMBOL>\n");
    research.UpdateSymbolName("ibm");
    host.messages.clear();
    research.GotoInetSearchPage("Sym", 0, nullptr);
    EXPECT_EQ((std::vector<std::string>{"http://s/q?s=IBM"}), host.urls);
    research.GotoInetSearchPage("Ftp", 1, nullptr);  // refused, silently
    EXPECT_EQ(1u, host.urls.size());

    research.GotoInetSearchPage(nullptr, 0, nullptr);
    research.GotoInetSearchPage("Unknown", 0, nullptr);
    EXPECT_TRUE(host.messages.empty());

    // The yes/no buttons on a statement are kept; the answer changes nothing.
    host.messageAnswers = {qvnrt::IDYES};
    research.GotoInetSearchPage("", 1, nullptr);
    ExpectMessage(0,
                  "No Internet research information specified. Cannot perform Internet research.",
                  qvnrt::MB_YESNO | qvnrt::MB_ICONINFORMATION);

    host.messageAnswers = {qvnrt::IDYES};
    research.GotoInetSearchPage("Unknown", 1, nullptr);
    ExpectMessage(1,
                  "No URL information available for Unknown. Would you like to edit the "
                  "Internet research page at this time?",
                  qvnrt::MB_YESNO | qvnrt::MB_ICONQUESTION);
    EXPECT_EQ(2u, host.panels.size());  // the editor, on Yes
}

TEST_F(InetResearchTest, HomePageWithoutAnEntryIsReportedOrAskedFor) {
    CInetResearch research("ibm", nullptr);
    research.GotoHomePage(0, nullptr);
    ExpectMessage(0, "No home page specified for IBM", qvnrt::MB_OK | qvnrt::MB_ICONINFORMATION,
                  kCaption);
    EXPECT_TRUE(host.panels.empty());

    // Asked, declined: the same report follows.
    host.messages.clear();
    research.GotoHomePage(1, nullptr);
    ExpectMessage(0,
                  "There is no home page specified for this symbol. Would you like to enter one "
                  "now?",
                  qvnrt::MB_YESNO | qvnrt::MB_ICONQUESTION, kCaption);
    ExpectMessage(1, "No home page specified for IBM", qvnrt::MB_OK | qvnrt::MB_ICONINFORMATION);

    // Accepted, editor cancelled: nothing more is said.
    host.messages.clear();
    host.messageAnswers = {qvnrt::IDYES};
    research.GotoHomePage(1, nullptr);
    EXPECT_EQ(1u, host.messages.size());
    EXPECT_EQ((std::vector<std::string>{"Symbol Home Pages"}), host.panels);
    EXPECT_TRUE(host.urls.empty());
}

TEST_F(InetResearchTest, HomePageEnteredInTheEditorIsOpened) {
    CInetResearch research("ibm", nullptr);
    host.messageAnswers = {qvnrt::IDYES};
    host.onPanel = [this](qvnrt::Panel&) {
        HomePages("IBM = http://www.ibm.example/\n");
        return qvnrt::IDOK;
    };
    research.GotoHomePage(1, nullptr);
    EXPECT_EQ((std::vector<std::string>{"http://www.ibm.example/"}), host.urls);
    EXPECT_EQ(1u, host.messages.size());

    // The page is cached until GotoHomePage or the editor refreshes it, across symbols.
    HomePages("IBM = http://changed.example/\n");
    CString page;
    EXPECT_EQ(1, research.GetHomePage(page, 0, nullptr));
    EXPECT_EQ("http://www.ibm.example/", page);
    research.UpdateSymbolName("msft");
    EXPECT_EQ(1, research.GetHomePage(page, 0, nullptr));
    EXPECT_EQ("http://www.ibm.example/", page);
    research.UpdateSymbolName(nullptr);
    EXPECT_EQ(0, research.GetHomePage(page, 1, nullptr));
    EXPECT_TRUE(page.IsEmpty());
}

TEST_F(InetResearchTest, ResearchPanelIsPrimedAndItsResultIgnored) {
    CInetResearch research("ibm", "Big Blue");
    std::string primed;
    host.onPanel = [&](qvnrt::Panel& panel) {
        auto* search = dynamic_cast<CInetSearchInfoDlg*>(&panel);
        if (search && search->m_pResearch == &research) {
            primed = search->m_symbolText.str() + "|" + search->m_extraText.str();
        }
        return qvnrt::IDOK;
    };
    EXPECT_EQ(2, research.DoInetSearch(nullptr));
    EXPECT_EQ("IBM|Big Blue", primed);
    EXPECT_EQ((std::vector<std::string>{"Internet Research"}), host.panels);
}

}  // namespace
