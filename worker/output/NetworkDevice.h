#pragma once

#include "worker/output/OutputDevice.h"

namespace Morvane::Worker {

/// Sends frames to the network, so that a machine without a display can show something: an H.264 stream in
/// MPEG-TS over UDP, 8 bits, 4:2:0, BT.709. Where to is in the name that the host opens it by (see
/// NetworkAddress); otherwise the machine itself.
class NetworkDevice : public OutputDevice {
public:
    /// The network device, or nothing where the library cannot make such a stream.
    static std::vector<std::unique_ptr<OutputDevice>> findAll();

    std::string name() const override;
    std::vector<OutputMode> modes() const override;
    int bitsPerChannel() const override { return 8; }
    std::string nameWhenOpened(const std::string& title) const override;
    std::string lockKey(const std::string& title) const override;

    /// `title` also becomes the stream's service name.
    std::unique_ptr<OutputPort> open(const OutputMode& mode, Presentation presentation,
                                     const std::string& title) const override;
};

}  // namespace Morvane::Worker
