// CSymbolAtAGlanceDlg: the "Symbol At A Glance" panel, one security's quote in full with a
// symbol box to change the security and the research links of CInetResearch.
//
// The panel is itself the subscriber: it is an RTSecurity that asks for a fixed list of
// fields, keeps the raw values as they arrive (ReqSecCallback) and turns them into texts
// when the batch ends (OnSecChanged). Values never delivered read "n/a".
//
// The panel is logic only. An application opens it with DisplaySymbolAtAGlanceDlg, which
// runs it through the UI host (qvnrt::UiHost::RunModal). A host that can show it recognises
// the class, builds a View and calls OnInitDialog with it; it then reports the user's
// actions through the On... calls below and keeps its main loop running, since quotes
// arrive through it. When RunModal returns the view is dropped and the subscription closed.
// Everything runs on the main loop's thread.
#pragma once

#include <cstdint>

#include <qvnrt/CInetResearch.h>
#include <qvnrt/RTSecurity.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

class QVNRT_API CSymbolAtAGlanceDlg : public qvnrt::Panel, public RTSecurity {
public:
    enum { IDD = 5222 };
    enum { IDB_REFRESH = 137, IDB_GOTO = 138 };           // bitmaps of those two buttons
    enum { IDI_ARROW_UP = 5293, IDI_ARROW_DOWN = 5292 };  // the tick arrows' icons
    static constexpr const char* kTitle = "Symbol At A Glance";
    static constexpr const char* kNoValue = "n/a";
    static constexpr const char* kDelayedMark = " (d)";
    static constexpr const char* kNoServices = "<No services available>";
    // Where an arrow's icon cannot be found, the arrow shows this letter.
    static constexpr const char* kUpArrowLetter = "U";
    static constexpr const char* kDownArrowLetter = "D";
    // The arrows sit in a box this wide at the left edge of the "Exchange:" label, in the
    // row of the "Symbol:" label.
    static constexpr int kArrowBoxWidth = 16;
    static constexpr int kSubscribedFieldCount = 24;

    // The texts that the panel shows, beside the symbol box.
    enum Text {
        kDescription,
        kExchange,
        kLast,
        kChange,
        kPercent,
        kBid,
        kAsk,
        kBidSize,
        kAskSize,
        kBidExchange,
        kAskExchange,
        kHigh,
        kLow,
        kPrevious,
        k52WeekHigh,
        k52WeekLow,
        kVolume,
        kTotalVolume,
        kEPS,
        kPERatio,
        kTime,
        kTextCount
    };
    enum Arrow { kUpArrow, kDownArrow };
    enum Button { kRefreshButton, kCloseButton, kHomePageButton, kGotoButton, kEditButton };

    // The label a host puts before a text ("Exchange:" for kExchange), and the label of the
    // symbol box.
    static const char* Label(Text text);
    static constexpr const char* kSymbolLabel = "Symbol:";
    // The caption of a button: "Visit corporate homepage...", "Goto...", "Edit...".
    static const char* Caption(Button button);

    // What a host supplies to show the panel. Every call is made on the loop's thread while
    // the panel is shown; none is made before OnInitDialog or after RunModal returns.
    class QVNRT_API View {
    public:
        virtual ~View();

        // The editable symbol box. GetSymbolText answers false when the box cannot be read
        // (a host's validation refused it); the panel then leaves its state alone.
        virtual void SetSymbolText(const char* text) = 0;
        virtual bool GetSymbolText(CString& text) = 0;
        virtual void SetText(Text which, const char* text) = 0;

        virtual bool IsArrowVisible(Arrow arrow) = 0;
        virtual void ShowArrow(Arrow arrow, bool visible) = 0;

        virtual void ShowButton(Button button, bool visible) = 0;
        virtual void EnableButton(Button button, bool enabled) = 0;
        // The button that Enter presses.
        virtual void SetDefaultButton(Button button) = 0;

        // The research service box, a drop-down list in the order of adding.
        virtual void ResetServices() = 0;
        virtual int AddService(const char* name) = 0;  // the new row's index
        // The row whose text equals `name` exactly; -1 when there is none.
        virtual int FindService(const char* name) = 0;
        virtual void SelectService(int index) = 0;
        // The selected row's text; empty when nothing is selected.
        virtual CString GetSelectedService() = 0;
        virtual void EnableServices(bool enabled) = 0;
    };

    // A null symbol gives an empty symbol box. The research object takes the symbol and no
    // extra text.
    explicit CSymbolAtAGlanceDlg(const char* symbol, CWnd* parent = nullptr);
    // Closes the subscription.
    ~CSymbolAtAGlanceDlg() override;

    const char* Title() const override { return kTitle; }
    CWnd* GetParent() const { return m_pParentWnd; }

    // Runs the panel through the UI host; IDCANCEL from a host that shows no panels.
    int DoModal();

    // ---- The security's side ----

    // Keeps the raw value of the field (see the .cpp for the table). Ignores the status and
    // the data type; does not call the base. Result 1.
    int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                       void* data) override;
    // Turns the raw values into texts and shows them.
    void OnSecChanged() override;

    // ---- The dialog's side, called by the host ----

    // Binds the view, fills the service box, hides the refresh button and makes the first
    // refresh (which subscribes). Result 1.
    virtual int OnInitDialog(View& view);
    // Close: nothing to save; the host ends the panel.
    virtual void OnOK();

    // The symbol box was edited: the refresh button shows, becomes the default, and is
    // enabled while the box is not empty.
    void OnSymbolChanged();
    // Hides the refresh button, makes Close the default, and subscribes to the symbol in the
    // box (every value reset first).
    void OnRefresh();
    void OnVisitHomePage();
    // The service box's selection changed: it becomes the last service chosen.
    void OnServiceChanged();
    void OnGoto();
    // Runs the service editor; on OK the service box is filled again.
    void OnEditServices();

protected:
    // save false: shows the symbol box and every text. save true: reads the symbol box
    // (a trailing " (d)" mark is not part of the symbol); false when it cannot be read.
    virtual bool DoDataExchange(View& view, bool save);

    void FillServiceBox();
    void Refresh();
    void ResetValues();
    void RebuildSymbolBox();
    void ShowTickArrow(Arrow shown, Arrow hidden);

public:
    CInetResearch m_research;
    View* m_pView;       // bound while the panel is shown, else null
    CWnd* m_pParentWnd;  // opaque to the library; for the host's placement
    // The panel's own window, the parent of the panels it opens; a host that has a window
    // handle for the panel puts it in m_hWnd.
    CWnd m_wndPanel;

    // Raw values, as delivered.
    CString m_strRawSymbol;
    int m_bDelayed;
    float m_fLast;
    float m_fPrevious;
    float m_fHigh;
    float m_fLow;
    float m_fBid;
    float m_fAsk;
    float m_f52WeekHigh;
    float m_f52WeekLow;
    float m_fEPS;
    float m_fPERatio;
    int32_t m_lTime;
    int32_t m_lBidSize;
    int32_t m_lAskSize;
    int32_t m_lVolume;
    int32_t m_lTotalVolume;
    uint8_t m_byExchange;  // 0xFF until field 8 arrives
    int m_nTickArrow;      // 0 none, 1 up or level, 2 down

    // Display texts.
    CString m_strSymbolBox;  // the raw symbol, then " (d)" while delayed
    CString m_texts[kTextCount];
};

// Shows the panel modally for `symbol` through the installed UI host. A null symbol does
// nothing. `owner` is handed to the host as the parent window. Result 0 always.
QVNRT_API int DisplaySymbolAtAGlanceDlg(HWND owner, const char* symbol);
