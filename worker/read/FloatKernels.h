#pragma once

#include <cstddef>
#include <cstdint>

#include "worker/read/ChromaInterpolation.h"
#include "worker/read/PixelRow.h"
#include "worker/read/YcbcrMatrix.h"

/// What turns rows of decoded samples into rows of floats. Each kernel is compiled for several instruction
/// sets and the best one is taken at run time. Rows need no alignment; nothing is read or written past their
/// ends.
namespace Morvane::Worker::FloatKernels {

/// `row` = (sample - black) / range.
void scale(const std::uint8_t* samples, std::size_t count, float black, float range, float* row);
void scale(const std::uint16_t* samples, std::size_t count, float black, float range, float* row);

/// Rows that are added up.
template <typename Sample>
struct WeightedRows {
    const Sample* rows[ChromaInterpolation::taps];
    float weights[ChromaInterpolation::taps];
    int used;
};

/// `row` = the weighted sum of the rows, less `neutral`.
void blend(const WeightedRows<std::uint8_t>& rows, std::size_t count, float neutral, float* row);
void blend(const WeightedRows<std::uint16_t>& rows, std::size_t count, float neutral, float* row);

/// Interpolates `count` chroma samples to 2^shift times as many. REQUIRES: ChromaInterpolation::margin values
/// can be read before and behind the samples, and `row` has room for whole chroma samples.
void widen(const float* chroma, std::size_t count, const ChromaInterpolation& interpolation, float* row);

/// A row of pixels. Cb and Cr are floats around 0, one a pixel, in samples' units. `alpha` may be
/// null, for 1.
void pixels(const std::uint8_t* luma, const float* cb, const float* cr, const float* alpha,
            const YcbcrMatrix& matrix, const PixelRow& row);
void pixels(const std::uint16_t* luma, const float* cb, const float* cr, const float* alpha,
            const YcbcrMatrix& matrix, const PixelRow& row);

/// The same of rows that are red, green and blue already.
void pixels(const float* red, const float* green, const float* blue, const float* alpha, const PixelRow& row);

}  // namespace Morvane::Worker::FloatKernels
