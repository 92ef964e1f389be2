#pragma once

#include <memory>
#include <string>

#include "host/render/HelperSession.h"
#include "host/render/NodeHost.h"
#include "host/render/RenderPlan.h"
#include "host/render/RenderRequest.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// What a render is made with, from its input to the Write node. The plan's source may have a helper of its
/// own, so that the helpers go last.
struct RenderSetup {
    std::unique_ptr<HelperSession> helpers;
    RenderPlan plan;
};

/// Opens the input, with a helper where it is a movie, and plans the render. Throws as planRender, and
/// Failure (HelperFailed).
RenderSetup setUpRender(const RenderRequest& request, Reporter& reporter);

/// A Write node for the file `output` with all of its knobs settled, and the plan as that changes it: its
/// metadata and its burn-ins. Request and setup must outlive the node and stay where they are. Throws
/// Failure, BadKnobValue, and std::runtime_error where text cannot be drawn here.
std::unique_ptr<NodeHost> setUpNode(const RenderRequest& request, const std::string& output,
                                    RenderSetup& setup);

/// Throws UnreadableImage for a frame whose size is not that of the plan's pictures.
void checkSize(const RenderPlan& plan, const PlannedFrame& frame, const PictureHeader& header);

}  // namespace Corvel
