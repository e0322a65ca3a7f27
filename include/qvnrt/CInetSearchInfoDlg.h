/// \file
/// CInetSearchInfoDlg: the modal panel that walks the user through an Internet search for a
/// symbol ("Internet Research"). A host recognises it by its class and supplies the view.
///
/// Not finished: the panel carries only what CInetResearch::DoInetSearch primes it with
/// (the symbol and the extra search text) and its owner. Its step logic, service list and
/// enable rules are not written yet; a host that shows it now gets no behaviour from it.
#pragma once

#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

class CInetResearch;

/// The "Internet Research" panel's logic; CInetResearch owns and shows it.
class QVNRT_API CInetSearchInfoDlg : public qvnrt::Panel {
public:
    enum { IDD = 5274 };

    explicit CInetSearchInfoDlg(CInetResearch* research, CWnd* parent = nullptr);
    ~CInetSearchInfoDlg() override;

    /// "Internet Research"
    const char* Title() const override;

    CString m_symbolText;
    CString m_extraText;
    CInetResearch* m_pResearch;  ///< the owner; not owned
    CWnd* m_pParentWnd;          ///< opaque to the library; for the host's placement
};
