#include <qvnrt/CInetSymbolSearchDlg.h>

#include "config/Strings.h"
#include "panels/ResearchEditing.h"

namespace {

constexpr const char* kServicesFile = "inetres.txt";
constexpr const char* kServicesSection = "Internet Background Page";

}  // namespace

using namespace qvnrt::panels;

CInetSymbolSearchDlg::CInetSymbolSearchDlg(CWnd* parent)
    : m_profile(kServicesFile), m_pParentWnd(parent), m_pView(nullptr) {}

CInetSymbolSearchDlg::~CInetSymbolSearchDlg() = default;

const char* CInetSymbolSearchDlg::Title() const {
    return kTitle;
}

int CInetSymbolSearchDlg::DoModal() {
    const int result = qvnrt::GetUiHost().RunModal(*this);
    m_pView = nullptr;  // the host's controls are gone
    return result;
}

bool CInetSymbolSearchDlg::DoDataExchange(View& view, bool save) {
    return ExchangeTexts(view, save, IDC_NAME_TEXT, m_nameText, IDC_URL_TEXT, m_urlText);
}

int CInetSymbolSearchDlg::OnInitDialog(View& view) {
    m_pView = &view;
    qvnrt::ListView& list = view.ServiceList();
    list.InsertColumn(0, kNameColumn, kNameColumnWidth);
    list.InsertColumn(1, kUrlColumn, kUrlColumnWidth);
    FillList(list, m_profile, kServicesSection);
    DoDataExchange(view, false);
    if (!m_nameText.IsEmpty()) {
        view.EnableControl(IDC_ADD_BUTTON, true);
        view.SetDefaultButton(IDC_ADD_BUTTON);
        const int row = FindRow(m_nameText);
        if (row >= 0) list.SetItemMarked(row, true);
    }
    return 1;
}

int CInetSymbolSearchDlg::FindRow(const CString& name) {
    return FindRowByFirstColumn(m_pView->ServiceList(), name);
}

void CInetSymbolSearchDlg::ClearSelectedMark() {
    qvnrt::ListView& list = m_pView->ServiceList();
    const int selected = list.GetSelectedItem();
    if (selected >= 0) list.SetItemMarked(selected, false);
}

void CInetSymbolSearchDlg::UpdateButtons() {
    View& view = *m_pView;
    view.EnableControl(IDC_REMOVE_BUTTON, view.ServiceList().GetSelectedItem() >= 0);
    const bool canAdd = !m_nameText.IsEmpty() && !m_urlText.IsEmpty();
    view.EnableControl(IDC_ADD_BUTTON, canAdd);
    view.SetDefaultButton(canAdd ? int(IDC_ADD_BUTTON) : qvnrt::IDOK);
}

void CInetSymbolSearchDlg::OnAdd() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    if (m_nameText.IsEmpty() || m_urlText.IsEmpty()) {
        UpdateButtons();
        qvnrt::ShowMessage(kMissingTextString);
        return;
    }
    qvnrt::ListView& list = m_pView->ServiceList();
    int row = FindRow(m_nameText);
    if (row >= 0) {
        list.SetItemText(row, 1, m_urlText);
    } else {
        row = AppendRow(list, m_nameText, m_urlText);
    }
    list.EnsureVisible(row);
    ClearSelectedMark();
    m_profile.SetValue(kServicesSection, m_nameText, m_urlText);
    m_nameText.Empty();
    m_urlText.Empty();
    DoDataExchange(*m_pView, false);
    UpdateButtons();
}

void CInetSymbolSearchDlg::OnRemove() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    qvnrt::ListView& list = m_pView->ServiceList();
    const int selected = list.GetSelectedItem();
    if (selected < 0) {
        UpdateButtons();
        qvnrt::ShowMessage(kNothingSelectedString);
        return;
    }
    list.DeleteItem(selected);
    // Kept: the key named by the text box goes, not the row's; a name edited after
    // selecting leaves the row's key in the file.
    m_profile.RemoveKey(kServicesSection, m_nameText);
    m_nameText.Empty();
    m_urlText.Empty();
    DoDataExchange(*m_pView, false);
}

void CInetSymbolSearchDlg::OnRowSelected() {
    if (!m_pView) return;
    qvnrt::ListView& list = m_pView->ServiceList();
    const int selected = list.GetSelectedItem();
    if (selected >= 0) {
        m_nameText = list.GetItemText(selected, 0);
        m_urlText = list.GetItemText(selected, 1);
        DoDataExchange(*m_pView, false);
    }
    UpdateButtons();
}

void CInetSymbolSearchDlg::OnTextChanged() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    UpdateButtons();
}

bool CInetSymbolSearchDlg::OnOK() {
    // Written before the controls are checked: what was added is kept even when the
    // panel then refuses to close.
    m_profile.Write();
    return !m_pView || DoDataExchange(*m_pView, true);
}
