#include <qvnrt/CInetSymbolSearchDlg.h>

CInetSymbolSearchDlg::CInetSymbolSearchDlg(CWnd* parent) : m_pParentWnd(parent) {}

CInetSymbolSearchDlg::~CInetSymbolSearchDlg() = default;

const char* CInetSymbolSearchDlg::Title() const { return "Internet Symbol Search"; }
