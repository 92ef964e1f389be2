#include "Kex/Image/CurveKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

// This file is compiled once for each instruction set: foreach_target.h includes it again and again.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "Kex/Image/CurveKernels.cpp"
#include <hwy/foreach_target.h>
// After foreach_target.h, as the library demands.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Kex::Image::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using Floats = hn::ScalableTag<float>;
using Ints = hn::RebindToSigned<Floats>;
using V = hn::Vec<Floats>;
using VI = hn::Vec<Ints>;
constexpr Floats f;
constexpr Ints i;

HWY_INLINE V set(double value) {
    return hn::Set(f, static_cast<float>(value));
}

/// A constant as the sum of two floats, the first with 12 significant bits: its product with a number of no
/// more is exact, on processors without fused multiplication too.
struct Split {
    explicit Split(double value)
        : high(std::bit_cast<float>(std::bit_cast<std::uint32_t>(static_cast<float>(value)) & upperBits)),
          low(static_cast<float>(value - static_cast<double>(high))) {}

    static constexpr std::uint32_t upperBits = 0xfffff000;
    float high;
    float low;
};

/// The same of every lane: `high` is what is left with 12 significant bits.
HWY_INLINE V upperHalf(V x) {
    const hn::RebindToUnsigned<Floats> u;
    return hn::BitCast(f, hn::And(hn::BitCast(u, x), hn::Set(u, Split::upperBits)));
}

/// x = 2^exponent (1 + t), t from sqrt(1/2) - 1 to sqrt(2) - 1.
struct Parts {
    V exponent;
    V t;
};

HWY_INLINE Parts split(V x) {
    constexpr std::int32_t bitsOfRootHalf = 0x3f3504f3;
    const VI bits = hn::BitCast(i, x);
    const VI exponent = hn::ShiftRight<23>(hn::Sub(bits, hn::Set(i, bitsOfRootHalf)));
    const V mantissa = hn::BitCast(f, hn::Sub(bits, hn::ShiftLeft<23>(exponent)));
    return {hn::ConvertTo(f, exponent), hn::Sub(mantissa, hn::Set(f, 1.0F))};
}

/// factor log2(1 + t) + addend for the t of `split`. Minimax polynomial, error 5e-8 factor.
class Log2 {
public:
    explicit HWY_INLINE Log2(double factor)
        : c0(set(factor * 1.44269477243)),
          c1(set(factor * -0.721357148692)),
          c2(set(factor * 0.480939444393)),
          c3(set(factor * -0.360087223099)),
          c4(set(factor * 0.28670746002)),
          c5(set(factor * -0.250068977406)),
          c6(set(factor * 0.236890370902)),
          c7(set(factor * -0.14574465946)) {}

    HWY_INLINE V operator()(V t, V addend) const {
        const V t2 = hn::Mul(t, t);
        const V low = hn::MulAdd(t2, hn::MulAdd(c3, t, c2), hn::MulAdd(c1, t, c0));
        const V high = hn::MulAdd(t2, hn::MulAdd(c7, t, c6), hn::MulAdd(c5, t, c4));
        return hn::MulAdd(t, hn::MulAdd(hn::Mul(t2, t2), high, low), addend);
    }

private:
    V c0, c1, c2, c3, c4, c5, c6, c7;
};

/// 2^fraction for -0.5 to 0.5, exactly 1 at 0. Minimax polynomial, relative error 1e-7.
class Exp2 {
public:
    HWY_INLINE Exp2()
        : one(set(1)),
          c1(set(0.69314697761)),
          c2(set(0.240222420861)),
          c3(set(0.0555073372426)),
          c4(set(0.00967151264301)),
          c5(set(0.00132647333314)) {}

    HWY_INLINE V operator()(V fraction) const {
        const V square = hn::Mul(fraction, fraction);
        const V low = hn::MulAdd(c1, fraction, one);
        const V middle = hn::MulAdd(c3, fraction, c2);
        const V high = hn::MulAdd(c5, fraction, c4);
        return hn::MulAdd(square, hn::MulAdd(square, high, middle), low);
    }

private:
    V one, c1, c2, c3, c4, c5;
};

HWY_INLINE V powerOfTwo(VI whole) {
    return hn::BitCast(f, hn::ShiftLeft<23>(hn::Add(whole, hn::Set(i, 127))));
}

/// x 2^whole for a whole number and an x near 1, in two steps, so that no step leaves the range of floats
/// before the result does.
HWY_INLINE V scaled(V x, V whole) {
    const VI exponent = hn::ConvertTo(i, hn::Min(hn::Max(whole, hn::Set(f, -252.0F)), hn::Set(f, 254.0F)));
    const VI half = hn::ShiftRight<1>(exponent);
    return hn::Mul(hn::Mul(x, powerOfTwo(half)), powerOfTwo(hn::Sub(exponent, half)));
}

HWY_INLINE V infinity() {
    return hn::Set(f, std::numeric_limits<float>::infinity());
}

class Copy {
public:
    HWY_INLINE V operator()(V x) const { return x; }
};

/// With isRoot the exponent is below 1 and the argument is the magnitude itself.
template <bool isRoot>
class Power {
public:
    explicit HWY_INLINE Power(const PowerFormula& formula)
        : log2(formula.exponent),
          exp2(),
          exponentHigh(hn::Set(f, Split(formula.exponent).high)),
          exponentLow(hn::Set(f, Split(formula.exponent).low)),
          lineEnd(hn::Set(f, notAbove(formula.lineEnd))),
          slope(set(formula.slope)),
          gain(set(formula.gain)),
          lift(set(formula.lift)),
          scale(set(formula.scale)),
          offset(set(formula.offset)),
          roundingShift(set(0x1.8p23)) {}

    HWY_INLINE V operator()(V x) const {
        const V magnitude = hn::Abs(x);
        const Parts parts = split(isRoot ? magnitude : hn::MulAdd(magnitude, gain, lift));
        // The logarithm is exponent * e + l; its whole part is taken off exactly before anything is rounded.
        const V l = log2(parts.t, hn::Mul(parts.exponent, exponentLow));
        const V logarithm = hn::MulAdd(parts.exponent, exponentHigh, l);
        V power;
        if constexpr (isRoot) {
            // Far from the ends of the range: adding 1.5 * 2^23 rounds and leaves the whole part in the low
            // bits.
            const V shifted = hn::Add(logarithm, roundingShift);
            const V fraction =
                hn::Add(hn::MulSub(parts.exponent, exponentHigh, hn::Sub(shifted, roundingShift)), l);
            power = hn::BitCast(
                f, hn::Add(hn::BitCast(i, exp2(fraction)), hn::ShiftLeft<23>(hn::BitCast(i, shifted))));
        } else {
            const V whole = hn::Round(logarithm);
            const V fraction = hn::Add(hn::MulSub(parts.exponent, exponentHigh, whole), l);
            power = scaled(exp2(fraction), whole);
        }
        // Infinities and NaN take the line, which keeps them what they are.
        const auto onPower = hn::And(hn::Gt(magnitude, lineEnd), hn::Lt(magnitude, infinity()));
        const V y = hn::IfThenElse(onPower, hn::MulAdd(power, scale, offset), hn::Mul(magnitude, slope));
        return hn::CopySignToAbs(y, x);
    }

private:
    /// The largest float that is not above the limit, so that comparing floats with it is comparing with the
    /// limit.
    static float notAbove(double limit) {
        const auto nearest = static_cast<float>(limit);
        return static_cast<double>(nearest) <= limit ? nearest : std::nextafterf(nearest, -1.0F);
    }

    Log2 log2;
    Exp2 exp2;
    V exponentHigh, exponentLow;
    V lineEnd, slope, gain, lift, scale, offset, roundingShift;
};

class Log {
public:
    explicit HWY_INLINE Log(const LogFormula& formula)
        : log2(formula.density),
          density(set(formula.density)),
          lift(set(1 / formula.gain)),
          shift(set(formula.density * std::log2(formula.gain))),
          black(set(formula.black)) {}

    HWY_INLINE V operator()(V x) const {
        const V magnitude = hn::Abs(x);
        // log2(gain x + 1) as log2(x + 1/gain) + log2(gain), which cannot overflow.
        const Parts parts = split(hn::Add(magnitude, lift));
        const V y = log2(parts.t, hn::MulAdd(parts.exponent, density, shift));
        const V mirrored = hn::Add(black, hn::Or(y, hn::And(hn::SignBit(f), x)));
        return hn::IfThenElse(hn::Lt(magnitude, infinity()), mirrored, x);
    }

private:
    Log2 log2;
    V density, lift, shift, black;
};

class InverseLog {
public:
    explicit HWY_INLINE InverseLog(const LogFormula& formula)
        : exp2(),
          rateHigh(hn::Set(f, Split(1 / formula.density).high)),
          rateLow(hn::Set(f, Split(1 / formula.density).low)),
          black(set(formula.black)),
          shift(set(formula.black / formula.density)),
          scale(set(1 / formula.gain)) {}

    HWY_INLINE V operator()(V v) const {
        const V sign = hn::And(hn::SignBit(f), hn::Sub(v, black));
        const V mirrored = hn::Xor(v, sign);
        // The whole part of rate v is taken off before anything is rounded.
        const V upper = upperHalf(mirrored);
        const V rest = hn::MulAdd(hn::Sub(mirrored, upper), rateHigh,
                                  hn::MulSub(mirrored, rateLow, hn::Xor(shift, sign)));
        const V whole = hn::Round(hn::MulAdd(upper, rateHigh, rest));
        const V fraction = hn::Add(hn::MulSub(upper, rateHigh, whole), rest);
        const V power = scaled(hn::Mul(exp2(fraction), scale), whole);
        const V x = hn::Xor(hn::Sub(power, scale), sign);
        return hn::IfThenElse(hn::Lt(hn::Abs(v), infinity()), x, v);
    }

private:
    Exp2 exp2;
    V rateHigh, rateLow, black, shift, scale;
};

/// What every kernel runs in: whole vectors to a stride of 1 or 4, and the rest, or any other stride, in
/// small pieces.
template <typename Kernel>
class Runner {
public:
    explicit HWY_INLINE Runner(const Kernel& sampleKernel) : kernel(sampleKernel) {}

    HWY_INLINE void operator()(const FloatRun& run) const {
        std::size_t done = 0;
        if (run.stride == 1) {
            for (; done + lanes <= run.count; done += lanes) {
                hwy::Prefetch(run.from + std::min(done + ahead, run.count));
                hn::StoreU(kernel(hn::LoadU(f, run.from + done)), f, run.to + done);
            }
        } else if (run.stride == 4 && lanes >= 4) {
            // Not the last samples: what stands behind them may not be the caller's.
            for (; done + lanes < run.count; done += lanes) {
                hwy::Prefetch(run.from + std::min(done + ahead, run.count));
                prefetchPixels(run.to + std::min(4 * done + ahead, 4 * (run.count - lanes)));
                interleave(kernel(hn::LoadU(f, run.from + done)), run.to + 4 * done);
            }
        }
        for (; done < run.count; done += lanes) {
            piece(run, done, std::min(lanes, run.count - done));
        }
    }

private:
    /// How far ahead memory is asked for, in floats: the processor's own look-ahead stops at the end of each
    /// page, and the interleaved row of a wide picture doesn't stay in the nearest cache from one channel to
    /// the next.
    static constexpr std::size_t ahead = 256;

    HWY_INLINE void prefetchPixels(const float* pixels) const {
        for (std::size_t quarter = 0; quarter < 4; ++quarter) {
            hwy::Prefetch(pixels + quarter * lanes);
        }
    }

    /// Sets every fourth of 4 x lanes floats to the lanes of y. Reads and writes them all: single floats cost
    /// several times as much, and so do masked stores on processors that are not the newest.
    HWY_INLINE void interleave(V y, float* to) const {
        for (std::size_t quarter = 0; quarter < 4; ++quarter) {
            float* const place = to + quarter * lanes;
            const VI source =
                hn::Add(hn::ShiftRight<2>(hn::Iota(i, 0)), hn::Set(i, static_cast<int>(quarter * lanes / 4)));
            const V spread = hn::TableLookupLanes(y, hn::IndicesFromVec(f, source));
            const auto ours = hn::RebindMask(f, hn::Eq(hn::And(hn::Iota(i, 0), hn::Set(i, 3)), hn::Zero(i)));
            hn::StoreU(hn::IfThenElse(ours, spread, hn::LoadU(f, place)), f, place);
        }
    }

    HWY_INLINE void piece(const FloatRun& run, std::size_t done, std::size_t count) const {
        HWY_ALIGN float samples[hn::MaxLanes(f)] = {};
        std::copy_n(run.from + done, count, samples);
        hn::Store(kernel(hn::Load(f, samples)), f, samples);
        for (std::size_t sample = 0; sample < count; ++sample) {
            run.to[(done + sample) * run.stride] = samples[sample];
        }
    }

    const std::size_t lanes = hn::Lanes(f);
    Kernel kernel;
};

template <typename Kernel>
HWY_INLINE void runKernel(const Kernel& kernel, const FloatRun& run) {
    Runner<Kernel>{kernel}(run);
}

void copy(const FloatRun& run) {
    runKernel(Copy{}, run);
}

void root(const PowerFormula& formula, const FloatRun& run) {
    runKernel(Power<true>(formula), run);
}

void power(const PowerFormula& formula, const FloatRun& run) {
    runKernel(Power<false>(formula), run);
}

void log(const LogFormula& formula, const FloatRun& run) {
    runKernel(Log(formula), run);
}

void inverseLog(const LogFormula& formula, const FloatRun& run) {
    runKernel(InverseLog(formula), run);
}

}  // namespace Kex::Image::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kex::Image {

HWY_EXPORT(copy);
HWY_EXPORT(root);
HWY_EXPORT(power);
HWY_EXPORT(log);
HWY_EXPORT(inverseLog);

void copyRun(const FloatRun& run) {
    HWY_DYNAMIC_DISPATCH(copy)(run);
}

void applyPower(const PowerFormula& formula, const FloatRun& run) {
    if (formula.exponent < 1 && formula.gain == 1 && formula.lift == 0) {
        HWY_DYNAMIC_DISPATCH(root)(formula, run);
    } else {
        HWY_DYNAMIC_DISPATCH(power)(formula, run);
    }
}

void applyLog(const LogFormula& formula, const FloatRun& run) {
    HWY_DYNAMIC_DISPATCH(log)(formula, run);
}

void applyInverseLog(const LogFormula& formula, const FloatRun& run) {
    HWY_DYNAMIC_DISPATCH(inverseLog)(formula, run);
}

}  // namespace Kex::Image
#endif
