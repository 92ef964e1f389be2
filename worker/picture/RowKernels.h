#pragma once

#include <cstddef>
#include <cstdint>

/// Conversions of one row of pixels, `width` x 4 floats RGBA, into samples. Each is compiled for several
/// instruction sets and the best one is taken at run time; `Scalar` holds the same conversions without
/// vectors, bit for bit.
///
/// All of them round to nearest (half to even), so that on average nothing is gained or lost, limit to 0…1,
/// and read what is not a number as 0. Rows need no alignment; nothing is written past the last sample.
namespace Morvane::Worker::RowKernels {

/// Where alpha lies in a pixel of four samples.
enum class AlphaPlace { First, Last };

/// Three samples a pixel: R, G, B.
void rgb8(const float* rgba, std::uint8_t* out, std::size_t width);
void rgb16(const float* rgba, std::uint16_t* out, std::size_t width);
void rgb16Swapped(const float* rgba, std::uint16_t* out, std::size_t width);

/// Four samples a pixel. `opaque`: the row's alpha is ignored and written as 1.
void rgba8(const float* rgba, std::uint8_t* out, std::size_t width, AlphaPlace place, bool opaque);
void rgba16(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque);
void rgba16Swapped(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque);

/// One plane a channel, `highest` being the sample of 1. `planes` are R, G, B and alpha; a null plane is left
/// out.
void planes8(const float* rgba, std::uint8_t* const planes[4], std::size_t width);
void planes16(const float* rgba, std::uint16_t* const planes[4], std::size_t width, float highest);

namespace Scalar {
void rgb8(const float* rgba, std::uint8_t* out, std::size_t width);
void rgb16(const float* rgba, std::uint16_t* out, std::size_t width);
void rgb16Swapped(const float* rgba, std::uint16_t* out, std::size_t width);
void rgba8(const float* rgba, std::uint8_t* out, std::size_t width, AlphaPlace place, bool opaque);
void rgba16(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque);
void rgba16Swapped(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque);
void planes8(const float* rgba, std::uint8_t* const planes[4], std::size_t width);
void planes16(const float* rgba, std::uint16_t* const planes[4], std::size_t width, float highest);
}  // namespace Scalar

}  // namespace Morvane::Worker::RowKernels
