#include "worker/output/DisplayServer.h"

#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <csetjmp>
#include <cstdlib>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

std::atomic<bool> lost = false;
thread_local std::jmp_buf* wayOut = nullptr;

// Xlib ends the process when this returns. The documented way to go on is to jump out and never to use that
// connection again. A loss met outside `call` returns, and the process ends.
int leaveTheCall(void* /*connection*/) {
    if (wayOut)
        std::longjmp(*wayOut, 1);
    return 0;
}

/// The end of the process must not come near the lost connection either: the libraries' own clean-up would
/// wait for ever for a lock that the jump left behind.
void endWithoutLibraries() {
    std::atexit([] { _exit(EXIT_SUCCESS); });
}

}  // namespace

bool DisplayServer::isNamed() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "SDL_VIDEODRIVER"}) {
        const char* value = std::getenv(name);
        if (value && *value)
            return true;
    }
    return false;
}

void DisplayServer::watchForLoss() {
    using Handler = int (*)(void*);
    using SetHandler = Handler (*)(Handler);
    // Not there under another kind of server, which reports its end as an event instead.
    void* library = dlopen("libX11.so.6", RTLD_NOW | RTLD_NOLOAD);
    if (!library)
        return;
    if (const auto setHandler = reinterpret_cast<SetHandler>(dlsym(library, "XSetIOErrorHandler")))
        setHandler(leaveTheCall);
}

void DisplayServer::call(const std::function<void()>& body) {
    std::jmp_buf here;
    if (!lost && setjmp(here) == 0) {
        wayOut = &here;
        body();
        wayOut = nullptr;
        return;
    }
    wayOut = nullptr;
    if (!lost.exchange(true))
        endWithoutLibraries();
    throw StatusError(Status::InputOutput, "the display server has gone");
}

bool DisplayServer::isLost() {
    return lost;
}

}  // namespace Morvane::Worker
