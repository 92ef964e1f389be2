#pragma once

#include "host/images/PictureStep.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// What is done to every picture of that render between reading and writing, in this order: its geometry, in
/// linear light. Null for nothing. `header` is that of the plan's pictures. Throws Failure (Usage) for what
/// cannot be done to them.
MakePictureSteps stepsFor(const RenderRequest& request, const PictureHeader& header, const RenderPlan& plan);

/// The movie's format: what was asked for, else the part of the input's pictures that is left by a crop.
/// Throws Failure.
Kex::Image::Format formatFor(const RenderRequest& request, const PictureHeader& header);

}  // namespace Corvel
