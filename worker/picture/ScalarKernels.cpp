#include "worker/picture/RowKernels.h"

#include <algorithm>
#include <cmath>

// The reference: one sample after the other. The vector kernels also use it for what is left at the end of a
// row.
namespace Morvane::Worker::RowKernels::Scalar {

namespace {

template <typename Sample>
Sample rounded(float value, float highest) {
    if (std::isnan(value))
        return 0;
    // A double holds the product of a float and a sample exactly.
    const double limited = std::min(std::max(value, 0.0F), 1.0F);
    return static_cast<Sample>(std::nearbyint(limited * highest));
}

std::uint16_t swapped(std::uint16_t sample) {
    return static_cast<std::uint16_t>(sample << 8 | sample >> 8);
}

std::uint16_t rounded16(float value) {
    return rounded<std::uint16_t>(value, 65535.0F);
}
std::uint16_t rounded16Swapped(float value) {
    return swapped(rounded16(value));
}
std::uint8_t rounded8(float value) {
    return rounded<std::uint8_t>(value, 255.0F);
}

template <typename Sample>
void threeChannels(const float* rgba, Sample* out, std::size_t width, Sample (*round)(float)) {
    for (std::size_t x = 0; x < width; ++x)
        for (std::size_t channel = 0; channel < 3; ++channel)
            out[3 * x + channel] = round(rgba[4 * x + channel]);
}

template <typename Sample>
void fourChannels(const float* rgba, Sample* out, std::size_t width, AlphaPlace place, bool opaque,
                  Sample (*round)(float)) {
    const std::size_t colours = place == AlphaPlace::First ? 1 : 0;
    const std::size_t alpha = place == AlphaPlace::First ? 0 : 3;
    for (std::size_t x = 0; x < width; ++x) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            out[4 * x + colours + channel] = round(rgba[4 * x + channel]);
        out[4 * x + alpha] = round(opaque ? 1.0F : rgba[4 * x + 3]);
    }
}

template <typename Sample>
void planes(const float* rgba, Sample* const out[4], std::size_t width, float highest) {
    for (std::size_t channel = 0; channel < 4; ++channel)
        for (std::size_t x = 0; out[channel] && x < width; ++x)
            out[channel][x] = rounded<Sample>(rgba[4 * x + channel], highest);
}

}  // namespace

void rgb8(const float* rgba, std::uint8_t* out, std::size_t width) {
    threeChannels(rgba, out, width, rounded8);
}
void rgb16(const float* rgba, std::uint16_t* out, std::size_t width) {
    threeChannels(rgba, out, width, rounded16);
}
void rgb16Swapped(const float* rgba, std::uint16_t* out, std::size_t width) {
    threeChannels(rgba, out, width, rounded16Swapped);
}

void rgba8(const float* rgba, std::uint8_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    fourChannels(rgba, out, width, place, opaque, rounded8);
}
void rgba16(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    fourChannels(rgba, out, width, place, opaque, rounded16);
}
void rgba16Swapped(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    fourChannels(rgba, out, width, place, opaque, rounded16Swapped);
}

void planes8(const float* rgba, std::uint8_t* const out[4], std::size_t width) {
    planes(rgba, out, width, 255.0F);
}
void planes16(const float* rgba, std::uint16_t* const out[4], std::size_t width, float highest) {
    planes(rgba, out, width, highest);
}

}  // namespace Morvane::Worker::RowKernels::Scalar
