#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <qvnrt/CNewsUnavailableDlg.h>

#include "support/RecordingUiHost.h"

namespace {

// A host's view that records what the panel does to it, in order.
class RecordingView : public CNewsUnavailableDlg::View, public CNewsUnavailableDlg::ListBox {
public:
    ListBox& SymbolList() override { return *this; }
    void SetMessageText(const char* text) override {
        events.push_back("message:" + std::string(text));
    }
    void SetRedraw(bool redraw) override { events.push_back(redraw ? "redraw on" : "redraw off"); }
    int AddString(const char* text) override {
        events.push_back("row:" + std::string(text));
        return rows++;
    }

    std::vector<std::string> events;
    int rows = 0;
};

// Shows the panel through a recording host that builds the view, as a real host would.
std::vector<std::string> Show(const char* symbols, const char* message = "") {
    qvnrt::test::RecordingUiHost host;
    RecordingView view;
    host.onPanel = [&](qvnrt::Panel& panel) {
        auto* dialog = dynamic_cast<CNewsUnavailableDlg*>(&panel);
        EXPECT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->OnInitDialog(view), 1);
        EXPECT_TRUE(dialog->m_strSymbols.IsEmpty());  // the walk consumes the text
        return qvnrt::IDOK;
    };
    CNewsUnavailableDlg dialog;
    dialog.m_strMessage = message;
    dialog.m_strSymbols = symbols;
    EXPECT_EQ(dialog.DoModal(), qvnrt::IDOK);
    EXPECT_EQ(dialog.m_symbolList, nullptr);
    EXPECT_EQ(host.panels, std::vector<std::string>{"News Unavailable"});
    return view.events;
}

using Events = std::vector<std::string>;

TEST(CNewsUnavailableDlg, EachSymbolBecomesARowWhileRedrawIsOff) {
    EXPECT_EQ(
        Show("IBM T ", "News was not available"),
        (Events{"message:News was not available", "redraw off", "row:IBM", "row:T", "redraw on"}));
    EXPECT_EQ(Show("IBM"), (Events{"message:", "redraw off", "row:IBM", "redraw on"}));
}

TEST(CNewsUnavailableDlg, EmptyTextAndDoubleBlanksGiveEmptyRows) {
    EXPECT_EQ(Show(""), (Events{"message:", "redraw off", "row:", "redraw on"}));
    EXPECT_EQ(Show("IBM  T "),
              (Events{"message:", "redraw off", "row:IBM", "row:", "row:T", "redraw on"}));
}

TEST(CNewsUnavailableDlg, HeadlessHostShowsNothingAndKeepsTheText) {
    CWnd parent(reinterpret_cast<HWND>(0x1234));
    CNewsUnavailableDlg dialog(&parent);
    dialog.m_strSymbols = "IBM ";
    EXPECT_EQ(dialog.GetParent(), &parent);
    EXPECT_EQ(dialog.DoModal(), qvnrt::IDCANCEL);
    EXPECT_STREQ(dialog.m_strSymbols, "IBM ");
}

}  // namespace
