/// \file
/// CInetSymbolSearchDlg: the modal editor of the research services kept in "inetres.txt"
/// ("Internet Symbol Search"). A host recognises it by its class and supplies the view.
///
/// Not finished: the panel carries only its title and parent window. Reading and editing
/// the service list is not written yet, so showing it changes nothing.
#pragma once

#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

/// The symbol search panel's logic, shown through the UI host.
class QVNRT_API CInetSymbolSearchDlg : public qvnrt::Panel {
public:
    enum { IDD = 5224 };

    explicit CInetSymbolSearchDlg(CWnd* parent = nullptr);
    ~CInetSymbolSearchDlg() override;

    /// "Internet Symbol Search"
    const char* Title() const override;

    CWnd* m_pParentWnd;  ///< opaque to the library; for the host's placement
};
