#pragma once

#include "host/render/Failure.h"
#include "host/render/RenderRequest.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// Renders: reads the frames, has the Write node write them, finishes the movie. Blocks until all of it is
/// done and tells `reporter` how it goes. Plug-ins must be loaded and the helper checked.
///
/// Once the first frame is written, whatever happens to the input, the node or the patience of the person,
/// the movie so far is finished and kept; the exit code tells that it isn't whole. Before that, throws
/// Failure, NoSuchInput, UnreadableImage or BadKnobValue, and nothing has been written.
Exit render(const RenderRequest& request, Reporter& reporter);

}  // namespace Corvel
