// Part of sources that Highway compiles once for each instruction set; so it may be included again for each.
#if defined(WORKER_PICTURE_ROUNDED_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef WORKER_PICTURE_ROUNDED_INL_H
#undef WORKER_PICTURE_ROUNDED_INL_H
#else
#define WORKER_PICTURE_ROUNDED_INL_H
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Morvane::Worker::HWY_NAMESPACE {

/// 0…1 as whole numbers 0…highest, rounded from the exact product, which a float cannot hold. As `highest` +
/// 1 is a power of two, multiplying by that is exact, and so is what is left after the first guess is taken
/// away. What is not a number is 0.
template <class Floats, class Vector>
HWY_INLINE auto rounded(Floats floats, Vector value, float highest) {
    namespace hn = hwy::HWY_NAMESPACE;
    const auto number = hn::IfThenZeroElse(hn::IsNaN(value), value);
    const auto limited = hn::Min(hn::Max(number, hn::Zero(floats)), hn::Set(floats, 1.0F));
    const auto scaled = hn::Mul(limited, hn::Set(floats, highest + 1.0F));
    const auto guess = hn::Round(hn::Sub(scaled, limited));
    const auto rest = hn::Sub(scaled, guess);
    const auto one = hn::Set(floats, 1.0F);
    const auto half = hn::Set(floats, 0.5F);
    const auto up = hn::IfThenElseZero(hn::Gt(hn::Sub(rest, half), limited), one);
    const auto down = hn::IfThenElseZero(hn::Lt(hn::Add(rest, half), limited), one);
    return hn::NearestInt(hn::Sub(hn::Add(guess, up), down));
}

}  // namespace Morvane::Worker::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
