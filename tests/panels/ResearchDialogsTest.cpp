#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <qvnrt/CInetResearch.h>
#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/CSymbolHomePagesDlg.h>

#include "support/RecordingDialogView.h"
#include "support/RecordingUiHost.h"
#include "support/TempDir.h"

namespace {

using qvnrt::test::RecordingComboBox;
using qvnrt::test::RecordingControls;
using qvnrt::test::RecordingList;
using Strings = std::vector<std::string>;

constexpr char kMissingText[] =
    "You must enter a symbol name and home page address before  a new item can be added.";
constexpr char kNothingSelected[] = "Nothing was selected in the list";

struct HomePagesView : RecordingControls<CSymbolHomePagesDlg::View> {
    qvnrt::ListView& PageList() override { return list; }
    RecordingList list;
};
struct ServicesView : RecordingControls<CInetSymbolSearchDlg::View> {
    qvnrt::ListView& ServiceList() override { return list; }
    RecordingList list;
};
struct SearchView : RecordingControls<CInetSearchInfoDlg::View> {
    qvnrt::ComboBoxView& ServiceBox() override { return box; }
    RecordingComboBox box;
};

class ResearchDialogs : public ::testing::Test {
protected:
    std::string Value(const char* file, const char* section, const char* key) {
        CString value;
        CPrivateProfile(file).GetValue(section, key, "", value);
        return value.str();
    }
    bool HasSection(const char* file, const char* section) {
        return CPrivateProfile(file).GetStartKeyPos(section) != nullptr;
    }
    Strings MessageTexts() {
        Strings out;
        for (const auto& message : ui.messages) out.push_back(message.text);
        return out;
    }

    qvnrt::test::IsolatedHome home;
    qvnrt::test::RecordingUiHost ui;
};

// ---- Home pages -----------------------------------------------------------------------

class HomePages : public ResearchDialogs {
protected:
    void SetUp() override {
        home.host().write("HomePages.txt",
                          "[HomePages]\nIBM=http://www.ibm.example/\nT=http://t.example/\n"
                          "[Notes]\nkept=yes\n");
    }
    CSymbolHomePagesDlg& Open(const char* symbol) {
        dialog = std::make_unique<CSymbolHomePagesDlg>(symbol);
        dialog->OnInitDialog(view);
        return *dialog;
    }
    void Select(int row) {
        view.list.selected = row;
        dialog->OnRowSelected();
    }

    std::unique_ptr<CSymbolHomePagesDlg> dialog;
    HomePagesView view;
};

TEST_F(HomePages, OpensOnTheSymbolWithTheTemplateAndMarksItsRow) {
    Open("IBM");
    EXPECT_EQ("IBM", view.texts[CSymbolHomePagesDlg::IDC_SYMBOL_TEXT]);
    const std::string form =
        std::string(CSymbolHomePagesDlg::kTemplatePrefix) + CSymbolHomePagesDlg::kTemplateSuffix;
    EXPECT_EQ(form, view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT]);
    EXPECT_EQ(2u, view.list.rows.size());
    const int ibm = view.list.rows[0].first == "IBM" ? 0 : 1;
    EXPECT_TRUE(view.list.rows[ibm].marked);
    EXPECT_EQ(-1, view.list.selected);  // marked, not selected
    EXPECT_TRUE(view.enabled[CSymbolHomePagesDlg::IDC_UPDATE_BUTTON]);
    EXPECT_EQ(CSymbolHomePagesDlg::IDC_ADD_BUTTON, view.defaultButton);

    view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT] = form;
    dialog->OnUrlFocus();
    EXPECT_EQ(static_cast<int>(std::string(CSymbolHomePagesDlg::kTemplatePrefix).size()),
              view.carets[CSymbolHomePagesDlg::IDC_URL_TEXT]);
}

struct TypingCase {
    const char* name;
    const char* url;
    const char* typed;
    bool templateOffered;
};

class Typing : public HomePages, public ::testing::WithParamInterface<TypingCase> {};

TEST_P(Typing, SymbolTextOffersTheTemplateOnlyToAnEmptyAddress) {
    const TypingCase c = GetParam();
    Open(nullptr);
    EXPECT_EQ("", view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT]);
    view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT] = c.url;
    view.texts[CSymbolHomePagesDlg::IDC_SYMBOL_TEXT] = c.typed;
    dialog->OnSymbolChanged();
    const std::string form =
        std::string(CSymbolHomePagesDlg::kTemplatePrefix) + CSymbolHomePagesDlg::kTemplateSuffix;
    EXPECT_EQ(c.templateOffered ? form : std::string(c.url),
              view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT]);
    const bool typed = *c.typed != '\0';
    EXPECT_EQ(typed, view.enabled[CSymbolHomePagesDlg::IDC_ADD_BUTTON]);
    EXPECT_EQ(typed ? int(CSymbolHomePagesDlg::IDC_ADD_BUTTON) : qvnrt::IDOK, view.defaultButton);
}

INSTANTIATE_TEST_SUITE_P(HomePages, Typing,
                         ::testing::Values(TypingCase{"EmptyForm", "", "MSFT", true},
                                           TypingCase{"AddressPresent", "http://ms.example/",
                                                      "MSFT", false},
                                           TypingCase{"SymbolErased", "", "", false}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(HomePages, EditsTouchOnlyTheListUntilOk) {
    Open(nullptr);
    view.texts[CSymbolHomePagesDlg::IDC_SYMBOL_TEXT] = "MSFT";
    view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT] = "http://ms.example/";
    dialog->OnAdd();
    ASSERT_EQ(3u, view.list.rows.size());
    EXPECT_EQ("MSFT", view.list.rows.back().first);
    EXPECT_EQ(2, view.list.visible);
    EXPECT_EQ("", view.texts[CSymbolHomePagesDlg::IDC_SYMBOL_TEXT]);
    EXPECT_FALSE(view.enabled[CSymbolHomePagesDlg::IDC_ADD_BUTTON]);
    EXPECT_EQ("", Value("HomePages.txt", "HomePages", "MSFT"));

    Select(2);
    view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT] = "http://msft.example/";
    dialog->OnUpdate();
    EXPECT_EQ("http://msft.example/", view.list.rows[2].second);
    EXPECT_TRUE(dialog->OnOK());
    EXPECT_EQ("http://msft.example/", Value("HomePages.txt", "HomePages", "MSFT"));
    EXPECT_EQ("yes", Value("HomePages.txt", "Notes", "kept"));
}

TEST_F(HomePages, EmptyTextsAndNoSelectionAreRefused) {
    Open(nullptr);
    dialog->OnAdd();
    dialog->OnUpdate();
    dialog->OnRemove();
    EXPECT_EQ((Strings{kMissingText, kMissingText, kNothingSelected}), MessageTexts());
    view.texts[CSymbolHomePagesDlg::IDC_SYMBOL_TEXT] = "X";
    view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT] = "http://x.example/";
    dialog->OnRemove();  // nothing selected: nothing happens
    dialog->OnUpdate();
    EXPECT_EQ(2u, view.list.rows.size());
    EXPECT_EQ(3u, ui.messages.size());
}

TEST_F(HomePages, OkOnAnEmptyListRemovesTheSectionAndCancelLeavesTheFile) {
    const auto removeEveryRow = [this] {
        Open(nullptr);
        while (!view.list.rows.empty()) {
            Select(0);
            dialog->OnRemove();
        }
    };
    removeEveryRow();
    dialog.reset();  // Cancel: the file is as it was
    EXPECT_TRUE(HasSection("HomePages.txt", "HomePages"));
    removeEveryRow();
    EXPECT_TRUE(dialog->OnOK());
    EXPECT_FALSE(HasSection("HomePages.txt", "HomePages"));
    EXPECT_EQ("yes", Value("HomePages.txt", "Notes", "kept"));
}

TEST_F(HomePages, SelectingARowFillsTheTextsAndButtons) {
    Open(nullptr);
    Select(1);
    EXPECT_EQ(view.list.rows[1].first, view.texts[CSymbolHomePagesDlg::IDC_SYMBOL_TEXT]);
    EXPECT_EQ(view.list.rows[1].second, view.texts[CSymbolHomePagesDlg::IDC_URL_TEXT]);
    for (int button : {CSymbolHomePagesDlg::IDC_ADD_BUTTON, CSymbolHomePagesDlg::IDC_UPDATE_BUTTON,
                       CSymbolHomePagesDlg::IDC_REMOVE_BUTTON}) {
        EXPECT_TRUE(view.enabled[button]);
    }
    Select(-1);
    EXPECT_FALSE(view.enabled[CSymbolHomePagesDlg::IDC_REMOVE_BUTTON]);
    EXPECT_EQ(qvnrt::IDOK, view.defaultButton);
}

// ---- Services -------------------------------------------------------------------------

constexpr char kServices[] =
    "[Internet Background Page]\n"
    "Quotes=http://example.com/q?s=<SYMBOL>\n"
    "Companies=http://example.com/c?n=<EXTRA>\n"
    "Both=http://example.com/b?s=<SYMBOL>&n=<EXTRA>\n";

class Services : public ResearchDialogs {
protected:
    void SetUp() override { home.host().write("inetres.txt", kServices); }
    int RowOf(const char* name) {
        for (size_t i = 0; i < view.list.rows.size(); ++i) {
            if (view.list.rows[i].first == name) return static_cast<int>(i);
        }
        return -1;
    }

    ServicesView view;
};

TEST_F(Services, AddUpdatesByNameAndCloseWritesBeforeValidating) {
    CInetSymbolSearchDlg dialog;
    dialog.OnInitDialog(view);
    EXPECT_EQ((Strings{"Service", "Search URL"}), view.list.headings);
    ASSERT_EQ(3u, view.list.rows.size());

    view.texts[CInetSymbolSearchDlg::IDC_NAME_TEXT] = "Quotes";
    view.texts[CInetSymbolSearchDlg::IDC_URL_TEXT] = "http://example.com/q2?s=<SYMBOL>";
    dialog.OnAdd();
    EXPECT_EQ(3u, view.list.rows.size());
    EXPECT_EQ("http://example.com/q2?s=<SYMBOL>", view.list.rows[RowOf("Quotes")].second);

    view.readable = false;  // the controls refuse: the panel stays, the file is written
    EXPECT_FALSE(dialog.OnOK());
    EXPECT_EQ("http://example.com/q2?s=<SYMBOL>",
              Value("inetres.txt", "Internet Background Page", "Quotes"));
}

TEST_F(Services, RemoveTakesTheKeyOfTheTextBox) {
    CInetSymbolSearchDlg dialog;
    dialog.OnInitDialog(view);
    view.list.selected = RowOf("Quotes");
    dialog.OnRowSelected();
    EXPECT_EQ("Quotes", view.texts[CInetSymbolSearchDlg::IDC_NAME_TEXT]);
    EXPECT_TRUE(view.enabled[CInetSymbolSearchDlg::IDC_REMOVE_BUTTON]);
    view.texts[CInetSymbolSearchDlg::IDC_NAME_TEXT] = "Companies";
    dialog.OnRemove();
    EXPECT_EQ(-1, RowOf("Quotes"));
    EXPECT_TRUE(dialog.OnOK());
    EXPECT_NE("", Value("inetres.txt", "Internet Background Page", "Quotes"));
    EXPECT_EQ("", Value("inetres.txt", "Internet Background Page", "Companies"));
}

TEST_F(Services, EditorRunsThroughTheHostAndTheResearchObjectRereads) {
    CInetResearch research("IBM", nullptr);
    EXPECT_EQ(qvnrt::IDCANCEL, research.EditInetSearchURLs(nullptr));  // the host shows none
    EXPECT_EQ(Strings{"Internet Symbol Search"}, ui.panels);
    ui.onPanel = [&](qvnrt::Panel& panel) {
        auto* editor = dynamic_cast<CInetSymbolSearchDlg*>(&panel);
        if (!editor) return qvnrt::IDCANCEL;
        editor->OnInitDialog(view);
        view.texts[CInetSymbolSearchDlg::IDC_NAME_TEXT] = "Profile";
        view.texts[CInetSymbolSearchDlg::IDC_URL_TEXT] = "http://example.com/p/<SYMBOL>.html";
        editor->OnAdd();
        return editor->OnOK() ? qvnrt::IDOK : qvnrt::IDCANCEL;
    };
    EXPECT_EQ(qvnrt::IDOK, research.EditInetSearchURLs(nullptr));
    EXPECT_EQ(1, research.IsServiceAvailable("Profile"));
}

// ---- The guided search ----------------------------------------------------------------

class Search : public Services {
protected:
    CInetSearchInfoDlg& Open(const char* symbol, const char* extra) {
        research = std::make_unique<CInetResearch>(symbol, extra);
        dialog = std::make_unique<CInetSearchInfoDlg>(research.get());
        dialog->m_symbolText = research->m_symbol;
        dialog->m_extraText = research->m_extraText;
        dialog->OnInitDialog(search);
        return *dialog;
    }
    void Click(int check, bool on) {
        search.checks[check] = on;
        dialog->OnCheckClicked();
    }

    std::unique_ptr<CInetResearch> research;
    std::unique_ptr<CInetSearchInfoDlg> dialog;
    SearchView search;
};

TEST_F(Search, BothCheckNarrowsTheServiceList) {
    Open("IBM", "Intl Machines");
    EXPECT_TRUE(search.checks[CInetSearchInfoDlg::IDC_SYMBOL_CHECK]);
    EXPECT_TRUE(search.checks[CInetSearchInfoDlg::IDC_EXTRA_CHECK]);
    EXPECT_TRUE(search.enabled[CInetSearchInfoDlg::IDC_BOTH_CHECK]);
    EXPECT_EQ(CInetSearchInfoDlg::IDC_SERVICE_BOX, search.focus);
    EXPECT_EQ(3u, search.box.rows.size());  // 13: either tag
    Click(CInetSearchInfoDlg::IDC_BOTH_CHECK, true);
    EXPECT_EQ(Strings{"Both"}, search.box.rows);  // 14: both tags
    Click(CInetSearchInfoDlg::IDC_EXTRA_CHECK, false);
    EXPECT_EQ(Strings{"Quotes"}, search.box.rows);  // 6: the symbol alone
    EXPECT_EQ("", search.texts[CInetSearchInfoDlg::IDC_EXTRA_TEXT]);
    EXPECT_FALSE(search.enabled[CInetSearchInfoDlg::IDC_BOTH_CHECK]);
}

TEST_F(Search, BeginWithOnlyTheExtraCheckSearchesOnTheExtraText) {
    Open(nullptr, "Intl Machines");
    EXPECT_FALSE(search.enabled[CInetSearchInfoDlg::IDC_HOME_PAGE_BUTTON]);
    EXPECT_EQ(Strings{"Companies"}, search.box.rows);  // 10: the extra text alone
    EXPECT_TRUE(search.enabled[CInetSearchInfoDlg::IDC_BEGIN_BUTTON]);
    EXPECT_EQ(CInetSearchInfoDlg::IDB_READY, search.bitmaps[CInetSearchInfoDlg::IDC_GO_PICTURE]);
    dialog->OnBegin();
    EXPECT_EQ(Strings{"http://example.com/c?n=Intl Machines"}, ui.urls);
    EXPECT_EQ("", research->m_symbol.str());
    EXPECT_EQ("Companies", Value("inetres.txt", "Last Internet Search Service", "Name"));
}

TEST_F(Search, GoStateWaitsForEveryCheckedText) {
    Open(nullptr, nullptr);
    EXPECT_EQ(CInetSearchInfoDlg::IDB_STEP_TWO_CLOSED,
              search.bitmaps[CInetSearchInfoDlg::IDC_STEP_PICTURE]);
    EXPECT_FALSE(search.enabled[CInetSearchInfoDlg::IDC_SERVICE_BOX]);
    Click(CInetSearchInfoDlg::IDC_SYMBOL_CHECK, true);
    EXPECT_EQ(CInetSearchInfoDlg::IDB_STEP_TWO_OPEN,
              search.bitmaps[CInetSearchInfoDlg::IDC_STEP_PICTURE]);
    EXPECT_FALSE(search.enabled[CInetSearchInfoDlg::IDC_BEGIN_BUTTON]);
    EXPECT_EQ(CInetSearchInfoDlg::IDB_NOT_READY,
              search.bitmaps[CInetSearchInfoDlg::IDC_GO_PICTURE]);
    search.texts[CInetSearchInfoDlg::IDC_SYMBOL_TEXT] = "IBM";
    dialog->OnTextChanged();
    EXPECT_TRUE(search.enabled[CInetSearchInfoDlg::IDC_BEGIN_BUTTON]);
    EXPECT_TRUE(search.enabled[CInetSearchInfoDlg::IDC_CLOSING_NOTE]);
}

TEST_F(Search, AVanishedLastServiceIsClearedOnTheFirstFill) {
    home.host().write("inetres.txt",
                      std::string(kServices) + "[Last Internet Search Service]\nName=Gone\n");
    Open("IBM", nullptr);
    EXPECT_EQ(0, search.box.selected);
    EXPECT_FALSE(HasSection("inetres.txt", "Last Internet Search Service"));
}

}  // namespace
