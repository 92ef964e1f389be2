#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "host/images/PictureStep.h"

namespace Corvel {

/// Samples that are no numbers or infinite, counted over all frames of a render or of what is played. Any
/// thread.
///
/// What is not a number and what is negative and infinite becomes 0; what is positive and infinite becomes
/// the largest value of a half float, 65504, in alpha 1. Negative values stay as they are. The first frame
/// that has such samples is warned of at once, all of them are summed up by `tellTotal`.
class BrokenPixels {
public:
    struct Count {
        std::uint64_t notNumbers = 0;
        std::uint64_t infinite = 0;
    };

    /// Mends `count` samples in place and says how many there were; `infinity` is what takes infinity's
    /// place.
    static Count mend(float* samples, std::size_t count, float infinity);
    /// The same for half floats, `infinity` one of them.
    static Count mend(Picture::Code* samples, std::size_t count, Picture::Code infinity);
    static constexpr float largest = 65504.0F;

    void add(int frame, Count found);
    /// Says how many samples in how many frames there were, where it was more than the warning has told.
    void tellTotal() const;

private:
    std::atomic<std::uint64_t> notNumbers = 0;
    std::atomic<std::uint64_t> infinite = 0;
    std::atomic<int> frames = 0;
};

/// The step that mends every picture of floating-point files; others have no such samples. Comes before all
/// steps that would spread them to other pixels.
std::unique_ptr<PictureStep> makeMendingStep(std::shared_ptr<BrokenPixels> counter);

}  // namespace Corvel
