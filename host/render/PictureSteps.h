#pragma once

#include "host/images/PictureStep.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// What is done to every picture of that render between reading and writing, in this order: broken samples
/// are mended; its geometry, in linear light; its colours. Null for nothing. `header` is that of the plan's
/// pictures. Everything that can go wrong with the request goes wrong here rather than on the reading
/// threads: throws Failure.
MakePictureSteps stepsFor(const RenderRequest& request, const PictureHeader& header, const RenderPlan& plan);

/// The movie's format: what was asked for, else the part of the input's pictures that is left by a crop.
/// Throws Failure.
Kex::Image::Format formatFor(const RenderRequest& request, const PictureHeader& header);

}  // namespace Corvel
