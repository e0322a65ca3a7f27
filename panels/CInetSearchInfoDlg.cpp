#include <qvnrt/CInetSearchInfoDlg.h>

#include <qvnrt/CInetResearch.h>

namespace {

// EnumInetServiceNames flags: 4 <SYMBOL>, 8 <EXTRA>; 1 any of them, 2 exactly those.
int ServiceFlags(bool symbol, bool extra, bool both) {
    if (symbol && extra) return both ? 14 : 13;
    return symbol ? 6 : 10;
}

}  // namespace

CInetSearchInfoDlg::CInetSearchInfoDlg(CInetResearch* research, CWnd* parent)
    : m_extraCheck(0),
      m_symbolCheck(0),
      m_bothCheck(0),
      m_pResearch(research),
      m_pParentWnd(parent),
      m_pView(nullptr) {}

CInetSearchInfoDlg::~CInetSearchInfoDlg() = default;

const char* CInetSearchInfoDlg::Title() const {
    return kTitle;
}

int CInetSearchInfoDlg::DoModal() {
    const int result = qvnrt::GetUiHost().RunModal(*this);
    m_pView = nullptr;  // the host's controls are gone
    return result;
}

bool CInetSearchInfoDlg::DoDataExchange(View& view, bool save) {
    if (save) {
        CString service, extra, symbol;
        const int selected = view.ServiceBox().GetCurSel();
        if (selected >= 0) service = view.ServiceBox().GetLBText(selected);
        if (!view.GetText(IDC_EXTRA_TEXT, extra) || !view.GetText(IDC_SYMBOL_TEXT, symbol)) {
            return false;
        }
        m_serviceText = service;
        m_extraText = extra;
        m_symbolText = symbol;
        m_extraCheck = view.GetCheck(IDC_EXTRA_CHECK);
        m_symbolCheck = view.GetCheck(IDC_SYMBOL_CHECK);
        m_bothCheck = view.GetCheck(IDC_BOTH_CHECK);
        return true;
    }
    view.SetText(IDC_EXTRA_TEXT, m_extraText);
    view.SetText(IDC_SYMBOL_TEXT, m_symbolText);
    view.SetCheck(IDC_EXTRA_CHECK, m_extraCheck);
    view.SetCheck(IDC_SYMBOL_CHECK, m_symbolCheck);
    view.SetCheck(IDC_BOTH_CHECK, m_bothCheck);
    return true;
}

int CInetSearchInfoDlg::OnInitDialog(View& view) {
    m_pView = &view;
    const bool symbol = !m_symbolText.IsEmpty();
    const bool extra = !m_extraText.IsEmpty();
    view.EnableControl(IDC_SYMBOL_TEXT, symbol);
    view.EnableControl(IDC_HOME_PAGE_BUTTON, symbol);
    view.EnableControl(IDC_EXTRA_TEXT, extra);
    m_symbolCheck = symbol;
    m_extraCheck = extra;
    DoDataExchange(view, false);
    // With neither text the panel starts at step one, step two shown closed.
    SetStepTwo(StepTwoOpen());
    if (StepTwoOpen()) view.SetFocus(IDC_SERVICE_BOX);
    return 1;
}

void CInetSearchInfoDlg::OnCheckClicked() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    m_pView->EnableControl(IDC_SYMBOL_TEXT, m_symbolCheck);
    m_pView->EnableControl(IDC_EXTRA_TEXT, m_extraCheck);
    if (!m_symbolCheck) m_symbolText.Empty();
    if (!m_extraCheck) m_extraText.Empty();
    DoDataExchange(*m_pView, false);
    SetStepTwo(StepTwoOpen());
}

void CInetSearchInfoDlg::OnTextChanged() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    UpdateGoState();
}

void CInetSearchInfoDlg::OnServiceChanged() {
    OnTextChanged();
}

void CInetSearchInfoDlg::SetStepTwo(bool open) {
    View& view = *m_pView;
    view.SetBitmap(IDC_STEP_PICTURE, open ? IDB_STEP_TWO_OPEN : IDB_STEP_TWO_CLOSED);
    if (open) FillServiceBox();
    UpdateGoState();
    view.EnableControl(IDC_BOTH_CHECK, m_symbolCheck && m_extraCheck);
    for (int control : {IDC_STEP_TWO_LABEL, IDC_SERVICE_BOX, IDC_ADD_EDIT_BUTTON}) {
        view.EnableControl(control, open);
    }
}

void CInetSearchInfoDlg::FillServiceBox() {
    qvnrt::ComboBoxView& box = m_pView->ServiceBox();
    box.ResetContent();
    CStringArray services;
    m_pResearch->EnumInetServiceNames(services,
                                      ServiceFlags(m_symbolCheck, m_extraCheck, m_bothCheck));
    if (services.GetSize() == 0) box.AddString(kNoServices);
    for (int i = 0; i < services.GetSize(); ++i) box.AddString(services[i]);

    const CString last = m_pResearch->GetLastService();
    const int found = box.FindStringExact(last);
    if (found >= 0) {
        box.SetCurSel(found);
    } else {
        box.SetCurSel(0);
        // A last service that is no longer listed is forgotten.
        if (!last.IsEmpty()) m_pResearch->SetLastService(nullptr);
    }
}

void CInetSearchInfoDlg::UpdateGoState() {
    View& view = *m_pView;
    const bool ready = StepTwoOpen() && (!m_symbolCheck || !m_symbolText.IsEmpty()) &&
                       (!m_extraCheck || !m_extraText.IsEmpty()) &&
                       view.ServiceBox().GetCurSel() >= 0;
    view.SetBitmap(IDC_GO_PICTURE, ready ? IDB_READY : IDB_NOT_READY);
    view.EnableControl(IDC_CLOSING_NOTE, ready);
    view.EnableControl(IDC_BEGIN_BUTTON, ready);
}

void CInetSearchInfoDlg::OnBegin() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    // In this order: UpdateSymbolName drops the extra text.
    m_pResearch->UpdateSymbolName(m_symbolText);
    m_pResearch->UpdateExtraSearchText(m_extraText);
    m_pResearch->GotoInetSearchPage(m_serviceText, 0, nullptr);
    m_pResearch->SetLastService(m_serviceText);
}

void CInetSearchInfoDlg::OnVisitHomePage() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    m_pResearch->UpdateSymbolName(m_symbolText);
    m_pResearch->GotoHomePage(1, &m_wndPanel);
}

void CInetSearchInfoDlg::OnAddEdit() {
    if (!m_pView) return;
    if (m_pResearch->EditInetSearchURLs(&m_wndPanel) != qvnrt::IDOK) return;
    FillServiceBox();
    UpdateGoState();
}
