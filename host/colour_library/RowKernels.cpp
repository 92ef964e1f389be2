#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/colour_library/RowKernels.cpp"
#include <hwy/foreach_target.h>
// Highway asks for this order: it includes this file once for every target.
#include <hwy/highway.h>

#include <algorithm>
#include <bit>
#include <cstdint>

#include "host/colour_library/RowKernels.h"

HWY_BEFORE_NAMESPACE();
namespace Corvel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Floats = hn::ScalableTag<float>;
using Integers = hn::RebindToSigned<Floats>;
using Vector = hn::Vec<Floats>;

// Runs `whole` for every full vector and once more for what is left over, through a padded copy.
template <typename Function>
void overSamples(float* samples, std::size_t count, Function whole) {
    const Floats d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(whole(hn::LoadU(d, samples + i)), d, samples + i);
    }
    if (i < count) {
        HWY_ALIGN float rest[hn::MaxLanes(Floats())] = {};
        std::copy(samples + i, samples + count, rest);
        hn::StoreU(whole(hn::LoadU(d, rest)), d, rest);
        std::copy(rest, rest + (count - i), samples + i);
    }
}

// The line's value in each lane's cell, `part` of the way through it. A cell is fetched as one number of
// twice the size: half as many fetches as for its two numbers one by one.
Vector lookUp(const CurveCell* cells, hn::Vec<Integers> cell, Vector part) {
    const Floats d;
#if HWY_TARGET == HWY_SCALAR
    const CurveCell& found = cells[hn::GetLane(cell)];
    return hn::MulAdd(part, hn::Set(d, found.rise), hn::Set(d, found.value));
#else
    const hn::ScalableTag<double> pairs;
    const hn::ScalableTag<std::int64_t> wide;
    const hn::Half<Integers> half;
    const auto* const table = reinterpret_cast<const double*>(cells);
    const auto fetch = [&](auto some) HWY_ATTR {
        return hn::BitCast(d, hn::GatherIndex(pairs, table, hn::PromoteTo(wide, some)));
    };
    const Vector lower = fetch(hn::LowerHalf(half, cell));
    const Vector upper = fetch(hn::UpperHalf(half, cell));
    return hn::MulAdd(part, hn::ConcatOdd(d, upper, lower), hn::ConcatEven(d, upper, lower));
#endif
}

void applyCurve(const CurveCells& curve, float* samples, std::size_t count) {
    const Floats d;
    const Integers di;
    const int shift = 23 - curve.division.mantissaBits;
    const std::int32_t lowest = (127 + curve.division.lowest) << 23;
    const std::int32_t highest = (127 + curve.division.highest) << 23;
    const auto first = hn::Set(di, lowest);
    // The upper end itself is the end of the last cell.
    const auto last = hn::Set(di, highest - 1);
    const auto mask = hn::Set(di, (1 << shift) - 1);
    const Vector scale = hn::Set(d, 1.0F / static_cast<float>(1 << shift));
    const auto magnitude = hn::Set(di, 0x7FFF'FFFF);
    // Both signs lie in one piece of memory, the negative values behind the others.
    const auto negative = hn::Set(di, static_cast<std::int32_t>(curve.negative - curve.positive));
    overSamples(samples, count, [&](Vector x) HWY_ATTR {
        const auto bits = hn::BitCast(di, x);
        const auto clamped = hn::Min(hn::Max(hn::And(bits, magnitude), first), last);
        const auto offset = hn::Sub(clamped, first);
        const auto sign = hn::And(hn::BroadcastSignBit(bits), negative);
        const auto cell = hn::Add(hn::ShiftRightSame(offset, shift), sign);
        const Vector part = hn::Mul(hn::ConvertTo(d, hn::And(offset, mask)), scale);
        return lookUp(curve.positive, cell, part);
    });
}

void applyMatrix(const ColourMatrix& matrix, float* red, float* green, float* blue, std::size_t count) {
    const Floats d;
    const std::size_t lanes = hn::Lanes(d);
    const float* const m = matrix.cells;
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const Vector r = hn::LoadU(d, red + i);
        const Vector g = hn::LoadU(d, green + i);
        const Vector b = hn::LoadU(d, blue + i);
        const auto colour = [&](int row) HWY_ATTR {
            const float* const cells = m + 3 * row;
            const Vector sum = hn::MulAdd(hn::Set(d, cells[0]), r, hn::Set(d, matrix.offsets[row]));
            return hn::MulAdd(hn::Set(d, cells[2]), b, hn::MulAdd(hn::Set(d, cells[1]), g, sum));
        };
        hn::StoreU(colour(0), d, red + i);
        hn::StoreU(colour(1), d, green + i);
        hn::StoreU(colour(2), d, blue + i);
    }
    for (; i < count; ++i) {
        const float r = red[i], g = green[i], b = blue[i];
        red[i] = m[0] * r + m[1] * g + m[2] * b + matrix.offsets[0];
        green[i] = m[3] * r + m[4] * g + m[5] * b + matrix.offsets[1];
        blue[i] = m[6] * r + m[7] * g + m[8] * b + matrix.offsets[2];
    }
}

void packPixels(const float* red, const float* green, const float* blue, std::size_t count, float* pixels) {
    const Floats d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::StoreInterleaved4(hn::LoadU(d, red + i), hn::LoadU(d, green + i), hn::LoadU(d, blue + i),
                              hn::Set(d, 1.0F), d, pixels + 4 * i);
    }
    for (; i < count; ++i) {
        pixels[4 * i] = red[i];
        pixels[4 * i + 1] = green[i];
        pixels[4 * i + 2] = blue[i];
        pixels[4 * i + 3] = 1.0F;
    }
}

void unpackPixels(const float* pixels, std::size_t count, float* red, float* green, float* blue) {
    const Floats d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        Vector r, g, b, a;
        hn::LoadInterleaved4(d, pixels + 4 * i, r, g, b, a);
        hn::StoreU(r, d, red + i);
        hn::StoreU(g, d, green + i);
        hn::StoreU(b, d, blue + i);
    }
    for (; i < count; ++i) {
        red[i] = pixels[4 * i];
        green[i] = pixels[4 * i + 1];
        blue[i] = pixels[4 * i + 2];
    }
}

}  // namespace Corvel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Corvel {

HWY_EXPORT(applyMatrix);
HWY_EXPORT(applyCurve);
HWY_EXPORT(packPixels);
HWY_EXPORT(unpackPixels);

void applyMatrix(const ColourMatrix& matrix, float* red, float* green, float* blue, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(applyMatrix)(matrix, red, green, blue, count);
}

void applyCurve(const CurveCells& curve, float* samples, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(applyCurve)(curve, samples, count);
}

void packPixels(const float* red, const float* green, const float* blue, std::size_t count, float* pixels) {
    HWY_DYNAMIC_DISPATCH(packPixels)(red, green, blue, count, pixels);
}

void unpackPixels(const float* pixels, std::size_t count, float* red, float* green, float* blue) {
    HWY_DYNAMIC_DISPATCH(unpackPixels)(pixels, count, red, green, blue);
}

}  // namespace Corvel
#endif
