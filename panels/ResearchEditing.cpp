#include "panels/ResearchEditing.h"

namespace qvnrt::panels {

bool ExchangeTexts(DialogControls& view, bool save, int firstControl, CString& first,
                   int secondControl, CString& second) {
    if (!save) {
        view.SetText(firstControl, first);
        view.SetText(secondControl, second);
        return true;
    }
    CString firstText, secondText;
    if (!view.GetText(firstControl, firstText) || !view.GetText(secondControl, secondText)) {
        return false;
    }
    first = firstText;
    second = secondText;
    return true;
}

void FillList(ListView& list, CPrivateProfile& profile, const char* section) {
    CString key, value;
    for (POSITION position = profile.GetStartKeyPos(section); position;) {
        profile.GetNextKeyPos(section, position, key, value);
        AppendRow(list, key, value);
    }
}

int FindRowByFirstColumn(ListView& list, const CString& name) {
    const int count = list.GetItemCount();
    for (int row = 0; row < count; ++row) {
        if (list.GetItemText(row, 0) == name) return row;
    }
    return -1;
}

int AppendRow(ListView& list, const char* first, const char* second) {
    const int row = list.InsertItem(list.GetItemCount(), first);
    list.SetItemText(row, 1, second);
    return row;
}

}  // namespace qvnrt::panels
