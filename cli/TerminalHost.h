// The UI host of the command-line program: messages go to standard error, questions get
// their safe answer, and of the panels only Symbol At A Glance is shown, by the command
// that sets showGlance.
#pragma once

#include <functional>

#include <qvnrt/CSymbolAtAGlanceDlg.h>
#include <qvnrt/host.h>

namespace qvnrt::cli {

class TerminalHost : public UiHost {
public:
    TerminalHost() : m_previous(SetUiHost(this)) {}
    ~TerminalHost() override { SetUiHost(m_previous); }
    TerminalHost(const TerminalHost&) = delete;
    TerminalHost& operator=(const TerminalHost&) = delete;

    int MessageBox(const char* text, const char* caption, unsigned style, unsigned helpId) override;
    int RunModal(Panel& panel) override;
    void BeginWaitCursor() override {}
    void EndWaitCursor() override {}
    bool OpenUrl(const char* url) override;

    // Shows the glance panel in the terminal and returns its result; unset, the panel is
    // not shown.
    std::function<int(CSymbolAtAGlanceDlg&)> showGlance;

private:
    UiHost* m_previous;
};

}  // namespace qvnrt::cli
