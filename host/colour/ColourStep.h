#pragma once

#include <memory>

#include "host/colour/ColourLibrary.h"
#include "host/images/PictureStep.h"

namespace Corvel {

/// The step that transforms the colours of every picture. Alpha is divided out before and multiplied in again
/// afterwards, since a transform is meant for the colours themselves; pixels without alpha that have colours
/// all the same, such as a glow, are transformed as they are. The values come out finite.
std::unique_ptr<PictureStep> makeColourStep(std::shared_ptr<const ColourTransform> transform);

}  // namespace Corvel
