/// \file
/// CInetSymbolSearchDlg: the "Internet Symbol Search" panel, the editor of the research
/// services kept in "inetres.txt" (section "Internet Background Page": name = URL template).
///
/// Each Add or Remove changes the panel's own copy of the file at once; Close writes that
/// copy, so changes are kept even if the panel then fails to close. The panel is logic
/// only: a host recognises the class, builds a View, calls OnInitDialog with it, and reports
/// the user's actions through the On... calls. CInetResearch::EditInetSearchURLs opens it.
#pragma once

#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/DialogView.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

class QVNRT_API CInetSymbolSearchDlg : public qvnrt::Panel {
public:
    enum { IDD = 5224 };
    enum {
        IDC_NAME_TEXT = 8020,
        IDC_URL_TEXT = 5152,
        IDC_SERVICE_LIST = 8021,
        IDC_ADD_BUTTON = 8025,  // adds a service, or updates the one of that name
        IDC_REMOVE_BUTTON = 8017,
    };
    static constexpr const char* kTitle = "Internet Symbol Search";
    static constexpr const char* kNameColumn = "Service";
    static constexpr const char* kNameColumnWidth = "WWWWWWWWWWW";
    static constexpr const char* kUrlColumn = "Search URL";
    static constexpr const char* kUrlColumnWidth = "WWWWWWWWWWWWWWWWWWWWWWWW";
    // The note under the URL box, and two examples of templates.
    static constexpr const char* kNote =
        "You may include <SYMBOL> and/or <EXTRA> in the search URL as required by the service "
        "you are setting up to dynamically search on the symbol or for other information.";
    static constexpr const char* kSymbolExample = "http://www.example.com/profiles/<SYMBOL>.html";
    // The first tag lacks its closing bracket on purpose: the example shows that only
    // whole tags are filled.
    static constexpr const char* kQueryExample =
        "http://search.example.com/cgi-bin/query?%22<SYMBOL%22+or+%22<EXTRA>%22";

    // What a host supplies: the numbered controls and the list (IDC_SERVICE_LIST).
    class QVNRT_API View : public qvnrt::DialogControls {
    public:
        virtual qvnrt::ListView& ServiceList() = 0;
    };

    // Reads "inetres.txt" from the host directory.
    explicit CInetSymbolSearchDlg(CWnd* parent = nullptr);
    ~CInetSymbolSearchDlg() override;

    const char* Title() const override;
    int DoModal();

    // Fills the list; a name set before showing marks its row. Result 1.
    virtual int OnInitDialog(View& view);
    // Add (or update the service of that name).
    void OnAdd();
    void OnRemove();
    // The user selected a row: its two columns go into the texts.
    void OnRowSelected();
    // Either text was edited.
    void OnTextChanged();
    // Close: writes the file, then reads the controls; true when the panel may end (IDOK).
    virtual bool OnOK();

protected:
    virtual bool DoDataExchange(View& view, bool save);
    void UpdateButtons();
    int FindRow(const CString& name);
    void ClearSelectedMark();

public:
    CString m_nameText;
    CString m_urlText;
    CPrivateProfile m_profile;
    CWnd* m_pParentWnd;  // opaque to the library; for the host's placement
    View* m_pView;       // bound while the panel is shown, else null
};
