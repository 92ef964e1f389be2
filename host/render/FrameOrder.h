#pragma once

#include <vector>

namespace Corvel {

/// What becomes of the frames that a person named on their way into the movie.
struct FrameOrder {
    int before = 0;        ///< handle: frames more in front of the first one; negative: so many fewer
    int after = 0;         ///< the same behind the last one
    int step = 1;          ///< only every so-manieth frame, counted from the first one; at least 1
    bool reverse = false;  ///< the last one first
    int hold = 1;          ///< how often each frame is shown; at least 1

    bool operator==(const FrameOrder&) const = default;
};

/// The frames of the input that are shown, without repetitions: handles first, then every `step`th one.
/// `frames` is ascending and not empty, and so is the answer. Throws Failure (Usage) where handles leave no
/// frame, and for more than ten million.
std::vector<int> shownFrames(std::vector<int> frames, const FrameOrder& order);

/// One frame of the movie and which frame of the input it shows.
struct OrderedFrame {
    int number = 0;
    int shown = 0;

    bool operator==(const OrderedFrame&) const = default;
};

/// Lays them out in the order of the movie, reversed and held. A movie's frames have ascending numbers: those
/// of the input where each one is shown once (the first number of the movie is that of the first frame then,
/// also where the last one is shown first), else they are counted on from the first one.
std::vector<OrderedFrame> inOrder(const std::vector<int>& shown, const FrameOrder& order);

}  // namespace Corvel
