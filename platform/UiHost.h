// The library's side of the UI host (see qvnrt/host.h).
#pragma once

#include <qvnrt/host.h>

namespace qvnrt::platform {

// The caption of the library's message boxes when the caller gives none.
inline constexpr const char* kDefaultCaption = "QvnRT";

// Shows a message through the installed host; a null caption gives kDefaultCaption.
int ShowMessageBox(const char* text, unsigned style, unsigned helpId = 0,
                   const char* caption = nullptr);

// The headless default host; exposed so that other hosts can fall back on it.
UiHost& HeadlessUiHost();

// Wait cursor for the length of a scope.
class WaitCursor {
public:
    WaitCursor() { GetUiHost().BeginWaitCursor(); }
    ~WaitCursor() { GetUiHost().EndWaitCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

}  // namespace qvnrt::platform
