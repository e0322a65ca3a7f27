// Views for panels on numbered controls (qvnrt/DialogView.h) that keep their state as a
// screen would show it, so tests can act as the user and read the result.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <qvnrt/DialogView.h>

namespace qvnrt::test {

template <class ViewBase>
class RecordingControls : public ViewBase {
public:
    void SetText(int control, const char* text) override { texts[control] = text; }
    bool GetText(int control, CString& text) override {
        text = texts[control].c_str();
        return readable;
    }
    void SetCheck(int control, bool checked) override { checks[control] = checked; }
    bool GetCheck(int control) override { return checks[control]; }
    void EnableControl(int control, bool on) override { enabled[control] = on; }
    void SetDefaultButton(int control) override { defaultButton = control; }
    void SetFocus(int control) override { focus = control; }
    void SetCaret(int control, int position) override { carets[control] = position; }
    void SetBitmap(int control, int bitmap) override { bitmaps[control] = bitmap; }

    std::map<int, std::string> texts;
    std::map<int, bool> checks;
    std::map<int, bool> enabled;
    std::map<int, int> carets;
    std::map<int, int> bitmaps;
    int defaultButton = 0;
    int focus = 0;
    bool readable = true;  // false: the host refuses to hand out the texts
};

class RecordingComboBox : public ComboBoxView {
public:
    void ResetContent() override {
        rows.clear();
        selected = -1;
    }
    int AddString(const char* text) override {
        rows.emplace_back(text);
        return static_cast<int>(rows.size()) - 1;
    }
    int FindStringExact(const char* text) override {
        for (size_t i = 0; i < rows.size(); ++i) {
            if (rows[i] == text) return static_cast<int>(i);
        }
        return -1;
    }
    void SetCurSel(int index) override { selected = index; }
    int GetCurSel() override { return selected; }
    CString GetLBText(int index) override { return rows.at(index).c_str(); }

    std::vector<std::string> rows;
    int selected = -1;
};

class RecordingList : public ListView {
public:
    struct Row {
        std::string first, second;
        bool marked = false;
    };

    void InsertColumn(int, const char* heading, const char*) override {
        headings.emplace_back(heading);
    }
    int GetItemCount() override { return static_cast<int>(rows.size()); }
    int InsertItem(int row, const char* text) override {
        rows.insert(rows.begin() + row, Row{text, ""});
        return row;
    }
    void SetItemText(int row, int column, const char* text) override {
        (column == 0 ? rows.at(row).first : rows.at(row).second) = text;
    }
    CString GetItemText(int row, int column) override {
        return (column == 0 ? rows.at(row).first : rows.at(row).second).c_str();
    }
    void DeleteItem(int row) override {
        rows.erase(rows.begin() + row);
        if (selected == row) selected = -1;
    }
    void EnsureVisible(int row) override { visible = row; }
    int GetSelectedItem() override { return selected; }
    void SetItemMarked(int row, bool on) override { rows.at(row).marked = on; }

    std::vector<std::string> Firsts() const {
        std::vector<std::string> out;
        for (const Row& row : rows) out.push_back(row.first);
        return out;
    }

    std::vector<std::string> headings;
    std::vector<Row> rows;
    int selected = -1;
    int visible = -1;
};

}  // namespace qvnrt::test
