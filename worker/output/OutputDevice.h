#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "worker/output/OutputMode.h"

namespace Morvane::Worker {

/// What the person at the device asks for.
enum class PortEvent { None, TogglePause, Step, Close };

/// An opened device in one mode: a window, a stream. Owned by the presenter, which makes it, shows with it
/// and destroys it on its one presentation thread.
class OutputPort {
public:
    virtual ~OutputPort() = default;

    /// Bytes of one frame in the device's own format. Constant for the life of the port.
    virtual std::size_t pictureBytes() const = 0;

    /// Converts `rgba` (the mode's width x height x 4 floats, RGBA, top row first, nominal range 0 to 1) into
    /// `picture`, `pictureBytes` bytes aligned to 64. Any one thread at a time; may run beside `show` of
    /// another picture. Throws StatusError.
    virtual void convert(const float* rgba, std::uint8_t* picture) = 0;

    /// Does what can be done for a picture ahead of its time, so that `show` takes little. `frame` is its
    /// number from the start of the mode; numbers rise, dropped frames leave gaps. What is prepared is shown
    /// next, or never. Presentation thread. Throws StatusError.
    virtual void prepare(const std::uint8_t* /*picture*/, std::int64_t /*frame*/) {}

    /// Shows the picture that was prepared, now. Presentation thread. Throws StatusError when the device has
    /// gone.
    virtual void show(const std::uint8_t* picture) = 0;

    /// The next thing asked for since the last call, None when there is no more. Does not block. Presentation
    /// thread. Throws StatusError when the device has gone.
    virtual PortEvent nextEvent() { return PortEvent::None; }

    /// Sends on what the device still holds back. After the last `show`. Presentation thread. Throws
    /// StatusError.
    virtual void finish() {}
};

/// How a port takes its place on a display. A device without windows takes both alike.
enum class Presentation { Window, FullScreen };

/// Something that can show frames. Made once when the devices are listed, kept as long as the worker runs.
class OutputDevice {
public:
    virtual ~OutputDevice() = default;

    /// For people, unique among the devices of this machine: "Display 1: DELL U2415", "Network
    /// 127.0.0.1:5004".
    virtual std::string name() const = 0;

    virtual std::vector<OutputMode> modes() const = 0;

    /// Bits that the device shows of each channel.
    virtual int bitsPerChannel() const = 0;

    /// The name when it is opened by the name `title`: another one where `title` gives another address.
    /// Throws StatusError where `title` is none that the device can be opened by.
    virtual std::string nameWhenOpened(const std::string& /*title*/) const { return name(); }

    /// What must not be opened twice on this machine when this device is opened by the name `title`. Throws
    /// as `nameWhenOpened`.
    virtual std::string lockKey(const std::string& title) const = 0;

    /// Opens the device in `mode`, one of `modes`. `title` is the name that the host opened it by: it labels
    /// the window or the stream, and a device may find an address in it. Called on the presentation thread.
    /// Throws StatusError.
    virtual std::unique_ptr<OutputPort> open(const OutputMode& mode, Presentation presentation,
                                             const std::string& title) const = 0;
};

}  // namespace Morvane::Worker
