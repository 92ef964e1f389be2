#pragma once

#include "worker/output/OutputDevice.h"

namespace Morvane::Worker {

/// A display, shown on in a window or over the whole screen. Eight bits a channel; the pixels appear as the
/// host made them.
class WindowDevice : public OutputDevice {
public:
    /// The displays there are now, in the system's order. Empty, with no window library loaded, where there
    /// is no display server; empty with a line on standard error where it cannot be reached. Request thread,
    /// while no window is open.
    static std::vector<std::unique_ptr<OutputDevice>> findAll();

    /// The display with the number `index` (from 0), called `label` by the system, with a desktop of `own`
    /// size and rate.
    WindowDevice(int index, std::string label, const OutputMode& own);

    std::string name() const override;

    /// The standard modes that fit, then the display's own where it is none of them.
    std::vector<OutputMode> modes() const override;
    int bitsPerChannel() const override { return 8; }
    std::string lockKey(const std::string& title) const override;

    /// `title` becomes the window's title.
    std::unique_ptr<OutputPort> open(const OutputMode& mode, Presentation presentation,
                                     const std::string& title) const override;

private:
    int index;
    std::string label;
    OutputMode own;
};

}  // namespace Morvane::Worker
