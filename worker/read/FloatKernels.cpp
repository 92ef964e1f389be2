#include "worker/read/FloatKernels.h"

#include <algorithm>
#include <cstdint>

// Highway compiles the rest of this file once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "worker/read/FloatKernels.cpp"
#include <hwy/foreach_target.h>

#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "worker/picture/ForVectors-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Morvane::Worker::FloatKernels::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Worker::HWY_NAMESPACE::forVectors;

template <class Floats, typename Sample>
HWY_INLINE hn::Vec<Floats> load(Floats floats, const Sample* samples) {
    const hn::Rebind<std::int32_t, Floats> numbers;
    const hn::Rebind<Sample, Floats> narrow;
    return hn::ConvertTo(floats, hn::PromoteTo(numbers, hn::LoadU(narrow, samples)));
}

/// Divided and not multiplied, so that white is exactly 1.
template <class Floats, typename Sample>
HWY_INLINE hn::Vec<Floats> scaled(Floats floats, const Sample* samples, float black, float range) {
    return hn::Div(hn::Sub(load(floats, samples), hn::Set(floats, black)), hn::Set(floats, range));
}

template <class Floats>
HWY_INLINE hn::Vec<Floats> loadAlpha(Floats floats, const float* alpha, std::size_t x) {
    return alpha == nullptr ? hn::Set(floats, 1.0F) : hn::LoadU(floats, alpha + x);
}

template <typename Sample>
void scaleRow(const Sample* samples, std::size_t count, float black, float range, float* row) {
    forVectors(count, [&](auto floats, std::size_t x) {
        hn::StoreU(scaled(floats, samples + x, black, range), floats, row + x);
    });
}

template <typename Sample>
void blendRows(const WeightedRows<Sample>& rows, std::size_t count, float neutral, float* row) {
    // A single row: chroma that is not subsampled downwards, or lies where the row does.
    if (rows.used == 1 && rows.weights[0] == 1)
        return forVectors(count, [&](auto floats, std::size_t x) {
            hn::StoreU(hn::Sub(load(floats, rows.rows[0] + x), hn::Set(floats, neutral)), floats, row + x);
        });
    forVectors(count, [&](auto floats, std::size_t x) {
        auto sum = hn::Set(floats, -neutral);
        for (int i = 0; i < rows.used; ++i)
            sum = hn::MulAdd(load(floats, rows.rows[i] + x), hn::Set(floats, rows.weights[i]), sum);
        hn::StoreU(sum, floats, row + x);
    });
}

/// One of the samples that a chroma sample becomes, from the neighbours from `firstTap` on; `first` is the
/// first of all.
template <int firstTap, class Floats>
HWY_INLINE hn::Vec<Floats> interpolated(Floats floats, const float* first, const float* weights) {
    auto sum = hn::Mul(hn::LoadU(floats, first + firstTap), hn::Set(floats, weights[firstTap]));
    for (int tap = firstTap + 1; tap < ChromaInterpolation::taps; ++tap)
        sum = hn::MulAdd(hn::LoadU(floats, first + tap), hn::Set(floats, weights[tap]), sum);
    return sum;
}

void doubleRow(const float* chroma, std::size_t count, const ChromaInterpolation& interpolation, float* row) {
    const float* even = interpolation.weights[0].data();
    const float* odd = interpolation.weights[1].data();
    // The usual place of chroma samples: the even pixels' are theirs, the odd ones' have four neighbours.
    if (even[ChromaInterpolation::margin] == 1 && odd[0] == 0)
        return forVectors(count, [&](auto floats, std::size_t x) {
            hn::StoreInterleaved2(hn::LoadU(floats, chroma + x),
                                  interpolated<1>(floats, chroma + x - ChromaInterpolation::margin, odd),
                                  floats, row + 2 * x);
        });
    forVectors(count, [&](auto floats, std::size_t x) {
        const float* first = chroma + x - ChromaInterpolation::margin;
        hn::StoreInterleaved2(interpolated<0>(floats, first, even), interpolated<0>(floats, first, odd),
                              floats, row + 2 * x);
    });
}

/// Whether vectors of floats that are stored to a row one after the other can go past the caches: each must
/// begin where a vector of memory does, the last one too, which is whole and ends the row.
bool goesPastCaches(const PixelRow& row) {
    const std::size_t lanes = hn::Lanes(hn::ScalableTag<float>());
    return row.pastCaches && row.width >= lanes && 4 * row.width % lanes == 0 &&
           reinterpret_cast<std::uintptr_t>(row.rgba) % (lanes * sizeof(float)) == 0;
}

template <class Floats, class Vector = hn::Vec<Floats>>
HWY_INLINE void storePixels(Floats floats, bool pastCaches, Vector red, Vector green, Vector blue,
                            Vector alpha, float* rgba) {
    if (!pastCaches)
        return hn::StoreInterleaved4(red, green, blue, alpha, floats, rgba);
    HWY_ALIGN float pixels[4 * hn::MaxLanes(floats)];
    hn::StoreInterleaved4(red, green, blue, alpha, floats, pixels);
    for (std::size_t i = 0; i < 4 * hn::Lanes(floats); i += hn::Lanes(floats))
        hn::Stream(hn::Load(floats, pixels + i), floats, rgba + i);
}

template <typename Sample>
void ycbcrPixels(const Sample* luma, const float* cb, const float* cr, const float* alpha,
                 const YcbcrMatrix& matrix, const PixelRow& row) {
    const bool pastCaches = goesPastCaches(row);
    forVectors(row.width, [&](auto floats, std::size_t x) {
        const auto y = scaled(floats, luma + x, matrix.black, matrix.range);
        const auto u = hn::LoadU(floats, cb + x);
        const auto v = hn::LoadU(floats, cr + x);
        const auto channel = [&](const YcbcrMatrix::Chroma& weights) {
            return hn::MulAdd(v, hn::Set(floats, weights.cr), hn::MulAdd(u, hn::Set(floats, weights.cb), y));
        };
        storePixels(floats, pastCaches, channel(matrix.red), channel(matrix.green), channel(matrix.blue),
                    loadAlpha(floats, alpha, x), row.rgba + 4 * x);
    });
    hwy::FlushStream();
}

void rgbPixels(const float* red, const float* green, const float* blue, const float* alpha,
               const PixelRow& row) {
    const bool pastCaches = goesPastCaches(row);
    forVectors(row.width, [&](auto floats, std::size_t x) {
        storePixels(floats, pastCaches, hn::LoadU(floats, red + x), hn::LoadU(floats, green + x),
                    hn::LoadU(floats, blue + x), loadAlpha(floats, alpha, x), row.rgba + 4 * x);
    });
    hwy::FlushStream();
}

void scale8(const std::uint8_t* samples, std::size_t count, float black, float range, float* row) {
    scaleRow(samples, count, black, range, row);
}
void scale16(const std::uint16_t* samples, std::size_t count, float black, float range, float* row) {
    scaleRow(samples, count, black, range, row);
}
void blend8(const WeightedRows<std::uint8_t>& rows, std::size_t count, float neutral, float* row) {
    blendRows(rows, count, neutral, row);
}
void blend16(const WeightedRows<std::uint16_t>& rows, std::size_t count, float neutral, float* row) {
    blendRows(rows, count, neutral, row);
}
void ycbcr8(const std::uint8_t* luma, const float* cb, const float* cr, const float* alpha,
            const YcbcrMatrix& matrix, const PixelRow& row) {
    ycbcrPixels(luma, cb, cr, alpha, matrix, row);
}
void ycbcr16(const std::uint16_t* luma, const float* cb, const float* cr, const float* alpha,
             const YcbcrMatrix& matrix, const PixelRow& row) {
    ycbcrPixels(luma, cb, cr, alpha, matrix, row);
}

}  // namespace Morvane::Worker::FloatKernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace Morvane::Worker::FloatKernels {

HWY_EXPORT(scale8);
HWY_EXPORT(scale16);
HWY_EXPORT(blend8);
HWY_EXPORT(blend16);
HWY_EXPORT(doubleRow);
HWY_EXPORT(ycbcr8);
HWY_EXPORT(ycbcr16);
HWY_EXPORT(rgbPixels);

void scale(const std::uint8_t* samples, std::size_t count, float black, float range, float* row) {
    HWY_DYNAMIC_DISPATCH(scale8)(samples, count, black, range, row);
}
void scale(const std::uint16_t* samples, std::size_t count, float black, float range, float* row) {
    HWY_DYNAMIC_DISPATCH(scale16)(samples, count, black, range, row);
}

void blend(const WeightedRows<std::uint8_t>& rows, std::size_t count, float neutral, float* row) {
    HWY_DYNAMIC_DISPATCH(blend8)(rows, count, neutral, row);
}
void blend(const WeightedRows<std::uint16_t>& rows, std::size_t count, float neutral, float* row) {
    HWY_DYNAMIC_DISPATCH(blend16)(rows, count, neutral, row);
}

namespace {

/// For 4:1:1 and 4:1:0, which are rare.
void widenByAny(const float* chroma, std::size_t count, const ChromaInterpolation& interpolation,
                float* row) {
    const std::size_t phases = std::size_t{1} << interpolation.shift;
    for (std::size_t x = 0; x < count; ++x)
        for (std::size_t phase = 0; phase < phases; ++phase) {
            float sum = 0;
            for (std::size_t tap = 0; tap < ChromaInterpolation::taps; ++tap)
                sum += interpolation.weights[phase][tap] * (chroma + x - ChromaInterpolation::margin)[tap];
            row[x * phases + phase] = sum;
        }
}

}  // namespace

void widen(const float* chroma, std::size_t count, const ChromaInterpolation& interpolation, float* row) {
    if (interpolation.shift == 0)
        std::copy_n(chroma, count, row);
    else if (interpolation.shift == 1)
        HWY_DYNAMIC_DISPATCH(doubleRow)(chroma, count, interpolation, row);
    else
        widenByAny(chroma, count, interpolation, row);
}

void pixels(const std::uint8_t* luma, const float* cb, const float* cr, const float* alpha,
            const YcbcrMatrix& matrix, const PixelRow& row) {
    HWY_DYNAMIC_DISPATCH(ycbcr8)(luma, cb, cr, alpha, matrix, row);
}
void pixels(const std::uint16_t* luma, const float* cb, const float* cr, const float* alpha,
            const YcbcrMatrix& matrix, const PixelRow& row) {
    HWY_DYNAMIC_DISPATCH(ycbcr16)(luma, cb, cr, alpha, matrix, row);
}

void pixels(const float* red, const float* green, const float* blue, const float* alpha,
            const PixelRow& row) {
    HWY_DYNAMIC_DISPATCH(rgbPixels)(red, green, blue, alpha, row);
}

}  // namespace Morvane::Worker::FloatKernels

#endif
