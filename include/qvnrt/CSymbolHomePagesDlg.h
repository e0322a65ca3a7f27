/// \file
/// CSymbolHomePagesDlg: the "Symbol Home Pages" panel, the editor of the symbols' home pages
/// kept in "HomePages.txt" (section "HomePages": symbol = address).
///
/// Add, Update and Remove change only the list; OK rewrites the whole section from the list,
/// in list order, and Cancel leaves the file alone. The panel is logic only: a host
/// recognises the class, builds a View, calls OnInitDialog with it, and reports the user's
/// actions through the On... calls. CInetResearch opens it on a symbol.
#pragma once

#include <qvnrt/DialogView.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

class QVNRT_API CSymbolHomePagesDlg : public qvnrt::Panel {
public:
    enum { IDD = 5223 };
    enum {
        IDC_SYMBOL_TEXT = 8020,
        IDC_URL_TEXT = 5152,
        IDC_PAGE_LIST = 8024,
        IDC_ADD_BUTTON = 8025,
        IDC_UPDATE_BUTTON = 8026,
        IDC_REMOVE_BUTTON = 8017,
    };
    static constexpr const char* kTitle = "Symbol Home Pages";
    static constexpr const char* kSymbolColumn = "Symbol Name";
    static constexpr const char* kSymbolColumnWidth = "WWWWWW";
    static constexpr const char* kPageColumn = "Home Page";
    static constexpr const char* kPageColumnWidth = "WWWWWWWWWWWWWWWWWWW";
    // The address form offered for a new page: the user types the company's name between
    // the two pieces. The symbol is not put into it.
    static constexpr const char* kTemplatePrefix = "http://www.";
    static constexpr const char* kTemplateSuffix = ".com/";

    // What a host supplies: the numbered controls and the list (IDC_PAGE_LIST).
    class QVNRT_API View : public qvnrt::DialogControls {
    public:
        virtual qvnrt::ListView& PageList() = 0;
    };

    // With a symbol, the symbol text is set and the address is the template; a null or
    // empty symbol leaves both empty.
    explicit CSymbolHomePagesDlg(const char* symbol, CWnd* parent = nullptr);
    ~CSymbolHomePagesDlg() override;

    const char* Title() const override;
    int DoModal();

    // Fills the list from the file and marks the row of the symbol. Result 1.
    virtual int OnInitDialog(View& view);
    void OnRowSelected();
    void OnSymbolChanged();
    void OnUrlChanged();
    // The address box gained the focus: the caret goes after the template's prefix.
    void OnUrlFocus();
    void OnAdd();
    void OnUpdate();
    void OnRemove();
    // Rewrites the section from the list; true: the panel ends with IDOK.
    virtual bool OnOK();

protected:
    virtual bool DoDataExchange(View& view, bool save);
    void TextChanged(const CString& keyText, bool offerTemplate);
    // Add, Update and Remove off; with okIsDefault, Enter presses OK.
    void DisableButtons(bool okIsDefault);
    void ClearTexts();
    void ClearSelectedMark();
    CString Template() const;

public:
    CString m_symbolText;
    CString m_urlText;
    CWnd* m_pParentWnd;  // opaque to the library; for the host's placement
    View* m_pView;       // bound while the panel is shown, else null
};
