#include <new>

#include <qvnrt/host.h>

namespace qvnrt {
namespace {

// The library's own loop is never destroyed: objects torn down at exit or at unload may
// still remove their timers and watches from it, in whatever order their destructors run.
// It holds no descriptor once they have.
PollLoop& DefaultLoop() {
    alignas(PollLoop) static unsigned char storage[sizeof(PollLoop)];
    static PollLoop* const loop = new (storage) PollLoop;
    return *loop;
}

MainLoop* g_installed = nullptr;  // null: the default loop

}  // namespace

// A loop destroyed while installed takes itself out, so GetMainLoop never hands out a loop
// that is gone.
MainLoop::~MainLoop() {
    if (g_installed == this) g_installed = nullptr;
}

MainLoop* SetMainLoop(MainLoop* loop) {
    MainLoop* previous = g_installed;
    g_installed = (loop == &DefaultLoop()) ? nullptr : loop;
    return previous;
}

MainLoop& GetMainLoop() { return g_installed ? *g_installed : DefaultLoop(); }

}  // namespace qvnrt
