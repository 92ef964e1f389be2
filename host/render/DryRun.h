#pragma once

#include <string>

#include "Kex/Image/Write.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// What a render would do, as lines of text for a person: the input, the output, the picture, every knob's
/// value, the metadata. The node must have its settings already.
std::string dryRunText(const RenderRequest& request, const RenderPlan& plan, const Kex::Image::Write& node);

}  // namespace Corvel
