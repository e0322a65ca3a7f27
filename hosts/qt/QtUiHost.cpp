#include <qvnrt/qt/QtUiHost.h>

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QTimer>
#include <QUrl>

#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CNewsUnavailableDlg.h>
#include <qvnrt/CSymbolAtAGlanceDlg.h>
#include <qvnrt/CSymbolHomePagesDlg.h>

#include "PanelDialogs.h"

namespace qvnrt {

namespace {

QMessageBox::StandardButtons ButtonsOf(unsigned style) {
    switch (style & MB_TYPEMASK) {
        case MB_OKCANCEL:
            return QMessageBox::Ok | QMessageBox::Cancel;
        case MB_YESNOCANCEL:
            return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
        case MB_YESNO:
            return QMessageBox::Yes | QMessageBox::No;
        default:
            return QMessageBox::Ok;
    }
}

QMessageBox::Icon IconOf(unsigned style) {
    switch (style & MB_ICONMASK) {
        case MB_ICONERROR:
            return QMessageBox::Critical;
        case MB_ICONQUESTION:
            return QMessageBox::Question;
        case MB_ICONWARNING:
            return QMessageBox::Warning;
        case MB_ICONINFORMATION:
            return QMessageBox::Information;
        default:
            return QMessageBox::NoIcon;
    }
}

int AnswerOf(QMessageBox::StandardButton button, unsigned style) {
    switch (button) {
        case QMessageBox::Ok:
            return IDOK;
        case QMessageBox::Yes:
            return IDYES;
        case QMessageBox::No:
            return IDNO;
        case QMessageBox::Cancel:
            return IDCANCEL;
        default:
            break;
    }
    // Closed without a button.
    switch (style & MB_TYPEMASK) {
        case MB_OKCANCEL:
        case MB_YESNOCANCEL:
            return IDCANCEL;
        case MB_YESNO:
            return IDNO;
        default:
            return IDOK;
    }
}

QString Text(const char* text) {
    return QString::fromUtf8(text ? text : "");
}

std::unique_ptr<QDialog> MakeDialog(Panel& panel, QWidget* parent) {
    if (auto* glance = dynamic_cast<CSymbolAtAGlanceDlg*>(&panel)) {
        return qt::MakeGlanceDialog(*glance, parent);
    }
    if (auto* news = dynamic_cast<CNewsUnavailableDlg*>(&panel)) {
        return qt::MakeNewsUnavailableDialog(*news, parent);
    }
    if (auto* info = dynamic_cast<CInetSearchInfoDlg*>(&panel)) {
        return qt::MakeSearchInfoDialog(*info, parent);
    }
    if (auto* search = dynamic_cast<CInetSymbolSearchDlg*>(&panel)) {
        return qt::MakeSymbolSearchDialog(*search, parent);
    }
    if (auto* pages = dynamic_cast<CSymbolHomePagesDlg*>(&panel)) {
        return qt::MakeHomePagesDialog(*pages, parent);
    }
    return nullptr;
}

}  // namespace

QtUiHost::QtUiHost(QWidget* parent) : m_parent(parent), m_waitDepth(0) {}

QtUiHost::~QtUiHost() {
    while (m_waitDepth > 0) EndWaitCursor();
}

int QtUiHost::MessageBox(const char* text, const char* caption, unsigned style, unsigned) {
    QMessageBox box(IconOf(style), Text(caption), Text(text), ButtonsOf(style), Owner());
    box.exec();
    return AnswerOf(box.standardButton(box.clickedButton()), style);
}

int QtUiHost::RunModal(Panel& panel) {
    std::unique_ptr<QDialog> dialog = MakeDialog(panel, Owner());
    if (!dialog) return IDCANCEL;
    m_open.push_back(dialog.get());
    struct Closed {
        std::vector<QDialog*>& open;
        ~Closed() { open.pop_back(); }
    } closed{m_open};
    dialog->setWindowTitle(Text(panel.Title()));
    if (m_shownHook) {
        // Queued: it runs once exec() has shown the dialog.
        QTimer::singleShot(0, dialog.get(), [this, &panel, raw = dialog.get()] {
            m_shownHook(*raw, panel);
        });
    }
    return dialog->exec() == QDialog::Accepted ? IDOK : IDCANCEL;
}

QWidget* QtUiHost::Owner() const {
    // A box or panel opened from a panel belongs to that panel, so it stays above it.
    return m_open.empty() ? m_parent : m_open.back();
}

void QtUiHost::BeginWaitCursor() {
    ++m_waitDepth;
    QApplication::setOverrideCursor(Qt::WaitCursor);
}

void QtUiHost::EndWaitCursor() {
    if (m_waitDepth == 0) return;
    --m_waitDepth;
    QApplication::restoreOverrideCursor();
}

bool QtUiHost::OpenUrl(const char* url) {
    const QUrl address(Text(url), QUrl::TolerantMode);
    return address.isValid() && !address.isEmpty() && QDesktopServices::openUrl(address);
}

void QtUiHost::SetPanelShownHook(std::function<void(QDialog&, Panel&)> hook) {
    m_shownHook = std::move(hook);
}

}  // namespace qvnrt
