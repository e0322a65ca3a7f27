// Installs the research panels into the research layer below, which opens them by these
// steps and never names their classes.
#include <qvnrt/CInetResearch.h>
#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CSymbolHomePagesDlg.h>

#include "research/ResearchPanels.h"

namespace qvnrt::panels {

namespace {

int RunSearch(CInetResearch& owner, CWnd* parent) {
    CInetSearchInfoDlg search(&owner, parent);
    search.m_symbolText = owner.m_symbol;
    search.m_extraText = owner.m_extraText;
    return search.DoModal();
}

int RunServiceEditor(CWnd* parent) {
    CInetSymbolSearchDlg editor(parent);
    return editor.DoModal();
}

int RunHomePageEditor(const char* symbol, CWnd* parent) {
    CSymbolHomePagesDlg editor(symbol, parent);
    return editor.DoModal();
}

// Runs when the library is loaded, before any application code can open a panel.
const bool kInstalled = [] {
    research::InstallResearchPanels({RunSearch, RunServiceEditor, RunHomePageEditor});
    return true;
}();

}  // namespace

}  // namespace qvnrt::panels
