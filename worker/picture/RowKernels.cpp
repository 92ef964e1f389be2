#include "worker/picture/RowKernels.h"

// Highway compiles the rest of this file once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "worker/picture/RowKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/highway.h>

#include "worker/picture/Rounded-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Morvane::Worker::RowKernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Worker::HWY_NAMESPACE::rounded;
using Floats = hn::ScalableTag<float>;
using FloatVector = hn::Vec<Floats>;

const Floats floats;

template <typename Sample>
HWY_INLINE auto samples(FloatVector value, float highest) {
    return hn::DemoteTo(hn::Rebind<Sample, Floats>(), rounded(floats, value, highest));
}

template <bool swap, class Vector>
HWY_INLINE Vector inByteOrder(Vector value) {
    if constexpr (swap)
        return hn::Or(hn::ShiftLeft<8>(value), hn::ShiftRight<8>(value));
    else
        return value;
}

/// Pixels that whole vectors hold; the rest of the row is the scalar kernels'.
HWY_INLINE std::size_t wholeVectors(std::size_t width) {
    return width - width % hn::Lanes(floats);
}

template <typename Sample, bool swap>
std::size_t threeChannels(const float* HWY_RESTRICT rgba, Sample* HWY_RESTRICT out, std::size_t width) {
    const hn::Rebind<Sample, Floats> target;
    const float highest = sizeof(Sample) == 1 ? 255.0F : 65535.0F;
    const std::size_t whole = wholeVectors(width);
    for (std::size_t x = 0; x < whole; x += hn::Lanes(floats)) {
        FloatVector r, g, b, a;
        hn::LoadInterleaved4(floats, rgba + 4 * x, r, g, b, a);
        hn::StoreInterleaved3(inByteOrder<swap>(samples<Sample>(r, highest)),
                              inByteOrder<swap>(samples<Sample>(g, highest)),
                              inByteOrder<swap>(samples<Sample>(b, highest)), target, out + 3 * x);
    }
    return whole;
}

#if HWY_TARGET == HWY_SCALAR
/// A vector of one lane holds no pixel; all of the row is the scalar kernel's.
template <typename Sample, bool swap>
std::size_t fourChannels(const float*, Sample*, std::size_t, AlphaPlace, bool) {
    return 0;
}
#else
/// Four channels keep their interleaving, so pixels need no taking apart: alpha first is a rotation.
template <typename Sample, bool swap>
std::size_t fourChannels(const float* HWY_RESTRICT rgba, Sample* HWY_RESTRICT out, std::size_t width,
                         AlphaPlace place, bool opaque) {
    const hn::Rebind<Sample, Floats> target;
    const hn::RebindToSigned<Floats> numbers;
    const float highest = sizeof(Sample) == 1 ? 255.0F : 65535.0F;
    const std::size_t step = hn::Lanes(floats);
    const auto lane = hn::And(hn::Iota(numbers, 0), hn::Set(numbers, 3));
    const auto isAlpha = hn::RebindMask(floats, hn::Eq(lane, hn::Set(numbers, opaque ? 3 : -1)));
    const std::size_t whole = 4 * width - 4 * width % step;
    for (std::size_t i = 0; i < whole; i += step) {
        auto pixels = hn::IfThenElse(isAlpha, hn::Set(floats, 1.0F), hn::LoadU(floats, rgba + i));
        if (place == AlphaPlace::First)
            pixels = hn::Shuffle2103(pixels);
        hn::StoreU(inByteOrder<swap>(samples<Sample>(pixels, highest)), target, out + i);
    }
    return whole / 4;
}
#endif

template <typename Sample>
std::size_t planes(const float* HWY_RESTRICT rgba, Sample* const out[4], std::size_t width, float highest) {
    const hn::Rebind<Sample, Floats> target;
    const std::size_t whole = wholeVectors(width);
    for (std::size_t x = 0; x < whole; x += hn::Lanes(floats)) {
        FloatVector channels[4];
        hn::LoadInterleaved4(floats, rgba + 4 * x, channels[0], channels[1], channels[2], channels[3]);
        for (std::size_t channel = 0; channel < 4; ++channel)
            if (out[channel])
                hn::StoreU(samples<Sample>(channels[channel], highest), target, out[channel] + x);
    }
    return whole;
}

std::size_t rgb8(const float* rgba, std::uint8_t* out, std::size_t width) {
    return threeChannels<std::uint8_t, false>(rgba, out, width);
}
std::size_t rgb16(const float* rgba, std::uint16_t* out, std::size_t width) {
    return threeChannels<std::uint16_t, false>(rgba, out, width);
}
std::size_t rgb16Swapped(const float* rgba, std::uint16_t* out, std::size_t width) {
    return threeChannels<std::uint16_t, true>(rgba, out, width);
}
std::size_t rgba8(const float* rgba, std::uint8_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    return fourChannels<std::uint8_t, false>(rgba, out, width, place, opaque);
}
std::size_t rgba16(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    return fourChannels<std::uint16_t, false>(rgba, out, width, place, opaque);
}
std::size_t rgba16Swapped(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place,
                          bool opaque) {
    return fourChannels<std::uint16_t, true>(rgba, out, width, place, opaque);
}
std::size_t planes8(const float* rgba, std::uint8_t* const out[4], std::size_t width) {
    return planes(rgba, out, width, 255.0F);
}
std::size_t planes16(const float* rgba, std::uint16_t* const out[4], std::size_t width, float highest) {
    return planes(rgba, out, width, highest);
}

}  // namespace Morvane::Worker::RowKernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Morvane::Worker::RowKernels {

HWY_EXPORT(rgb8);
HWY_EXPORT(rgb16);
HWY_EXPORT(rgb16Swapped);
HWY_EXPORT(rgba8);
HWY_EXPORT(rgba16);
HWY_EXPORT(rgba16Swapped);
HWY_EXPORT(planes8);
HWY_EXPORT(planes16);

void rgb8(const float* rgba, std::uint8_t* out, std::size_t width) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(rgb8)(rgba, out, width);
    Scalar::rgb8(rgba + 4 * done, out + 3 * done, width - done);
}

void rgb16(const float* rgba, std::uint16_t* out, std::size_t width) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(rgb16)(rgba, out, width);
    Scalar::rgb16(rgba + 4 * done, out + 3 * done, width - done);
}

void rgb16Swapped(const float* rgba, std::uint16_t* out, std::size_t width) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(rgb16Swapped)(rgba, out, width);
    Scalar::rgb16Swapped(rgba + 4 * done, out + 3 * done, width - done);
}

void rgba8(const float* rgba, std::uint8_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(rgba8)(rgba, out, width, place, opaque);
    Scalar::rgba8(rgba + 4 * done, out + 4 * done, width - done, place, opaque);
}

void rgba16(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(rgba16)(rgba, out, width, place, opaque);
    Scalar::rgba16(rgba + 4 * done, out + 4 * done, width - done, place, opaque);
}

void rgba16Swapped(const float* rgba, std::uint16_t* out, std::size_t width, AlphaPlace place, bool opaque) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(rgba16Swapped)(rgba, out, width, place, opaque);
    Scalar::rgba16Swapped(rgba + 4 * done, out + 4 * done, width - done, place, opaque);
}

namespace {

template <typename Sample>
struct RestOfPlanes {
    RestOfPlanes(Sample* const planes[], std::size_t count, std::size_t done) {
        for (std::size_t channel = 0; channel < count; ++channel)
            rest[channel] = planes[channel] ? planes[channel] + done : nullptr;
    }
    Sample* rest[4] = {};
};

}  // namespace

void planes8(const float* rgba, std::uint8_t* const planes[4], std::size_t width) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(planes8)(rgba, planes, width);
    Scalar::planes8(rgba + 4 * done, RestOfPlanes<std::uint8_t>(planes, 4, done).rest, width - done);
}

void planes16(const float* rgba, std::uint16_t* const planes[4], std::size_t width, float highest) {
    const std::size_t done = HWY_DYNAMIC_DISPATCH(planes16)(rgba, planes, width, highest);
    Scalar::planes16(rgba + 4 * done, RestOfPlanes<std::uint16_t>(planes, 4, done).rest, width - done,
                     highest);
}

}  // namespace Morvane::Worker::RowKernels

#endif
