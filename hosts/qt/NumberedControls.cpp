#include "NumberedControls.h"

#include <QHeaderView>
#include <QStyle>

#include <qvnrt/CInetSearchInfoDlg.h>

namespace qvnrt::qt {

QPixmap BitmapPixmap(QWidget& widget, int bitmap) {
    QStyle::StandardPixmap icon = QStyle::SP_CustomBase;
    switch (bitmap) {
        case CInetSearchInfoDlg::IDB_STEP_TWO_OPEN:
            icon = QStyle::SP_ArrowDown;
            break;
        case CInetSearchInfoDlg::IDB_STEP_TWO_CLOSED:
            icon = QStyle::SP_ArrowRight;
            break;
        case CInetSearchInfoDlg::IDB_READY:
            icon = QStyle::SP_DialogApplyButton;
            break;
        case CInetSearchInfoDlg::IDB_NOT_READY:
            icon = QStyle::SP_DialogCancelButton;
            break;
        default:
            return QPixmap();
    }
    return widget.style()->standardIcon(icon).pixmap(24);
}

void ComboBox::ResetContent() {
    const QSignalBlocker quiet(m_box);
    m_box->clear();
}

int ComboBox::AddString(const char* text) {
    const QSignalBlocker quiet(m_box);
    m_box->addItem(QString::fromUtf8(text));
    return m_box->count() - 1;
}

int ComboBox::FindStringExact(const char* text) {
    return m_box->findText(QString::fromUtf8(text), Qt::MatchExactly | Qt::MatchCaseSensitive);
}

void ComboBox::SetCurSel(int index) {
    const QSignalBlocker quiet(m_box);  // the logic's choice, not the user's
    m_box->setCurrentIndex(index);
}

int ComboBox::GetCurSel() {
    return m_box->currentIndex();
}

CString ComboBox::GetLBText(int index) {
    return CString(m_box->itemText(index).toUtf8().constData());
}

TwoColumnList::TwoColumnList(QTreeWidget* tree) : m_tree(tree) {
    m_tree->setRootIsDecorated(false);
    m_tree->setSelectionMode(QAbstractItemView::SingleSelection);
    m_tree->setColumnCount(2);
}

void TwoColumnList::InsertColumn(int column, const char* heading, const char* widthSample) {
    QTreeWidgetItem* header = m_tree->headerItem();
    header->setText(column, QString::fromUtf8(heading));
    m_tree->setColumnWidth(column, m_tree->fontMetrics().horizontalAdvance(QString::fromUtf8(widthSample)));
}

int TwoColumnList::GetItemCount() {
    return m_tree->topLevelItemCount();
}

int TwoColumnList::InsertItem(int row, const char* text) {
    const QSignalBlocker quiet(m_tree);
    const int at = std::clamp(row, 0, GetItemCount());
    auto* item = new QTreeWidgetItem(QStringList{QString::fromUtf8(text)});
    m_tree->insertTopLevelItem(at, item);
    return at;
}

void TwoColumnList::SetItemText(int row, int column, const char* text) {
    if (QTreeWidgetItem* item = Row(row)) item->setText(column, QString::fromUtf8(text));
}

CString TwoColumnList::GetItemText(int row, int column) {
    QTreeWidgetItem* item = Row(row);
    return item ? CString(item->text(column).toUtf8().constData()) : CString();
}

void TwoColumnList::DeleteItem(int row) {
    const QSignalBlocker quiet(m_tree);
    delete Row(row);
}

void TwoColumnList::EnsureVisible(int row) {
    if (QTreeWidgetItem* item = Row(row)) m_tree->scrollToItem(item);
}

int TwoColumnList::GetSelectedItem() {
    const QList<QTreeWidgetItem*> selected = m_tree->selectedItems();
    return selected.isEmpty() ? -1 : m_tree->indexOfTopLevelItem(selected.front());
}

void TwoColumnList::SetItemMarked(int row, bool marked) {
    QTreeWidgetItem* item = Row(row);
    if (!item) return;
    const QBrush brush = marked ? m_tree->palette().highlight() : QBrush();
    const QBrush text = marked ? m_tree->palette().highlightedText() : QBrush();
    for (int column = 0; column < m_tree->columnCount(); ++column) {
        item->setBackground(column, brush);
        item->setForeground(column, text);
    }
    item->setData(0, Qt::UserRole, marked);
}

QTreeWidgetItem* TwoColumnList::Row(int row) const {
    return row >= 0 && row < m_tree->topLevelItemCount() ? m_tree->topLevelItem(row) : nullptr;
}

}  // namespace qvnrt::qt
