#include "platform/UiHost.h"

#include <cstdio>
#include <spawn.h>
#include <sys/wait.h>
#include <vector>

extern char** environ;

namespace qvnrt {
namespace {

// Answers without asking anyone: the library runs without a user in front of it.
class HeadlessHost final : public UiHost {
public:
    int MessageBox(const char* text, const char* caption, unsigned style, unsigned) override {
        std::fprintf(stderr, "%s: %s\n", caption ? caption : platform::kDefaultCaption,
                     text ? text : "");
        const unsigned buttons = style & MB_TYPEMASK;
        return (buttons == MB_YESNO || buttons == MB_YESNOCANCEL) ? IDNO : IDOK;
    }

    int RunModal(Panel&) override { return IDCANCEL; }
    void BeginWaitCursor() override {}
    void EndWaitCursor() override {}

    // xdg-open through posix_spawn, never a shell. The library may not wait (it would block
    // its loop) nor install a SIGCHLD handler (the signal belongs to the application), so
    // finished children are reaped at the next call; at most the latest lingers.
    bool OpenUrl(const char* url) override {
        ReapFinished();
        if (!url || !*url) return false;
        char program[] = "xdg-open";
        char* argv[] = {program, const_cast<char*>(url), nullptr};
        pid_t child = 0;
        if (::posix_spawnp(&child, program, nullptr, nullptr, argv, environ) != 0) return false;
        m_children.push_back(child);
        return true;
    }

private:
    void ReapFinished() {
        std::erase_if(m_children, [](pid_t child) {
            return ::waitpid(child, nullptr, WNOHANG) != 0;  // done, or not ours any more
        });
    }

    std::vector<pid_t> m_children;
};

HeadlessHost g_headless;
UiHost* g_host = &g_headless;

}  // namespace

Panel::~Panel() = default;
UiHost::~UiHost() = default;

UiHost* SetUiHost(UiHost* host) {
    UiHost* previous = g_host == &g_headless ? nullptr : g_host;
    g_host = host ? host : &g_headless;
    return previous;
}

UiHost& GetUiHost() { return *g_host; }

namespace platform {

UiHost& HeadlessUiHost() { return g_headless; }

int ShowMessageBox(const char* text, unsigned style, unsigned helpId, const char* caption) {
    return GetUiHost().MessageBox(text ? text : "", caption ? caption : kDefaultCaption, style,
                                  helpId);
}

}  // namespace platform
}  // namespace qvnrt
