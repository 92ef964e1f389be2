#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Morvane::QuickTime {

/// The worker's own number for a device, never null for a device that exists; nothing in this process may
/// follow it as a pointer.
using VideoOutputHandle = void*;

struct VideoOutputMode {
    std::int32_t width = 0;   ///< pixels
    std::int32_t height = 0;  ///< pixels
    std::string name;         ///< for people, such as "1920 x 1080, 25"
    std::int32_t rate = 0;    ///< frames in 1000 seconds

    bool operator==(const VideoOutputMode&) const = default;
};

struct VideoOutputDevice {
    std::string name;
    VideoOutputHandle handle = nullptr;

    bool operator==(const VideoOutputDevice&) const = default;
};

/// Shows frames on a device: choose a mode, send frames, close. An int32 answer of `selectMode` and
/// `sendFrame` is a status, 0 for success. Every operation that asks the worker blocks until it has answered.
/// One thread at a time.
///
/// The operations' order is part of the binary interface.
class QuickTimeVideoOutputInterface {
public:
    /// May throw: stopping a worker that is gone already is an error.
    virtual ~QuickTimeVideoOutputInterface() noexcept(false) = default;

    /// `display`: 0 window, 1 full screen. Also tells whether opening the device had failed.
    virtual std::int32_t selectMode(const VideoOutputMode& mode, std::int32_t display) = 0;
    /// Always -1. Forgets the answers of all queries but `queryValue8`, deliberately.
    virtual std::int32_t closeOutput() = 0;
    /// `getFrameSize()` bytes: width x height x 4 floats, RGBA, top row first.
    virtual std::int32_t sendFrame(const char* frame) = 0;
    virtual std::int32_t queryValue5() = 0;  ///< width of the selected mode, pixels
    virtual std::int32_t queryValue6() = 0;  ///< height of the selected mode, pixels
    virtual std::int32_t queryValue7() = 0;  ///< rate of the selected mode, frames in 1000 seconds
    virtual std::int32_t queryValue8() = 0;  ///< bits a channel of the device
    /// Bytes in one frame of the selected mode.
    virtual std::uint64_t getFrameSize() = 0;
    /// Replaces the content of `modes`; leaves it alone where the worker answers with an error.
    virtual void getModes(VideoOutputHandle device, std::vector<VideoOutputMode>& modes) = 0;
    /// Replaces the content of `devices`.
    virtual void getDevices(std::vector<VideoOutputDevice>& devices) = 0;
};

}  // namespace Morvane::QuickTime
