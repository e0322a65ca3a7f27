// The dialogs of the library's panels: each builds its widgets after the controls the
// panel's logic names, binds itself as the panel's view, calls OnInitDialog and routes the
// user's actions to the panel. Widgets carry object names ("text<N>", "control<N>", "list")
// so that tests and style sheets can find them.
#pragma once

#include <QDialog>

#include <memory>

class CSymbolAtAGlanceDlg;
class CNewsUnavailableDlg;
class CInetSearchInfoDlg;
class CInetSymbolSearchDlg;
class CSymbolHomePagesDlg;

namespace qvnrt::qt {

std::unique_ptr<QDialog> MakeGlanceDialog(CSymbolAtAGlanceDlg& panel, QWidget* parent);
std::unique_ptr<QDialog> MakeNewsUnavailableDialog(CNewsUnavailableDlg& panel, QWidget* parent);
std::unique_ptr<QDialog> MakeSearchInfoDialog(CInetSearchInfoDlg& panel, QWidget* parent);
std::unique_ptr<QDialog> MakeSymbolSearchDialog(CInetSymbolSearchDlg& panel, QWidget* parent);
std::unique_ptr<QDialog> MakeHomePagesDialog(CSymbolHomePagesDlg& panel, QWidget* parent);

}  // namespace qvnrt::qt
