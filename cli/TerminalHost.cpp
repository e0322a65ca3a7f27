#include "cli/TerminalHost.h"

#include <qvnrt/CNewsUnavailableDlg.h>

#include <cstdio>
#include <string>

namespace qvnrt::cli {

int TerminalHost::MessageBox(const char* text, const char*, unsigned style, unsigned) {
    std::fprintf(stderr, "qvnrt-cli: %s\n", text ? text : "");
    const unsigned buttons = style & MB_TYPEMASK;
    return (buttons == MB_YESNO || buttons == MB_YESNOCANCEL) ? IDNO : IDOK;
}

namespace {

// The "News Unavailable" panel as two lines of standard error: its message, then the
// symbols its list would show.
class NewsUnavailableLines : public CNewsUnavailableDlg::View, public CNewsUnavailableDlg::ListBox {
public:
    ListBox& SymbolList() override { return *this; }
    void SetMessageText(const char* text) override { message = text ? text : ""; }
    void SetRedraw(bool) override {}
    int AddString(const char* text) override {
        symbols += (rows++ ? " " : "") + std::string(text ? text : "");
        return rows - 1;
    }

    std::string message;
    std::string symbols;
    int rows = 0;
};

}  // namespace

int TerminalHost::RunModal(Panel& panel) {
    if (auto* glance = dynamic_cast<CSymbolAtAGlanceDlg*>(&panel); glance && showGlance) {
        return showGlance(*glance);
    }
    if (auto* news = dynamic_cast<CNewsUnavailableDlg*>(&panel)) {
        NewsUnavailableLines lines;
        news->OnInitDialog(lines);
        std::fprintf(stderr, "qvnrt-cli: %s\nqvnrt-cli: %s %s\n", lines.message.c_str(),
                     CNewsUnavailableDlg::kListLabel, lines.symbols.c_str());
        return IDOK;
    }
    std::fprintf(stderr, "qvnrt-cli: the panel \"%s\" needs a window\n", panel.Title());
    return IDCANCEL;
}

bool TerminalHost::OpenUrl(const char* url) {
    std::printf("%s\n", url ? url : "");
    return false;
}

}  // namespace qvnrt::cli
