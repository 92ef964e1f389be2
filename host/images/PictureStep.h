#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "host/images/Picture.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

/// One frame of a render between its reader and its writer.
struct FrameUnderWay {
    int number = 0;               ///< the movie's frame
    std::size_t position = 0;     ///< of the frame in the movie, from 0
    const PictureHeader& header;  ///< what the input says about it
};

/// Something that is done to every picture of a render after it is read and before it is written. Runs on the
/// reading threads, each of which has its own object, so that a step may keep scratch memory.
class PictureStep {
public:
    virtual ~PictureStep() = default;

    /// Changes the picture in place, or replaces it by another, which may have another size; a replaced
    /// picture's memory is best kept for the next frame. What it throws ends the render at this frame, as an
    /// unreadable frame does.
    virtual void apply(const FrameUnderWay& frame, Picture& picture) = 0;

    /// Whether `apply` can do with pictures of codes.
    virtual bool takesCodes() const { return false; }
};

using PictureSteps = std::vector<std::unique_ptr<PictureStep>>;

/// Makes the steps for one reading thread, in the order in which they are done. May be called by several
/// threads at once. Empty where nothing is to be done.
using MakePictureSteps = std::function<PictureSteps()>;

}  // namespace Corvel
