#pragma once

#include <atomic>
#include <memory>

#include "host/colour/ColourLibrary.h"
#include "host/images/PictureStep.h"

namespace Corvel {

/// Looks whether the frames of a render state the same colours as its first one, which decides for all of
/// them: a frame that would be in another space by itself is warned of, once a render. Any thread.
class ColourWatch {
public:
    ColourWatch(std::shared_ptr<const ColourConversion> used, PictureHeader firstHeader);

    void look(const FrameUnderWay& frame);

private:
    const std::shared_ptr<const ColourConversion> conversion;
    const PictureHeader first;
    std::atomic<bool> told = false;
};

/// The step that does so and leaves pictures alone.
std::unique_ptr<PictureStep> makeWatchingStep(std::shared_ptr<ColourWatch> watch);

}  // namespace Corvel
