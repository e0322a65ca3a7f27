#include "news/NewsState.h"

#include <utility>

#include "platform/UiHost.h"

namespace qvnrt::news {

UnavailablePanel NewsState::setUnavailablePanel(UnavailablePanel show) {
    return std::exchange(m_showUnavailable, show);
}

void NewsState::showUnavailable(const CString& message, const CString& failedSymbols) const {
    if (m_showUnavailable) {
        m_showUnavailable(message, failedSymbols);
        return;
    }
    CString text = message;
    text += "\n\nUnavailable symbols: ";
    text += failedSymbols;
    platform::ShowMessageBox(text, MB_OK | MB_ICONINFORMATION);
}

NewsState& State() {
    static NewsState state;
    return state;
}

}  // namespace qvnrt::news
