#pragma once

#include <optional>

#include "host/render/Failure.h"
#include "host/render/RenderRequest.h"
#include "host/render/Reporter.h"

namespace Corvel {

/// One frame of a render, for a person to look at.
struct LookRequest {
    RenderRequest render;      ///< as the movie would be rendered, but that its output is the still
    std::optional<int> frame;  ///< the movie's frame; the first one where it is not given
    bool encoded = false;      ///< as the codec gives it back rather than as it gets it
};

/// Writes the still: the very values that the Write node hands to the helper, after every step of the render,
/// with the node's curve, divided by alpha where the settings say so. Blocks until it is written. Alpha goes
/// along where the still's format says whether the colours are multiplied by it; a PNG file cannot say that
/// they are. Frames that the input lacks are in nobody's way but that one's own. Throws Failure, NoSuchInput,
/// UnreadableImage, UnwritableImage and BadKnobValue; there is no still then.
Exit look(const LookRequest& asked, Reporter& reporter);

}  // namespace Corvel
