#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Kex/Image/Write.h"
#include "host/burnin/Template.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// The template that a request means, its own texts added; nothing where nothing is to be written. Throws
/// Failure (Usage) for a template that cannot be used.
std::optional<BurnInTemplate> planBurnIns(const BurnInRequest& request);

/// The same for the slate.
std::optional<SlateTemplate> planSlate(const BurnInRequest& request);

/// Puts the slate in front of the frames of the plan: one frame more, numbered before the first one, with the
/// middle one of the pictures on it. The time code begins one frame earlier, so that each picture keeps its
/// own.
void addSlateFrame(RenderPlan& plan);

/// Adds what is written into the pictures to the steps of the plan, as the last of them; `node` is the Write
/// node once all of its knobs are settled, null for images. Request and plan must outlive the steps, and stay
/// where they are. Throws std::runtime_error where text cannot be drawn here.
void addBurnIns(const RenderRequest& request, RenderPlan& plan, const Kex::Image::Write* node);

}  // namespace Corvel
