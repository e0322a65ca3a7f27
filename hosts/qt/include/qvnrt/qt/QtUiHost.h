/// \file
/// qvnrt::QtUiHost: the library's user interface over Qt Widgets: message boxes, the wait
/// cursor, the browser (QDesktopServices) and a dialog for every panel the library has
/// (Symbol At A Glance, News Unavailable, Internet Research, Internet Symbol Search, Symbol
/// Home Pages).
///
///   qvnrt::QtUiHost ui(mainWindow);
///   qvnrt::SetUiHost(&ui);       // before the driver loads; SetUiHost(nullptr) before `ui` goes
#pragma once

#include <functional>
#include <vector>

#include <qvnrt/host.h>
#include <qvnrt/qt/export.h>

class QDialog;
class QWidget;

namespace qvnrt {

// Everything runs on the thread of the QApplication. Panels run modally with
// QDialog::exec(), so the library's timers and the driver keep running while one is shown
// (install a QtMainLoop as well). A panel the host does not know answers IDCANCEL.
class QVNRT_QT_API QtUiHost : public UiHost {
public:
    // `parent` (not owned, may be null) owns the boxes and panels opened while no panel is
    // shown; those opened from a panel belong to the innermost panel.
    explicit QtUiHost(QWidget* parent = nullptr);
    ~QtUiHost() override;

    // MB_OK, MB_OKCANCEL, MB_YESNO, MB_YESNOCANCEL with their icons; the answer is the ID* of
    // the button pressed. Closing a box without a button answers IDCANCEL where the box has
    // Cancel, else IDNO for yes/no and IDOK for OK.
    int MessageBox(const char* text, const char* caption, unsigned style,
                   unsigned helpId) override;
    // IDOK when the panel ended through its OK or Close path, IDCANCEL otherwise.
    int RunModal(Panel& panel) override;
    // Nested: the cursor is restored by the last End.
    void BeginWaitCursor() override;
    void EndWaitCursor() override;
    bool OpenUrl(const char* url) override;

    // Called with each panel's dialog once its controls are filled and it is on screen,
    // before the user acts: for applications that place or decorate panels, and for tests.
    void SetPanelShownHook(std::function<void(QDialog&, Panel&)> hook);

private:
    QWidget* Owner() const;

    QWidget* m_parent;
    std::vector<QDialog*> m_open;  // the panels being shown, innermost last
    int m_waitDepth;
    std::function<void(QDialog&, Panel&)> m_shownHook;
};

}  // namespace qvnrt
