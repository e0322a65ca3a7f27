/// \file
/// CInetSearchInfoDlg: the "Internet Research" panel, which walks the user through a search
/// for a symbol. Step one picks what to search on (the symbol, an extra text such as a
/// company name, or both); step two picks a service that searches on that; then "Begin
/// Internet &research..." opens the service's page.
///
/// CInetResearch::DoInetSearch opens it, primed with the research object's symbol and extra
/// text. The panel is logic only: a host that can show it recognises the class, builds a
/// View, calls OnInitDialog with it, and reports the user's actions through the On... calls.
#pragma once

#include <qvnrt/DialogView.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

class CInetResearch;

class QVNRT_API CInetSearchInfoDlg : public qvnrt::Panel {
public:
    enum { IDD = 5274 };
    // Controls.
    enum {
        IDC_STEP_TWO_LABEL = 1011,
        IDC_SYMBOL_CHECK = 1012,
        IDC_EXTRA_CHECK = 1013,
        IDC_EXTRA_TEXT = 1014,
        IDC_BOTH_CHECK = 1015,
        IDC_SYMBOL_TEXT = 5018,
        IDC_SERVICE_BOX = 5158,
        // Numbered by this library: a host needs them, the original numbers are not known.
        IDC_HOME_PAGE_BUTTON = 5275,
        IDC_ADD_EDIT_BUTTON = 5276,
        IDC_BEGIN_BUTTON = 5277,
        IDC_CLOSING_NOTE = 5278,
        IDC_STEP_PICTURE = 5279,  // shows IDB_STEP_TWO_OPEN or IDB_STEP_TWO_CLOSED
        IDC_GO_PICTURE = 5280,    // shows IDB_READY or IDB_NOT_READY
    };
    // Bitmaps, the host's artwork.
    enum {
        IDB_STEP_TWO_OPEN = 133,
        IDB_READY = 134,
        IDB_NOT_READY = 135,
        IDB_STEP_TWO_CLOSED = 136
    };
    static constexpr const char* kTitle = "Internet Research";
    static constexpr const char* kBothCheckText =
        "Only list services that search on both of the above criteria.";
    static constexpr const char* kAddEditButton = "Add / Edit...";
    static constexpr const char* kBeginButton = "Begin Internet &research...";
    static constexpr const char* kNoServices = "<No services available>";

    // What a host supplies: the numbered controls and the service box (IDC_SERVICE_BOX).
    class QVNRT_API View : public qvnrt::DialogControls {
    public:
        virtual qvnrt::ComboBoxView& ServiceBox() = 0;
    };

    explicit CInetSearchInfoDlg(CInetResearch* research, CWnd* parent = nullptr);
    ~CInetSearchInfoDlg() override;

    const char* Title() const override;
    int DoModal();

    // Sets the checks from the texts it was primed with and opens step two when either is
    // on. Result 1.
    virtual int OnInitDialog(View& view);
    // Any of the three check boxes was clicked.
    void OnCheckClicked();
    // The symbol or extra text was edited: the go state follows.
    void OnTextChanged();
    // The service box's selection changed.
    void OnServiceChanged();
    void OnBegin();
    void OnVisitHomePage();
    void OnAddEdit();

protected:
    // save true reads the controls (false when they cannot be read); false shows the data.
    virtual bool DoDataExchange(View& view, bool save);
    void SetStepTwo(bool open);
    void FillServiceBox();
    void UpdateGoState();
    bool StepTwoOpen() const { return m_symbolCheck || m_extraCheck; }

public:
    CString m_serviceText;
    CString m_extraText;
    int m_extraCheck;
    int m_symbolCheck;
    CString m_symbolText;
    int m_bothCheck;
    CInetResearch* m_pResearch;  // the owner; not owned
    CWnd* m_pParentWnd;          // opaque to the library; for the host's placement
    View* m_pView;               // bound while the panel is shown, else null
    CWnd m_wndPanel;             // the panel's own window, parent of what it opens
};
