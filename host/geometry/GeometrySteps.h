#pragma once

#include <memory>

#include "host/geometry/Placement.h"
#include "host/images/PictureStep.h"

namespace Corvel {

/// The step that makes every picture one of the movie's size. Throws UnreadableImage for a frame of another
/// size than the placement is for. Its pictures are to be linear, with finite samples.
std::unique_ptr<PictureStep> makePlacementStep(const Placement& placement, Filter filter);

/// The step that lays black over what a mask hides; opaque also in alpha. `seen` is what stays of pictures
/// that have that size at least.
std::unique_ptr<PictureStep> makeMaskStep(const Window& seen, double opacity);

}  // namespace Corvel
