/// \file
/// CNewsUnavailableDlg: the modal panel that a symbol news search shows when news could be
/// started for some of its symbols but not for all. It shows one message and the symbols
/// that failed.
///
/// The panel is logic only. It is shown through the UI host (qvnrt::UiHost::RunModal); a host
/// that can show it recognises the class, builds a View (a message label above a list of
/// symbols, the label "Unavailable symbols:" and a "Close" button) and calls OnInitDialog
/// with it before the panel appears.
#pragma once

#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>
#include <qvnrt/host.h>

/// The "News Unavailable" panel's logic: a message and the symbols that failed.
class QVNRT_API CNewsUnavailableDlg : public qvnrt::Panel {
public:
    enum { IDD = 226 };               ///< the panel's template
    enum { IDC_SYMBOL_LIST = 5125 };  ///< the list of symbols
    enum { IDC_MESSAGE = 240 };       ///< the message text
    static constexpr const char* kTitle = "News Unavailable";
    static constexpr const char* kListLabel = "Unavailable symbols:";
    static constexpr const char* kCloseButton = "Close";

    /// The list box of the panel, as a host draws it.
    class QVNRT_API ListBox {
    public:
        virtual ~ListBox();
        /// While redrawing is off, rows are added without repainting.
        virtual void SetRedraw(bool redraw) = 0;
        /// Adds a row; the list places it by its own sort style. Returns its index.
        virtual int AddString(const char* text) = 0;
    };

    /// What a host supplies to show the panel.
    class QVNRT_API View {
    public:
        virtual ~View();
        virtual ListBox& SymbolList() = 0;                  ///< control 5125
        virtual void SetMessageText(const char* text) = 0;  ///< control 240
    };

    /// The message starts empty; the caller sets m_strMessage and m_strSymbols before
    /// DoModal.
    explicit CNewsUnavailableDlg(CWnd* parent = nullptr);

    const char* Title() const override { return kTitle; }
    CWnd* GetParent() const { return m_pParentWnd; }

    /// Runs the panel through the UI host. The host's answer: IDOK or IDCANCEL; IDCANCEL
    /// from a host that shows no panels.
    int DoModal();

    /// Called by the host once the view stands: binds the controls, shows the message, and
    /// moves the symbols into the list. Result 1. The symbol text is consumed.
    virtual int OnInitDialog(View& view);

protected:
    /// Binds the list and puts the message text into its control.
    virtual void DoDataExchange(View& view);

public:
    CString m_strSymbols;   ///< symbols, each followed by one blank
    ListBox* m_symbolList;  ///< bound while the panel is shown, else null
    CString m_strMessage;
    CWnd* m_pParentWnd;  ///< opaque to the library; for the host's placement
};
