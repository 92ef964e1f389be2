#include "desktop/DisplayServer.h"

#include <dlfcn.h>

namespace Morvane::Desktop {

bool displayAnswers() {
    void* library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
    if (!library)
        return false;
    const auto connect = reinterpret_cast<void* (*)(const char*, int*)>(dlsym(library, "xcb_connect"));
    const auto failure = reinterpret_cast<int (*)(void*)>(dlsym(library, "xcb_connection_has_error"));
    const auto disconnect = reinterpret_cast<void (*)(void*)>(dlsym(library, "xcb_disconnect"));
    if (!connect || !failure || !disconnect)
        return false;
    void* connection = connect(nullptr, nullptr);
    const bool answers = failure(connection) == 0;
    disconnect(connection);
    return answers;
}

}  // namespace Morvane::Desktop
