// The news layer's process-wide state: how a partly failed symbol search shows its failures.
//
// The "News Unavailable" panel lives in panels/, above this layer, so the news collection
// cannot name it. panels/ registers a function that shows it; until one is registered (a
// program built from the lower layers alone) the message goes to a plain message box.
#pragma once

#include <qvnrt/compat/CString.h>

namespace qvnrt::news {

// Shows the message and the symbols that failed (each followed by one blank), modally.
using UnavailablePanel = void (*)(const CString& message, const CString& failedSymbols);

class NewsState {
public:
    // Null restores the message-box fallback. Returns the previous function.
    UnavailablePanel setUnavailablePanel(UnavailablePanel show);
    void showUnavailable(const CString& message, const CString& failedSymbols) const;

private:
    UnavailablePanel m_showUnavailable = nullptr;
};

NewsState& State();

}  // namespace qvnrt::news
