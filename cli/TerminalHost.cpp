#include "cli/TerminalHost.h"

#include <cstdio>

namespace qvnrt::cli {

int TerminalHost::MessageBox(const char* text, const char*, unsigned style, unsigned) {
    std::fprintf(stderr, "qvnrt-cli: %s\n", text ? text : "");
    const unsigned buttons = style & MB_TYPEMASK;
    return (buttons == MB_YESNO || buttons == MB_YESNOCANCEL) ? IDNO : IDOK;
}

int TerminalHost::RunModal(Panel& panel) {
    if (auto* glance = dynamic_cast<CSymbolAtAGlanceDlg*>(&panel); glance && showGlance) {
        return showGlance(*glance);
    }
    std::fprintf(stderr, "qvnrt-cli: the panel \"%s\" needs a window\n", panel.Title());
    return IDCANCEL;
}

bool TerminalHost::OpenUrl(const char* url) {
    std::printf("%s\n", url ? url : "");
    return false;
}

}  // namespace qvnrt::cli
