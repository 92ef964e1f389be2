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

// What is wanted of Xlib's report of a failed request; its header is not there on every system.
struct FailedRequest {
    int type;
    void* connection;
    unsigned long resource;
    unsigned long serial;
    unsigned char error;
};

using FailureHandler = int (*)(void*, FailedRequest*);

std::atomic<bool> windowGone = false;
FailureHandler formerHandler = nullptr;

// A window that another client has destroyed is not there for requests that are under way. Xlib's own handler
// ends the process, which is right for every other failure: those would be mistakes of ours.
int noteWindow(void* connection, FailedRequest* request) {
    constexpr unsigned char badWindow = 3;
    constexpr unsigned char badDrawable = 9;
    if (request->error == badWindow || request->error == badDrawable)
        windowGone = true;
    return windowGone || !formerHandler ? 0 : formerHandler(connection, request);
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
    using LossHandler = int (*)(void*);
    using SetLossHandler = LossHandler (*)(LossHandler);
    using SetFailureHandler = FailureHandler (*)(FailureHandler);
    // Not there under another kind of server, which reports its end as an event instead.
    void* library = dlopen("libX11.so.6", RTLD_NOW | RTLD_NOLOAD);
    if (!library)
        return;
    if (const auto setHandler = reinterpret_cast<SetLossHandler>(dlsym(library, "XSetIOErrorHandler")))
        setHandler(leaveTheCall);
    if (const auto setHandler = reinterpret_cast<SetFailureHandler>(dlsym(library, "XSetErrorHandler"))) {
        const FailureHandler former = setHandler(noteWindow);
        formerHandler = former == noteWindow ? formerHandler : former;
    }
}

void DisplayServer::call(const std::function<void()>& body) {
    if (windowGone)
        throw StatusError(Status::InputOutput, "another program has destroyed the window");
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

bool DisplayServer::isWindowGone() {
    return windowGone;
}

}  // namespace Morvane::Worker
