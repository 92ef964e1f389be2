#pragma once

#include <array>

namespace Morvane::Worker {

/// How subsampled chroma is interpolated along one direction: each of the 2^shift samples that chroma sample
/// j stands for is a weighted sum of chroma samples j - 2 to j + 2, by Catmull and Rom's cubic.
struct ChromaInterpolation {
    static constexpr int taps = 5;
    static constexpr int margin = 2;     ///< chroma samples that are needed on each side
    static constexpr int mostShift = 2;  ///< one chroma sample for four

    int shift = 0;
    std::array<std::array<float, taps>, 1 << mostShift> weights{};  ///< of each of the 2^shift samples

    /// `offset`: where a chroma sample lies behind the first of the samples that it stands for, in their
    /// units.
    static ChromaInterpolation of(int shift, double offset);

    /// The sample to take for sample `index` of `count`, which may lie beyond either end: there the picture
    /// is mirrored, its last sample included.
    static int mirrored(int index, int count);
};

}  // namespace Morvane::Worker
