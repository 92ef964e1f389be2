#pragma once

#include <optional>
#include <vector>

#include "host/images/FrameSource.h"
#include "host/render/FrameOrder.h"

namespace Corvel {

/// What becomes of a frame that the input doesn't have.
enum class Missing {
    Error,  ///< nothing is rendered; all gaps are named
    Black,  ///< a black frame, transparent where the movie has alpha
    Hold,   ///< the nearest earlier frame again, or the first one where there is no earlier one
};

struct PlannedFrame {
    int number = 0;             ///< the movie's frame
    std::optional<int> source;  ///< the input's frame; nothing for black
    int shown = 0;              ///< the input's frame that is meant, whether the input has it or not

    /// Whether another frame, or black, takes the place of one that is missing.
    bool isFilled() const { return source != shown; }

    bool operator==(const PlannedFrame&) const = default;
};

/// The frames of a render in order, settled before the first one is rendered. `wanted` is ascending; empty
/// for all frames from the source's first to its last. Throws Failure: InputUnreadable for gaps under
/// Missing::Error, and when none of the wanted frames is there; Usage as shownFrames.
std::vector<PlannedFrame> planFrames(const FrameSource& source, std::vector<int> wanted, Missing missing,
                                     const FrameOrder& order = {});

}  // namespace Corvel
