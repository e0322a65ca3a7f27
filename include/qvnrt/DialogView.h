// The controls of a panel as a host shows them, for the panels whose logic works on
// numbered controls (the research dialogs). A host implements these over its toolkit's
// widgets; every call is made on the main loop's thread while the panel is shown.
#pragma once

#include <qvnrt/compat/CString.h>
#include <qvnrt/export.h>

namespace qvnrt {

// Texts, check boxes, enabled states, pictures and the default button, by control number.
class QVNRT_API DialogControls {
public:
    virtual ~DialogControls();
    virtual void SetText(int control, const char* text) = 0;
    // False when the control cannot be read (the host's validation refused its text); the
    // panel then stops what it was doing.
    virtual bool GetText(int control, CString& text) = 0;
    virtual void SetCheck(int control, bool checked) = 0;
    virtual bool GetCheck(int control) = 0;
    virtual void EnableControl(int control, bool enabled) = 0;
    // The button that Enter presses; 1 is the panel's OK button.
    virtual void SetDefaultButton(int control) = 0;
    virtual void SetFocus(int control) = 0;
    // Puts the caret of an edit control at a character position.
    virtual void SetCaret(int control, int position) = 0;
    // Shows one of the panel's bitmaps (the host's artwork) in a picture control.
    virtual void SetBitmap(int control, int bitmap) = 0;
};

// A drop-down list of texts, in the order of adding.
class QVNRT_API ComboBoxView {
public:
    virtual ~ComboBoxView();
    virtual void ResetContent() = 0;
    virtual int AddString(const char* text) = 0;  // the new row's index
    // The row whose text equals `text` exactly; -1 when there is none.
    virtual int FindStringExact(const char* text) = 0;
    virtual void SetCurSel(int index) = 0;
    virtual int GetCurSel() = 0;  // -1 when nothing is selected
    virtual CString GetLBText(int index) = 0;
};

// A list of rows of two columns. Rows keep the order of inserting; the user selects at
// most one. A row can also be marked (shown as a drop target would be), which leaves the
// selection as it is.
class QVNRT_API ListView {
public:
    virtual ~ListView();
    // Column headings; each column is as wide as its sample text would be.
    virtual void InsertColumn(int column, const char* heading, const char* widthSample) = 0;
    virtual int GetItemCount() = 0;
    // Inserts a row before `row` (GetItemCount() appends) with its first column's text;
    // returns its index.
    virtual int InsertItem(int row, const char* text) = 0;
    virtual void SetItemText(int row, int column, const char* text) = 0;
    virtual CString GetItemText(int row, int column) = 0;
    virtual void DeleteItem(int row) = 0;
    virtual void EnsureVisible(int row) = 0;
    virtual int GetSelectedItem() = 0;  // -1 when no row is selected
    virtual void SetItemMarked(int row, bool marked) = 0;
};

}  // namespace qvnrt
