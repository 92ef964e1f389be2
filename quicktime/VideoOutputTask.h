#pragma once

#include <cstdint>
#include <string>

#include "quicktime/QuickTimeVideoOutputInterface.h"

namespace Morvane::QuickTime {

/// A video output's request, decoded. Both sides use it: the worker to serve the request, the controller to
/// find the device that a list of modes belongs to. The rules of QuickTimeCodecTask hold; a text of another
/// kind throws std::runtime_error "Not a video output task.".
class VideoOutputTask {
public:
    explicit VideoOutputTask(const std::string& text);

    std::int32_t opcode = 0;
    VideoOutputHandle device = nullptr;  ///< 0 open, 10 `getModes`
    std::string deviceName;              ///< 0 open
    std::int32_t width = 0;              ///< 2 `selectMode`: pixels
    std::int32_t height = 0;             ///< 2 `selectMode`: pixels
    std::int32_t rate = 0;               ///< 2 `selectMode`: frames in 1000 seconds
    std::int32_t display = 0;            ///< 2 `selectMode`: 0 window, 1 full screen
};

}  // namespace Morvane::QuickTime
