// Part of sources that Highway compiles once for each instruction set; so it may be included again for each.
#if defined(WORKER_PICTURE_FOR_VECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef WORKER_PICTURE_FOR_VECTORS_INL_H
#undef WORKER_PICTURE_FOR_VECTORS_INL_H
#else
#define WORKER_PICTURE_FOR_VECTORS_INL_H
#endif

#include <hwy/highway.h>

#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace Morvane::Worker::HWY_NAMESPACE {

/// Calls `work(tag, x)` for vectors of floats that together cover 0…count. The last one overlaps the one
/// before; rows shorter than a vector are done value by value. So `work` must not read what it has written.
template <class Work>
HWY_INLINE void forVectors(std::size_t count, const Work& work) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::ScalableTag<float> whole;
    const std::size_t step = hn::Lanes(whole);
    if (count < step) {
        const hn::CappedTag<float, 1> single;
        for (std::size_t x = 0; x < count; ++x)
            work(single, x);
        return;
    }
    for (std::size_t x = 0; x + step <= count; x += step)
        work(whole, x);
    if (count % step != 0)
        work(whole, count - step);
}

}  // namespace Morvane::Worker::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
