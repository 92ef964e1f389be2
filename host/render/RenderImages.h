#pragma once

#include <string>

#include "host/render/Failure.h"
#include "host/render/HelperSession.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// Whether that output is images rather than a movie: a pattern or a single file of a kind that writeImage
/// writes.
bool writesImages(const std::string& output);

/// Writes the frames of the plan as image files, without a Write node. Each frame carries its own header;
/// what the person gave for time code and reel goes before it. Several threads write; blocks until all is
/// done. Files that are whole stay, whatever happens later. Throws Failure (Usage) for options that images
/// have no use for.
Exit renderImages(const RenderRequest& request, const RenderPlan& plan, HelperSession& helpers,
                  Reporter& reporter);

}  // namespace Corvel
