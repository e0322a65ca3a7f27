// The News Unavailable dialog: the message, "Unavailable symbols:" above a sorted list of
// the symbols, and Close.
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <qvnrt/CNewsUnavailableDlg.h>

#include "PanelDialogs.h"

namespace qvnrt::qt {

namespace {

class NewsUnavailableDialog : public QDialog,
                              public CNewsUnavailableDlg::View,
                              public CNewsUnavailableDlg::ListBox {
public:
    NewsUnavailableDialog(CNewsUnavailableDlg& panel, QWidget* parent) : QDialog(parent) {
        m_message = new QLabel(this);
        m_message->setObjectName(QStringLiteral("control%1").arg(CNewsUnavailableDlg::IDC_MESSAGE));
        m_message->setWordWrap(true);
        m_list = new QListWidget(this);
        m_list->setObjectName("list");
        // A dialog's list box sorts unless told otherwise; this one is not told.
        m_list->setSortingEnabled(true);
        auto* buttons = new QDialogButtonBox(this);
        buttons->addButton(QString::fromUtf8(CNewsUnavailableDlg::kCloseButton),
                           QDialogButtonBox::AcceptRole);
        connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

        auto* layout = new QVBoxLayout(this);
        layout->addWidget(m_message);
        layout->addWidget(new QLabel(QString::fromUtf8(CNewsUnavailableDlg::kListLabel), this));
        layout->addWidget(m_list, 1);
        layout->addWidget(buttons);
        panel.OnInitDialog(*this);
    }

    ListBox& SymbolList() override { return *this; }
    void SetMessageText(const char* text) override { m_message->setText(QString::fromUtf8(text)); }
    void SetRedraw(bool redraw) override { m_list->setUpdatesEnabled(redraw); }
    int AddString(const char* text) override {
        auto* item = new QListWidgetItem(QString::fromUtf8(text));
        m_list->addItem(item);
        return m_list->row(item);
    }

private:
    QLabel* m_message;
    QListWidget* m_list;
};

}  // namespace

std::unique_ptr<QDialog> MakeNewsUnavailableDialog(CNewsUnavailableDlg& panel, QWidget* parent) {
    return std::make_unique<NewsUnavailableDialog>(panel, parent);
}

}  // namespace qvnrt::qt
