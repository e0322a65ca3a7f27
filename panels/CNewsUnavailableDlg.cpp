#include <qvnrt/CNewsUnavailableDlg.h>

#include "news/NewsState.h"

namespace {

// How a partly failed symbol news search shows its failures: this panel, modally.
void ShowNewsUnavailable(const CString& message, const CString& failedSymbols) {
    CNewsUnavailableDlg panel(nullptr);
    panel.m_strMessage = message;
    panel.m_strSymbols = failedSymbols;
    panel.DoModal();
}

// The news layer lies below the panels and cannot name this class; it is told at load.
[[maybe_unused]] const bool kRegisteredWithNews =
    (qvnrt::news::State().setUnavailablePanel(&ShowNewsUnavailable), true);

}  // namespace

CNewsUnavailableDlg::ListBox::~ListBox() = default;
CNewsUnavailableDlg::View::~View() = default;

CNewsUnavailableDlg::CNewsUnavailableDlg(CWnd* parent)
    : m_symbolList(nullptr), m_pParentWnd(parent) {}

int CNewsUnavailableDlg::DoModal() {
    const int result = qvnrt::GetUiHost().RunModal(*this);
    // The host's controls are gone once the panel has closed.
    m_symbolList = nullptr;
    return result;
}

void CNewsUnavailableDlg::DoDataExchange(View& view) {
    m_symbolList = &view.SymbolList();
    view.SetMessageText(m_strMessage);
}

int CNewsUnavailableDlg::OnInitDialog(View& view) {
    DoDataExchange(view);
    m_symbolList->SetRedraw(false);
    // A do-while: an empty text still gives one (empty) row, and two blanks in a row give
    // an empty row between their symbols (kept: the list shows what the search tried).
    do {
        const int blank = m_strSymbols.Find(' ');
        CString symbol;
        if (blank >= 0) {
            symbol = m_strSymbols.Left(blank);
            m_strSymbols = m_strSymbols.Mid(blank + 1);
        } else {
            symbol = m_strSymbols;
            m_strSymbols.Empty();
        }
        m_symbolList->AddString(symbol);
    } while (!m_strSymbols.IsEmpty());
    m_symbolList->SetRedraw(true);
    return 1;
}
