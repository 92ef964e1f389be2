#pragma once

#include <array>

namespace Morvane::Worker {

/// How chroma is made of full size: sample j of every 2^shift is a weighted sum of the values from
/// j * 2^shift + `first` on, by Catmull and Rom's spline as wide as the new samples lie apart.
struct ChromaReduction {
    static constexpr int mostShift = 2;  ///< one sample for four
    static constexpr int mostTaps = 4 << mostShift;

    int shift = 0;
    int first = 0;
    int taps = 1;
    std::array<float, mostTaps> weights{1.0F};  ///< their sum is 1

    /// `offset`: where a sample is to lie behind the first of the values that it stands for, in their units.
    static ChromaReduction of(int shift, double offset);
};

}  // namespace Morvane::Worker
