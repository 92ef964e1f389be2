#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/geometry/MixKernels.cpp"
#include <hwy/foreach_target.h>
// Highway asks for this order: it includes this file once for every target.
#include <hwy/highway.h>

#include "host/geometry/MixKernels.h"

HWY_BEFORE_NAMESPACE();
namespace Corvel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// One vector of the result: `taps` vectors of samples, of which `samples(tap)` gives the address, in their
// proportions.
template <bool held, class Lanes, class Samples>
HWY_INLINE hn::Vec<Lanes> mix(const float* weights, int taps, Samples samples) {
    const Lanes d;
    auto sum = hn::Zero(d);
    auto smallest = hn::LoadU(d, samples(0));
    auto largest = smallest;
    for (int tap = 0; tap < taps; ++tap) {
        const auto sample = hn::LoadU(d, samples(tap));
        sum = hn::MulAdd(hn::Set(d, weights[tap]), sample, sum);
        if constexpr (held) {
            smallest = hn::Min(smallest, sample);
            largest = hn::Max(largest, sample);
        }
    }
    return held ? hn::Min(hn::Max(sum, smallest), largest) : sum;
}

template <bool held, class Lanes>
HWY_INLINE hn::Vec<Lanes> mixPlane(const float* const* rows, const float* weights, int taps, std::size_t at) {
    return mix<held, Lanes>(weights, taps, [=](int tap) { return rows[tap * 4] + at; });
}

template <bool held, bool four, class Lanes>
void mixAt(const float* const* rows, const float* weights, int taps, std::size_t at, float* mixed) {
    const Lanes d;
    const auto red = mixPlane<held, Lanes>(rows, weights, taps, at);
    const auto green = mixPlane<held, Lanes>(rows + 1, weights, taps, at);
    const auto blue = mixPlane<held, Lanes>(rows + 2, weights, taps, at);
    auto alpha = hn::Zero(d);
    if constexpr (four) {
        alpha = mixPlane<held, Lanes>(rows + 3, weights, taps, at);
    }
    hn::StoreInterleaved4(red, green, blue, alpha, d, mixed + at * 4);
}

template <bool held, bool four>
void mixAllRows(const float* const* rows, const float* weights, int taps, std::size_t count, float* mixed) {
    using Many = hn::ScalableTag<float>;
    const std::size_t lanes = hn::Lanes(Many());
    std::size_t at = 0;
    for (; at + lanes <= count; at += lanes) {
        mixAt<held, four, Many>(rows, weights, taps, at, mixed);
    }
    for (; at < count; ++at) {
        mixAt<held, four, hn::CappedTag<float, 1>>(rows, weights, taps, at, mixed);
    }
}

void mixRows(const float* const* rows, const float* weights, int taps, bool held, std::size_t count,
             float* mixed) {
    const bool four = rows[3] != nullptr;
    if (held) {
        four ? mixAllRows<true, true>(rows, weights, taps, count, mixed)
             : mixAllRows<true, false>(rows, weights, taps, count, mixed);
    } else {
        four ? mixAllRows<false, true>(rows, weights, taps, count, mixed)
             : mixAllRows<false, false>(rows, weights, taps, count, mixed);
    }
}

template <bool held>
void mixAllPixels(const float* pixels, const int* firsts, const float* weights, int taps, std::size_t count,
                  float* mixed) {
    // A pixel at a time, so that neither samples nor weights have to be gathered.
    using Pixel = hn::CappedTag<float, 4>;
    const Pixel d;
    for (std::size_t i = 0; i < count; ++i, weights += taps) {
        const float* from = pixels + static_cast<std::ptrdiff_t>(firsts[i]) * 4;
        for (std::size_t sample = 0; sample < 4; sample += hn::Lanes(d)) {
            const auto address = [=](int tap) { return from + tap * 4 + sample; };
            hn::StoreU(mix<held, Pixel>(weights, taps, address), d, mixed + i * 4 + sample);
        }
    }
}

void mixPixels(const float* pixels, const int* firsts, const float* weights, int taps, bool held,
               std::size_t count, float* mixed) {
    held ? mixAllPixels<true>(pixels, firsts, weights, taps, count, mixed)
         : mixAllPixels<false>(pixels, firsts, weights, taps, count, mixed);
}

}  // namespace Corvel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Corvel {

HWY_EXPORT(mixRows);
HWY_EXPORT(mixPixels);

void mixRows(const float* const* rows, const float* weights, int taps, bool held, std::size_t count,
             float* mixed) {
    HWY_DYNAMIC_DISPATCH(mixRows)(rows, weights, taps, held, count, mixed);
}

void mixPixels(const float* pixels, const int* firsts, const float* weights, int taps, bool held,
               std::size_t count, float* mixed) {
    HWY_DYNAMIC_DISPATCH(mixPixels)(pixels, firsts, weights, taps, held, count, mixed);
}

}  // namespace Corvel
#endif
