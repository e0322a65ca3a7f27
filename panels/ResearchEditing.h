// What the two research editors share: their messages, the two-text exchange, and the
// list of name and address rows.
#pragma once

#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/DialogView.h>
#include <qvnrt/compat/CString.h>

namespace qvnrt::panels {

// "You must enter a symbol name and home page address before  a new item can be added."
inline constexpr unsigned kMissingTextString = 124;
// "Nothing was selected in the list"
inline constexpr unsigned kNothingSelectedString = 125;

// save true: reads both texts, false when either cannot be read. save false: shows them.
bool ExchangeTexts(DialogControls& view, bool save, int firstControl, CString& first,
                   int secondControl, CString& second);

// One row per key of the section, in the profile's order.
void FillList(ListView& list, CPrivateProfile& profile, const char* section);

// The row whose first column is exactly `name`; -1 when there is none.
int FindRowByFirstColumn(ListView& list, const CString& name);

// Appends a row of two columns; returns its index.
int AppendRow(ListView& list, const char* first, const char* second);

}  // namespace qvnrt::panels
