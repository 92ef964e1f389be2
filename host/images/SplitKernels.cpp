#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/images/SplitKernels.cpp"
#include <hwy/foreach_target.h>
// Highway asks for this order: it includes this file once for every target.
#include <hwy/highway.h>

#include "host/images/SplitKernels.h"

HWY_BEFORE_NAMESPACE();
namespace Corvel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Floats = hn::ScalableTag<float>;
using Vector = hn::Vec<Floats>;

// Any number of channels, and what is left over at the end of a row.
void splitPlain(const float* pixels, int channels, std::size_t begin, std::size_t count,
                float* const* planes) {
    for (int channel = 0; channel < channels; ++channel) {
        float* plane = planes[channel];
        if (!plane) {
            continue;
        }
        for (std::size_t i = begin; i < count; ++i) {
            plane[i] = pixels[i * static_cast<std::size_t>(channels) + static_cast<std::size_t>(channel)];
        }
    }
}

void store(Vector values, float* plane, std::size_t at) {
    if (plane) {
        hn::StoreU(values, Floats(), plane + at);
    }
}

std::size_t splitThree(const float* pixels, std::size_t count, float* const* planes) {
    const Floats d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        Vector first, second, third;
        hn::LoadInterleaved3(d, pixels + 3 * i, first, second, third);
        store(first, planes[0], i);
        store(second, planes[1], i);
        store(third, planes[2], i);
    }
    return i;
}

std::size_t splitFour(const float* pixels, std::size_t count, float* const* planes) {
    const Floats d;
    std::size_t i = 0;
    for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
        Vector first, second, third, fourth;
        hn::LoadInterleaved4(d, pixels + 4 * i, first, second, third, fourth);
        store(first, planes[0], i);
        store(second, planes[1], i);
        store(third, planes[2], i);
        store(fourth, planes[3], i);
    }
    return i;
}

void splitPixels(const float* pixels, int channels, std::size_t count, float* const* planes) {
    std::size_t done = 0;
    if (channels == 3) {
        done = splitThree(pixels, count, planes);
    } else if (channels == 4) {
        done = splitFour(pixels, count, planes);
    }
    splitPlain(pixels, channels, done, count, planes);
}

}  // namespace Corvel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Corvel {

HWY_EXPORT(splitPixels);

void splitPixels(const float* pixels, int channels, std::size_t count, float* const* planes) {
    HWY_DYNAMIC_DISPATCH(splitPixels)(pixels, channels, count, planes);
}

}  // namespace Corvel
#endif
