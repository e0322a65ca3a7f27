#include <qvnrt/CSymbolHomePagesDlg.h>

#include <qvnrt/CPrivateProfile.h>

#include "config/Strings.h"
#include "panels/ResearchEditing.h"

namespace {

constexpr const char* kHomePagesFile = "HomePages.txt";
constexpr const char* kHomePagesSection = "HomePages";

}  // namespace

using namespace qvnrt::panels;

CSymbolHomePagesDlg::CSymbolHomePagesDlg(const char* symbol, CWnd* parent)
    : m_symbolText(symbol), m_pParentWnd(parent), m_pView(nullptr) {
    if (!m_symbolText.IsEmpty()) m_urlText = Template();
}

CSymbolHomePagesDlg::~CSymbolHomePagesDlg() = default;

const char* CSymbolHomePagesDlg::Title() const {
    return kTitle;
}

CString CSymbolHomePagesDlg::Template() const {
    return CString(kTemplatePrefix) + kTemplateSuffix;
}

int CSymbolHomePagesDlg::DoModal() {
    const int result = qvnrt::GetUiHost().RunModal(*this);
    m_pView = nullptr;  // the host's controls are gone
    return result;
}

bool CSymbolHomePagesDlg::DoDataExchange(View& view, bool save) {
    return ExchangeTexts(view, save, IDC_SYMBOL_TEXT, m_symbolText, IDC_URL_TEXT, m_urlText);
}

int CSymbolHomePagesDlg::OnInitDialog(View& view) {
    m_pView = &view;
    qvnrt::ListView& list = view.PageList();
    list.InsertColumn(0, kSymbolColumn, kSymbolColumnWidth);
    list.InsertColumn(1, kPageColumn, kPageColumnWidth);
    CPrivateProfile pages(kHomePagesFile);
    FillList(list, pages, kHomePagesSection);
    DoDataExchange(view, false);
    if (!m_symbolText.IsEmpty() && !m_urlText.IsEmpty()) {
        view.EnableControl(IDC_ADD_BUTTON, true);
        view.SetDefaultButton(IDC_ADD_BUTTON);
    }
    const int row = FindRowByFirstColumn(list, m_symbolText);
    if (row >= 0) {
        list.SetItemMarked(row, true);
        view.EnableControl(IDC_UPDATE_BUTTON, true);
    }
    return 1;
}

void CSymbolHomePagesDlg::DisableButtons(bool okIsDefault) {
    for (int button : {IDC_ADD_BUTTON, IDC_UPDATE_BUTTON, IDC_REMOVE_BUTTON}) {
        m_pView->EnableControl(button, false);
    }
    if (okIsDefault) m_pView->SetDefaultButton(qvnrt::IDOK);
}

void CSymbolHomePagesDlg::ClearTexts() {
    m_symbolText.Empty();
    m_urlText.Empty();
    DoDataExchange(*m_pView, false);
}

void CSymbolHomePagesDlg::ClearSelectedMark() {
    qvnrt::ListView& list = m_pView->PageList();
    const int selected = list.GetSelectedItem();
    if (selected >= 0) list.SetItemMarked(selected, false);
}

void CSymbolHomePagesDlg::OnRowSelected() {
    if (!m_pView) return;
    View& view = *m_pView;
    qvnrt::ListView& list = view.PageList();
    const int selected = list.GetSelectedItem();
    if (selected < 0) {
        DisableButtons(true);
        return;
    }
    m_symbolText = list.GetItemText(selected, 0);
    m_urlText = list.GetItemText(selected, 1);
    DoDataExchange(view, false);
    const bool complete = !m_symbolText.IsEmpty() && !m_urlText.IsEmpty();
    view.EnableControl(IDC_ADD_BUTTON, complete);
    view.EnableControl(IDC_UPDATE_BUTTON, complete);
    view.EnableControl(IDC_REMOVE_BUTTON, true);
    view.SetDefaultButton(complete ? IDC_ADD_BUTTON : IDC_REMOVE_BUTTON);
}

void CSymbolHomePagesDlg::TextChanged(const CString& keyText, bool offerTemplate) {
    View& view = *m_pView;
    const bool filled = !keyText.IsEmpty();
    view.EnableControl(IDC_ADD_BUTTON, filled);
    view.EnableControl(IDC_UPDATE_BUTTON, filled && view.PageList().GetSelectedItem() >= 0);
    if (filled && offerTemplate && m_urlText.IsEmpty()) {
        m_urlText = Template();
        view.SetText(IDC_URL_TEXT, m_urlText);
    }
    view.SetDefaultButton(filled ? int(IDC_ADD_BUTTON) : qvnrt::IDOK);
}

void CSymbolHomePagesDlg::OnSymbolChanged() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    TextChanged(m_symbolText, true);
}

void CSymbolHomePagesDlg::OnUrlChanged() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    TextChanged(m_urlText, false);
}

void CSymbolHomePagesDlg::OnUrlFocus() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    const CString prefix(kTemplatePrefix);
    if (m_urlText.Find(prefix) >= 0) m_pView->SetCaret(IDC_URL_TEXT, prefix.GetLength());
}

void CSymbolHomePagesDlg::OnAdd() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    if (m_symbolText.IsEmpty() || m_urlText.IsEmpty()) {
        DisableButtons(true);
        qvnrt::ShowMessage(kMissingTextString);
        return;
    }
    qvnrt::ListView& list = m_pView->PageList();
    list.EnsureVisible(AppendRow(list, m_symbolText, m_urlText));
    ClearSelectedMark();
    DisableButtons(true);
    ClearTexts();
}

void CSymbolHomePagesDlg::OnUpdate() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    if (m_symbolText.IsEmpty() || m_urlText.IsEmpty()) {
        DisableButtons(true);
        qvnrt::ShowMessage(kMissingTextString);
        return;
    }
    qvnrt::ListView& list = m_pView->PageList();
    const int selected = list.GetSelectedItem();
    if (selected < 0) return;
    list.SetItemText(selected, 0, m_symbolText);
    list.SetItemText(selected, 1, m_urlText);
    list.SetItemMarked(selected, false);
    DisableButtons(false);
    ClearTexts();
}

void CSymbolHomePagesDlg::OnRemove() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    if (m_symbolText.IsEmpty() || m_urlText.IsEmpty()) {
        DisableButtons(false);
        qvnrt::ShowMessage(kNothingSelectedString);
        return;
    }
    qvnrt::ListView& list = m_pView->PageList();
    const int selected = list.GetSelectedItem();
    if (selected < 0) return;
    list.DeleteItem(selected);
    DisableButtons(false);
    ClearTexts();
}

bool CSymbolHomePagesDlg::OnOK() {
    if (!m_pView) return true;
    // The whole section is rewritten from the list, so an empty list removes it.
    CPrivateProfile pages(kHomePagesFile);
    pages.RemoveSection(kHomePagesSection);
    qvnrt::ListView& list = m_pView->PageList();
    for (int row = 0; row < list.GetItemCount(); ++row) {
        pages.SetValue(kHomePagesSection, list.GetItemText(row, 0), list.GetItemText(row, 1));
    }
    pages.Write();
    return true;
}
