#pragma once

#include <SDL.h>

namespace Morvane::Worker {

/// The functions of SDL that windows need, loaded when the first one is wanted: on a machine without displays
/// the worker neither needs nor loads the library.
///
/// SDL wants one thread for everything between `SDL_Init` and `SDL_Quit`. Here that is either the request
/// thread while it lists the displays or the presentation thread while a window is open, never both at once.
class SdlLibrary {
public:
    /// The one instance; loads the library at the first call. Throws StatusError when it is not installed.
    static const SdlLibrary& instance();

    decltype(&SDL_Init) init;
    decltype(&SDL_Quit) quit;
    decltype(&SDL_GetError) getError;
    decltype(&SDL_SetHint) setHint;
    decltype(&SDL_GetNumVideoDisplays) getNumVideoDisplays;
    decltype(&SDL_GetDisplayName) getDisplayName;
    decltype(&SDL_GetDisplayBounds) getDisplayBounds;
    decltype(&SDL_GetDesktopDisplayMode) getDesktopDisplayMode;
    decltype(&SDL_CreateWindow) createWindow;
    decltype(&SDL_DestroyWindow) destroyWindow;
    decltype(&SDL_ShowCursor) showCursor;
    decltype(&SDL_CreateRenderer) createRenderer;
    decltype(&SDL_DestroyRenderer) destroyRenderer;
    decltype(&SDL_GetRendererOutputSize) getRendererOutputSize;
    decltype(&SDL_CreateTexture) createTexture;
    decltype(&SDL_DestroyTexture) destroyTexture;
    decltype(&SDL_SetTextureBlendMode) setTextureBlendMode;
    decltype(&SDL_UpdateTexture) updateTexture;
    decltype(&SDL_RenderClear) renderClear;
    decltype(&SDL_RenderCopy) renderCopy;
    decltype(&SDL_RenderPresent) renderPresent;
    decltype(&SDL_PollEvent) pollEvent;

private:
    SdlLibrary();
};

}  // namespace Morvane::Worker
