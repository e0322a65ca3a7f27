/// \file
/// CSymbolHomePagesDlg: the modal editor of the symbols' home pages kept in "HomePages.txt"
/// ("Symbol Home Pages"). A host recognises it by its class and supplies the view.
///
/// Not finished: the panel carries only the symbol that CInetResearch primes it with, its
/// title and parent window. The list, the address template and the editing rules are not
/// written yet, so showing it changes nothing.
#pragma once

#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

/// The home page editor panel's logic, shown through the UI host.
class QVNRT_API CSymbolHomePagesDlg : public qvnrt::Panel {
public:
    enum { IDD = 5223 };

    /// A null symbol gives an empty symbol text.
    explicit CSymbolHomePagesDlg(const char* symbol, CWnd* parent = nullptr);
    ~CSymbolHomePagesDlg() override;

    /// "Symbol Home Pages"
    const char* Title() const override;

    CString m_symbolText;
    CWnd* m_pParentWnd;  ///< opaque to the library; for the host's placement
};
