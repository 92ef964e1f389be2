#pragma once

#include <vector>

#include "host/farm/FarmState.h"
#include "host/images/FrameSource.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// The frames that `request` asks of `source`, in chunks of `framesEach` of them; what is left makes the last
/// one shorter. A frame that is held several times is not divided. Every chunk has a frame that the source
/// has: one that is missing as a whole is a part of its neighbour. Handles and steps are worked out in the
/// chunks' frames, order and hold are not. Throws as planFrames.
std::vector<FarmChunk> planChunks(const FrameSource& source, const RenderRequest& request, int framesEach);

/// How many frames the movie will have.
int framesOf(const FrameSource& source, const RenderRequest& request);

}  // namespace Corvel
