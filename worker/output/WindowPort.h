#pragma once

#include <string>

#include "worker/output/FramePlacement.h"
#include "worker/output/OutputDevice.h"
#include "worker/output/SdlLibrary.h"

namespace Morvane::Worker {

/// A window, or a whole screen, that shows frames. Where its size is not the mode's the frame is scaled with
/// its aspect kept, black around it.
///
/// Keys: space pauses and goes on, the right arrow or "." shows one frame, Escape or "q" closes, as does the
/// window's own button.
class WindowPort : public OutputPort {
public:
    /// Opens the window on the display with the number `display` (from 0). Throws StatusError. This thread
    /// becomes the window library's thread until the port is destroyed on it.
    WindowPort(int display, const OutputMode& mode, Presentation presentation, const std::string& title);
    ~WindowPort() override;

    std::size_t pictureBytes() const override;
    void convert(const float* rgba, std::uint8_t* picture) override;
    void show(const std::uint8_t* picture) override;
    PortEvent nextEvent() override;

private:
    void create(int display, Presentation presentation, const char* title);
    bool createRenderer();
    void draw();
    FramePlacement placeOfFrame() const;
    void close();

    const SdlLibrary& sdl;
    OutputMode mode;
    SDL_Window* window = nullptr;
    SDL_Renderer* renderer = nullptr;
    SDL_Texture* texture = nullptr;
};

}  // namespace Morvane::Worker
