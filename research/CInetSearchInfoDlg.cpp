#include <qvnrt/CInetSearchInfoDlg.h>

CInetSearchInfoDlg::CInetSearchInfoDlg(CInetResearch* research, CWnd* parent)
    : m_pResearch(research), m_pParentWnd(parent) {}

CInetSearchInfoDlg::~CInetSearchInfoDlg() = default;

const char* CInetSearchInfoDlg::Title() const { return "Internet Research"; }
