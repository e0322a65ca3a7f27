// The pieces of a dialog whose logic works on numbered controls: a QDialog that keeps its
// widgets by control number and answers qvnrt::DialogControls over them, the drop-down
// list (ComboBoxView over QComboBox) and the two-column list (ListView over QTreeWidget).
#pragma once

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include <map>

#include <qvnrt/DialogView.h>

namespace qvnrt::qt {

// Control 1 is the OK (or Close) button and 2 Cancel, as in every dialog template.
inline constexpr int kOkControl = 1;
inline constexpr int kCancelControl = 2;

// The artwork of a numbered bitmap, from the style's standard icons.
QPixmap BitmapPixmap(QWidget& widget, int bitmap);

template <class PanelView>
class NumberedDialog : public QDialog, public PanelView {
public:
    explicit NumberedDialog(QWidget* parent) : QDialog(parent) {}

    void SetText(int control, const char* text) override {
        const QString value = QString::fromUtf8(text);
        QWidget* widget = Control(control);
        if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
            edit->setText(value);
        } else if (auto* label = qobject_cast<QLabel*>(widget)) {
            label->setText(value);
        } else if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            button->setText(value);
        }
    }
    bool GetText(int control, CString& text) override {
        QWidget* widget = Control(control);
        if (auto* edit = qobject_cast<QLineEdit*>(widget)) {
            text = edit->text().toUtf8().constData();
            return true;
        }
        if (auto* label = qobject_cast<QLabel*>(widget)) {
            text = label->text().toUtf8().constData();
            return true;
        }
        return false;
    }
    void SetCheck(int control, bool checked) override {
        if (auto* box = qobject_cast<QCheckBox*>(Control(control))) box->setChecked(checked);
    }
    bool GetCheck(int control) override {
        auto* box = qobject_cast<QCheckBox*>(Control(control));
        return box && box->isChecked();
    }
    void EnableControl(int control, bool enabled) override {
        if (QWidget* widget = Control(control)) widget->setEnabled(enabled);
    }
    void SetDefaultButton(int control) override {
        for (auto& [number, widget] : m_controls) {
            if (auto* button = qobject_cast<QPushButton*>(widget)) button->setDefault(number == control);
        }
    }
    void SetFocus(int control) override {
        if (QWidget* widget = Control(control)) widget->setFocus();
    }
    void SetCaret(int control, int position) override {
        if (auto* edit = qobject_cast<QLineEdit*>(Control(control))) edit->setCursorPosition(position);
    }
    void SetBitmap(int control, int bitmap) override {
        if (auto* label = qobject_cast<QLabel*>(Control(control))) {
            label->setPixmap(BitmapPixmap(*this, bitmap));
            label->setProperty("bitmap", bitmap);
        }
    }

protected:
    // Names the widget "control<N>" and keeps it under its number.
    template <class Widget>
    Widget* Add(int control, Widget* widget) {
        widget->setObjectName(QStringLiteral("control%1").arg(control));
        m_controls[control] = widget;
        return widget;
    }
    QPushButton* AddButton(int control, const char* caption) {
        auto* button = Add(control, new QPushButton(QString::fromUtf8(caption), this));
        button->setAutoDefault(false);
        return button;
    }
    QWidget* Control(int control) const {
        const auto found = m_controls.find(control);
        return found == m_controls.end() ? nullptr : found->second;
    }

private:
    std::map<int, QWidget*> m_controls;
};

class ComboBox : public qvnrt::ComboBoxView {
public:
    explicit ComboBox(QComboBox* box) : m_box(box) {}
    void ResetContent() override;
    int AddString(const char* text) override;
    int FindStringExact(const char* text) override;
    void SetCurSel(int index) override;
    int GetCurSel() override;
    CString GetLBText(int index) override;

private:
    QComboBox* m_box;
};

// A marked row shows in the highlight colour without being selected, as a drop target.
class TwoColumnList : public qvnrt::ListView {
public:
    explicit TwoColumnList(QTreeWidget* tree);
    void InsertColumn(int column, const char* heading, const char* widthSample) override;
    int GetItemCount() override;
    int InsertItem(int row, const char* text) override;
    void SetItemText(int row, int column, const char* text) override;
    CString GetItemText(int row, int column) override;
    void DeleteItem(int row) override;
    void EnsureVisible(int row) override;
    int GetSelectedItem() override;
    void SetItemMarked(int row, bool marked) override;

private:
    QTreeWidgetItem* Row(int row) const;
    QTreeWidget* m_tree;
};

}  // namespace qvnrt::qt
