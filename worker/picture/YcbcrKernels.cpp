#include "worker/picture/YcbcrKernels.h"

// Highway compiles the rest of this file once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "worker/picture/YcbcrKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "worker/picture/ForVectors-inl.h"
#include "worker/picture/Rounded-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Morvane::Worker::YcbcrKernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Worker::HWY_NAMESPACE::forVectors;
using Worker::HWY_NAMESPACE::rounded;

template <class Floats, class Vector>
HWY_INLINE Vector limited(Floats floats, Vector value, float lowest, float highest) {
    return hn::Min(hn::Max(value, hn::Set(floats, lowest)), hn::Set(floats, highest));
}

/// To the nearest sample, half to even.
template <typename Sample, class Floats, class Vector>
HWY_INLINE void storeSamples(Floats floats, Vector value, const SampleForm& form, Sample* samples) {
    const hn::Rebind<Sample, Floats> narrow;
    hn::StoreU(hn::DemoteTo(narrow, hn::NearestInt(limited(floats, value, form.lowest, form.highest))),
               narrow, samples);
}

/// Floats; the frame comes out of memory, and the processor does not look as far ahead by itself.
constexpr std::size_t ahead = 512;
constexpr std::size_t floatsOfLine = 16;

/// Some pixels: luma, and chroma off neutral.
template <class Vector>
struct Components {
    Vector luma, cb, cr, alpha;
};

template <class Floats>
HWY_INLINE auto loadPixels(Floats floats, const float* rgba, const SampleForm& form) {
    for (std::size_t line = 0; line < 4 * hn::Lanes(floats); line += floatsOfLine)
        hwy::Prefetch(rgba + ahead + line);
    hn::Vec<Floats> red, green, blue, alpha;
    hn::LoadInterleaved4(floats, rgba, red, green, blue, alpha);
    const auto channel = [&](auto value) __attribute__((always_inline)) {
        return limited(floats, hn::IfThenZeroElse(hn::IsNaN(value), value), form.lowestRgb, form.highestRgb);
    };
    red = channel(red);
    green = channel(green);
    blue = channel(blue);
    const auto light =
        hn::MulAdd(green, hn::Set(floats, form.green),
                   hn::MulAdd(red, hn::Set(floats, form.red), hn::Mul(blue, hn::Set(floats, form.blue))));
    return Components<hn::Vec<Floats>>{
        hn::MulAdd(light, hn::Set(floats, form.lumaScale), hn::Set(floats, form.black)),
        hn::Mul(hn::Sub(blue, light), hn::Set(floats, form.cbScale)),
        hn::Mul(hn::Sub(red, light), hn::Set(floats, form.crScale)), alpha};
}

template <typename Sample>
void splitRow(const float* rgba, std::size_t width, const SampleForm& form, Sample* luma, float* cb,
              float* cr) {
    forVectors(
        width, [&](auto floats, std::size_t x) __attribute__((always_inline)) {
            const auto pixels = loadPixels(floats, rgba + 4 * x, form);
            storeSamples(floats, pixels.luma, form, luma + x);
            hn::StoreU(pixels.cb, floats, cb + x);
            hn::StoreU(pixels.cr, floats, cr + x);
        });
}

template <typename Sample>
void convertRow(const float* rgba, std::size_t width, const SampleForm& form, const WholeRow<Sample>& row) {
    forVectors(
        width, [&](auto floats, std::size_t x) __attribute__((always_inline)) {
            const auto neutral = hn::Set(floats, form.neutral);
            const auto pixels = loadPixels(floats, rgba + 4 * x, form);
            storeSamples(floats, pixels.luma, form, row.luma + x);
            storeSamples(floats, hn::Add(pixels.cb, neutral), form, row.cb + x);
            storeSamples(floats, hn::Add(pixels.cr, neutral), form, row.cr + x);
            if (row.alpha != nullptr) {
                const hn::Rebind<Sample, decltype(floats)> narrow;
                hn::StoreU(hn::DemoteTo(narrow, rounded(floats, pixels.alpha, row.highestAlpha)), narrow,
                           row.alpha + x);
            }
        });
}

/// One value out of two. Pairs are taken apart, so that every load gives the neighbours for two taps.
void halve(const float* values, std::size_t count, const ChromaReduction& reduction, float* row) {
    constexpr int taps = 8;  // from 3 before to 4 behind
    const float* const weights = reduction.weights.data();
    // Where samples lie on values, the others at even distances have no weight.
    if (weights[1] == 0 && weights[5] == 0 && weights[7] == 0)
        return forVectors(
            count, [&](auto floats, std::size_t x) __attribute__((always_inline)) {
                const float* const values0 = values + 2 * x;
                hn::Vec<decltype(floats)> even, before3, before1, after1, after3, middle;
                hn::LoadInterleaved2(floats, values0 - 4, even, before3);
                hn::LoadInterleaved2(floats, values0 - 2, even, before1);
                hn::LoadInterleaved2(floats, values0, middle, after1);
                hn::LoadInterleaved2(floats, values0 + 2, even, after3);
                const auto outer = hn::Mul(hn::Add(before3, after3), hn::Set(floats, weights[0]));
                const auto inner = hn::MulAdd(hn::Add(before1, after1), hn::Set(floats, weights[2]), outer);
                hn::StoreU(hn::MulAdd(middle, hn::Set(floats, weights[3]), inner), floats, row + x);
            });
    forVectors(
        count, [&](auto floats, std::size_t x) __attribute__((always_inline)) {
            hn::Vec<decltype(floats)> even, odd;
            hn::LoadInterleaved2(floats, values + 2 * x - 4, even, odd);
            auto sum = hn::Mul(odd, hn::Set(floats, weights[0]));
            for (int tap = 1; tap < taps - 1; tap += 2) {
                hn::LoadInterleaved2(floats, values + 2 * x - 3 + tap, even, odd);
                sum = hn::MulAdd(even, hn::Set(floats, weights[tap]), sum);
                sum = hn::MulAdd(odd, hn::Set(floats, weights[tap + 1]), sum);
            }
            hn::LoadInterleaved2(floats, values + 2 * x + 4, even, odd);
            hn::StoreU(hn::MulAdd(even, hn::Set(floats, weights[taps - 1]), sum), floats, row + x);
        });
}

template <typename Sample>
void storeRow(const float* const* rows, const float* weights, int used, std::size_t count,
              const SampleForm& form, Sample* samples) {
    forVectors(
        count, [&](auto floats, std::size_t x) __attribute__((always_inline)) {
            auto sum = hn::Set(floats, form.neutral);
            for (int i = 0; i < used; ++i)
                sum = hn::MulAdd(hn::LoadU(floats, rows[i] + x), hn::Set(floats, weights[i]), sum);
            storeSamples(floats, sum, form, samples + x);
        });
}

void split8(const float* rgba, std::size_t width, const SampleForm& form, std::uint8_t* luma, float* cb,
            float* cr) {
    splitRow(rgba, width, form, luma, cb, cr);
}
void split16(const float* rgba, std::size_t width, const SampleForm& form, std::uint16_t* luma, float* cb,
             float* cr) {
    splitRow(rgba, width, form, luma, cb, cr);
}
void convert8(const float* rgba, std::size_t width, const SampleForm& form,
              const WholeRow<std::uint8_t>& row) {
    convertRow(rgba, width, form, row);
}
void convert16(const float* rgba, std::size_t width, const SampleForm& form,
               const WholeRow<std::uint16_t>& row) {
    convertRow(rgba, width, form, row);
}
void store8(const float* const* rows, const float* weights, int used, std::size_t count,
            const SampleForm& form, std::uint8_t* samples) {
    storeRow(rows, weights, used, count, form, samples);
}
void store16(const float* const* rows, const float* weights, int used, std::size_t count,
             const SampleForm& form, std::uint16_t* samples) {
    storeRow(rows, weights, used, count, form, samples);
}

}  // namespace Morvane::Worker::YcbcrKernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Morvane::Worker::YcbcrKernels {

HWY_EXPORT(split8);
HWY_EXPORT(split16);
HWY_EXPORT(convert8);
HWY_EXPORT(convert16);
HWY_EXPORT(halve);
HWY_EXPORT(store8);
HWY_EXPORT(store16);

void split(const float* rgba, std::size_t width, const SampleForm& form, std::uint8_t* luma, float* cb,
           float* cr) {
    HWY_DYNAMIC_DISPATCH(split8)(rgba, width, form, luma, cb, cr);
}
void split(const float* rgba, std::size_t width, const SampleForm& form, std::uint16_t* luma, float* cb,
           float* cr) {
    HWY_DYNAMIC_DISPATCH(split16)(rgba, width, form, luma, cb, cr);
}

void convert(const float* rgba, std::size_t width, const SampleForm& form,
             const WholeRow<std::uint8_t>& row) {
    HWY_DYNAMIC_DISPATCH(convert8)(rgba, width, form, row);
}
void convert(const float* rgba, std::size_t width, const SampleForm& form,
             const WholeRow<std::uint16_t>& row) {
    HWY_DYNAMIC_DISPATCH(convert16)(rgba, width, form, row);
}

namespace {

constexpr int firstOfHalve = -3;

/// For 4:1:1 and 4:1:0, which are rare.
void reduceByAny(const float* values, std::size_t count, const ChromaReduction& reduction, float* row) {
    for (std::size_t x = 0; x < count; ++x) {
        const float* const first = values + (x << reduction.shift) + reduction.first;
        float sum = 0;
        for (int tap = 0; tap < reduction.taps; ++tap)
            sum += reduction.weights[static_cast<std::size_t>(tap)] * first[tap];
        row[x] = sum;
    }
}

}  // namespace

void reduce(const float* values, std::size_t count, const ChromaReduction& reduction, float* row) {
    if (reduction.shift == 1 && reduction.first == firstOfHalve)
        HWY_DYNAMIC_DISPATCH(halve)(values, count, reduction, row);
    else
        reduceByAny(values, count, reduction, row);
}

void store(const float* const* rows, const float* weights, int used, std::size_t count,
           const SampleForm& form, std::uint8_t* samples) {
    HWY_DYNAMIC_DISPATCH(store8)(rows, weights, used, count, form, samples);
}
void store(const float* const* rows, const float* weights, int used, std::size_t count,
           const SampleForm& form, std::uint16_t* samples) {
    HWY_DYNAMIC_DISPATCH(store16)(rows, weights, used, count, form, samples);
}

}  // namespace Morvane::Worker::YcbcrKernels

#endif
