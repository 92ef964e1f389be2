#include "worker/output/SdlLibrary.h"

#include <dlfcn.h>

#include <string>

#include "worker/Status.h"

namespace Morvane::Worker {

namespace {

void* openLibrary() {
    void* library = dlopen(CORVEL_SDL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw StatusError(Status::NotFound, std::string("cannot use the displays: ") + dlerror());
    return library;
}

template <typename Function>
void load(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function)
        throw StatusError(Status::NotFound, std::string("cannot use the displays: ") + dlerror());
}

}  // namespace

const SdlLibrary& SdlLibrary::instance() {
    // Never unloaded: the display server's libraries that it brings along do not all survive that.
    static const SdlLibrary library;
    return library;
}

SdlLibrary::SdlLibrary() {
    void* library = openLibrary();
    load(library, "SDL_Init", init);
    load(library, "SDL_Quit", quit);
    load(library, "SDL_GetError", getError);
    load(library, "SDL_SetHint", setHint);
    load(library, "SDL_GetNumVideoDisplays", getNumVideoDisplays);
    load(library, "SDL_GetDisplayName", getDisplayName);
    load(library, "SDL_GetDisplayBounds", getDisplayBounds);
    load(library, "SDL_GetDesktopDisplayMode", getDesktopDisplayMode);
    load(library, "SDL_CreateWindow", createWindow);
    load(library, "SDL_DestroyWindow", destroyWindow);
    load(library, "SDL_ShowCursor", showCursor);
    load(library, "SDL_CreateRenderer", createRenderer);
    load(library, "SDL_DestroyRenderer", destroyRenderer);
    load(library, "SDL_GetRendererOutputSize", getRendererOutputSize);
    load(library, "SDL_CreateTexture", createTexture);
    load(library, "SDL_DestroyTexture", destroyTexture);
    load(library, "SDL_SetTextureBlendMode", setTextureBlendMode);
    load(library, "SDL_UpdateTexture", updateTexture);
    load(library, "SDL_RenderClear", renderClear);
    load(library, "SDL_RenderCopy", renderCopy);
    load(library, "SDL_RenderPresent", renderPresent);
    load(library, "SDL_PollEvent", pollEvent);
    setHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");  // SIGTERM ends the worker, it is no wish to close the window
    // Real displays only: otherwise the library makes one up where it can reach none.
    setHint(SDL_HINT_VIDEODRIVER, "x11,wayland,cocoa");
    setHint(SDL_HINT_RENDER_SCALE_QUALITY, "linear");
}

}  // namespace Morvane::Worker
