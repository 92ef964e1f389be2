#include "worker/output/WindowPort.h"

#include "worker/Status.h"
#include "worker/output/ByteConversion.h"
#include "worker/output/DisplayServer.h"

namespace Morvane::Worker {

namespace {

PortEvent meaningOfKey(SDL_Keycode key) {
    switch (key) {
        case SDLK_SPACE:
            return PortEvent::TogglePause;
        case SDLK_RIGHT:
        case SDLK_PERIOD:
            return PortEvent::Step;
        case SDLK_ESCAPE:
        case SDLK_q:
            return PortEvent::Close;
        default:
            return PortEvent::None;
    }
}

PortEvent meaningOf(const SDL_Event& event) {
    switch (event.type) {
        case SDL_QUIT:
            return PortEvent::Close;
        case SDL_WINDOWEVENT:
            return event.window.event == SDL_WINDOWEVENT_CLOSE ? PortEvent::Close : PortEvent::None;
        case SDL_KEYDOWN:
            // A space bar that is held down is one wish; a step key that is held down steps on.
            if (event.key.repeat && event.key.keysym.sym == SDLK_SPACE)
                return PortEvent::None;
            return meaningOfKey(event.key.keysym.sym);
        default:
            return PortEvent::None;
    }
}

bool needsDrawing(const SDL_Event& event) {
    return event.type == SDL_WINDOWEVENT && (event.window.event == SDL_WINDOWEVENT_EXPOSED ||
                                             event.window.event == SDL_WINDOWEVENT_SIZE_CHANGED);
}

}  // namespace

WindowPort::WindowPort(int display, const OutputMode& mode, Presentation presentation,
                       const std::string& title)
    : sdl(SdlLibrary::instance()), mode(mode) {
    bool open = false;
    const char* titleText = title.c_str();
    DisplayServer::call([&] {
        if (sdl.init(SDL_INIT_VIDEO) != 0)
            return;
        DisplayServer::watchForLoss();
        create(display, presentation, titleText);
        open = texture != nullptr;
    });
    if (!open) {
        const std::string reason = sdl.getError();
        close();
        throw StatusError(Status::InputOutput, "cannot open a window: " + reason);
    }
}

WindowPort::~WindowPort() {
    close();
}

void WindowPort::create(int display, Presentation presentation, const char* title) {
    const bool fullScreen = presentation == Presentation::FullScreen;
    const Uint32 flags =
        SDL_WINDOW_ALLOW_HIGHDPI | (fullScreen ? SDL_WINDOW_FULLSCREEN_DESKTOP : SDL_WINDOW_RESIZABLE);
    const auto centred = static_cast<int>(SDL_WINDOWPOS_CENTERED_DISPLAY(static_cast<unsigned>(display)));
    SDL_Rect place = {centred, centred, mode.width, mode.height};
    // Where no window manager would do it, the window itself has to be as large as the screen.
    if (fullScreen && sdl.getDisplayBounds(display, &place) != 0)
        return;
    window = sdl.createWindow(title, place.x, place.y, place.w, place.h, flags);
    if (!window || !createRenderer())
        return;
    // Bytes in the order red, green, blue, alpha, like the floats, so that conversion need not reorder them.
    texture = sdl.createTexture(renderer, SDL_PIXELFORMAT_RGBA32, SDL_TEXTUREACCESS_STREAMING, mode.width,
                                mode.height);
    if (!texture)
        return;
    // Colours are premultiplied: over black, which is behind them, they stand as they are.
    sdl.setTextureBlendMode(texture, SDL_BLENDMODE_NONE);
    sdl.showCursor(fullScreen ? SDL_DISABLE : SDL_ENABLE);
    sdl.renderClear(renderer);
    sdl.renderPresent(renderer);
}

bool WindowPort::createRenderer() {
    renderer = sdl.createRenderer(window, -1, SDL_RENDERER_ACCELERATED | SDL_RENDERER_PRESENTVSYNC);
    if (!renderer)
        renderer = sdl.createRenderer(window, -1, SDL_RENDERER_SOFTWARE);
    return renderer != nullptr;
}

void WindowPort::close() {
    if (DisplayServer::isLost() || DisplayServer::isWindowGone())
        return;  // what is left of it cannot be closed any more
    try {
        DisplayServer::call([this] {
            if (texture)
                sdl.destroyTexture(texture);
            if (renderer)
                sdl.destroyRenderer(renderer);
            if (window)
                sdl.destroyWindow(window);
            sdl.quit();
        });
    } catch (const StatusError&) {
        // Lost in this very moment: nothing is left to close.
    }
}

std::size_t WindowPort::pictureBytes() const {
    return static_cast<std::size_t>(mode.width) * static_cast<std::size_t>(mode.height) * 4;
}

void WindowPort::convert(const float* rgba, std::uint8_t* picture) {
    floatsToBytes(rgba, pictureBytes(), picture);
}

void WindowPort::show(const std::uint8_t* picture) {
    if (DisplayServer::isWindowGone())
        return;  // the next event tells it
    DisplayServer::call([&] {
        sdl.updateTexture(texture, nullptr, picture, mode.width * 4);
        draw();
    });
}

void WindowPort::draw() {
    const FramePlacement frame = placeOfFrame();
    const SDL_Rect place = {frame.left, frame.top, frame.width, frame.height};
    sdl.renderClear(renderer);
    sdl.renderCopy(renderer, texture, nullptr, &place);
    sdl.renderPresent(renderer);
}

FramePlacement WindowPort::placeOfFrame() const {
    int width = 0;
    int height = 0;
    if (sdl.getRendererOutputSize(renderer, &width, &height) != 0 || width < 1 || height < 1)
        return {0, 0, mode.width, mode.height};
    return FramePlacement::inside(mode.width, mode.height, width, height);
}

PortEvent WindowPort::nextEvent() {
    if (DisplayServer::isWindowGone())
        return PortEvent::Close;
    PortEvent wish = PortEvent::None;
    DisplayServer::call([&] {
        SDL_Event event;
        while (wish == PortEvent::None && sdl.pollEvent(&event)) {
            if (needsDrawing(event))
                draw();
            wish = meaningOf(event);
        }
    });
    return DisplayServer::isWindowGone() ? PortEvent::Close : wish;
}

}  // namespace Morvane::Worker
