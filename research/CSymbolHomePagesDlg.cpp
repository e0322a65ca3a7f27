#include <qvnrt/CSymbolHomePagesDlg.h>

CSymbolHomePagesDlg::CSymbolHomePagesDlg(const char* symbol, CWnd* parent)
    : m_symbolText(symbol), m_pParentWnd(parent) {}

CSymbolHomePagesDlg::~CSymbolHomePagesDlg() = default;

const char* CSymbolHomePagesDlg::Title() const { return "Symbol Home Pages"; }
