#pragma once

#include <cstddef>
#include <cstdint>

#include "worker/picture/ChromaReduction.h"

/// What turns a row of RGBA floats into samples of Y, Cb and Cr. Each kernel is compiled for several
/// instruction sets and the best one is taken at run time. Rows need no alignment; nothing is read or written
/// past their ends but where it is said.
namespace Morvane::Worker::YcbcrKernels {

/// What samples mean.
struct SampleForm {
    float lowestRgb, highestRgb;  ///< what the picture can hold
    float red, green, blue;       ///< luma's weights
    float lumaScale, black;       ///< luma = black + lumaScale * light
    float cbScale, crScale;       ///< chroma = neutral + cbScale * (blue - light), crScale * (red - light)
    float neutral;
    float lowest, highest;  ///< samples that may be stored
};

/// Luma as samples; chroma as floats off neutral, one a pixel. RGB is limited before it is multiplied, since
/// limiting luma and chroma afterwards would change the hue of what is too bright. What is not a number is
/// black.
void split(const float* rgba, std::size_t width, const SampleForm& form, std::uint8_t* luma, float* cb,
           float* cr);
void split(const float* rgba, std::size_t width, const SampleForm& form, std::uint16_t* luma, float* cb,
           float* cr);

/// The same with samples of all components, for pictures whose chroma is as large as luma. `alpha` may be
/// null; else it gets 0 to 1 as 0 to `highestAlpha`, one less than a power of two.
template <typename Sample>
struct WholeRow {
    Sample* luma;
    Sample* cb;
    Sample* cr;
    Sample* alpha;
    float highestAlpha;
};
void convert(const float* rgba, std::size_t width, const SampleForm& form, const WholeRow<std::uint8_t>& row);
void convert(const float* rgba, std::size_t width, const SampleForm& form,
             const WholeRow<std::uint16_t>& row);

/// `count` values out of 2^shift times as many. REQUIRES: ChromaReduction::mostTaps values can be read before
/// and behind those of the row.
void reduce(const float* values, std::size_t count, const ChromaReduction& reduction, float* row);

/// Samples: the weighted sum of rows of floats off neutral. `rows` and `weights` have `used` entries.
void store(const float* const* rows, const float* weights, int used, std::size_t count,
           const SampleForm& form, std::uint8_t* samples);
void store(const float* const* rows, const float* weights, int used, std::size_t count,
           const SampleForm& form, std::uint16_t* samples);

}  // namespace Morvane::Worker::YcbcrKernels
