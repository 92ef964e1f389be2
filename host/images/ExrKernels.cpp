#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/images/ExrKernels.cpp"
#include <hwy/foreach_target.h>
// Highway asks for this order: it includes this file once for every target.
#include <hwy/highway.h>

#include <cstring>

#include "host/images/ExrKernels.h"

HWY_BEFORE_NAMESPACE();
namespace Corvel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Processors without 16-byte vectors, and the last few samples of a row.
namespace plain {

void sumDifferences(std::uint8_t* bytes, std::size_t begin, std::size_t count) {
    for (std::size_t i = begin; i < count; ++i) {
        bytes[i] = static_cast<std::uint8_t>(bytes[i - 1] + bytes[i] - 128);
    }
}

void joinBytes(const std::uint8_t* even, const std::uint8_t* odd, std::uint8_t* to, std::size_t begin,
               std::size_t count) {
    for (std::size_t i = begin; i < count; ++i) {
        to[2 * i] = even[i];
        to[2 * i + 1] = odd[i];
    }
}

}  // namespace plain

#if HWY_TARGET == HWY_SCALAR

void sumDifferences(std::uint8_t* bytes, std::size_t count) {
    plain::sumDifferences(bytes, 1, count);
}

void joinBytes(const std::uint8_t* even, const std::uint8_t* odd, std::uint8_t* to, std::size_t count) {
    plain::joinBytes(even, odd, to, 0, count);
}

#else

// The running sum of 16 bytes is made in four doublings; longer vectors would need steps across their 128-bit
// blocks.
void sumDifferences(std::uint8_t* bytes, std::size_t count) {
    const hn::FixedTag<std::uint8_t, 16> d;
    const auto bias = hn::Set(d, 128);
    std::size_t i = 1;
    auto carry = hn::Set(d, count > 0 ? bytes[0] : std::uint8_t{0});
    for (; i + 16 <= count; i += 16) {
        auto sum = hn::Sub(hn::LoadU(d, bytes + i), bias);
        sum = hn::Add(sum, hn::ShiftLeftBytes<1>(sum));
        sum = hn::Add(sum, hn::ShiftLeftBytes<2>(sum));
        sum = hn::Add(sum, hn::ShiftLeftBytes<4>(sum));
        sum = hn::Add(sum, hn::ShiftLeftBytes<8>(sum));
        // What this block adds is known without waiting for the sum of the blocks before.
        const auto total = hn::TableLookupBytes(sum, hn::Set(d, 15));
        hn::StoreU(hn::Add(sum, carry), d, bytes + i);
        carry = hn::Add(carry, total);
    }
    plain::sumDifferences(bytes, i, count);
}

void joinBytes(const std::uint8_t* even, const std::uint8_t* odd, std::uint8_t* to, std::size_t count) {
    const hn::FixedTag<std::uint8_t, 16> d;
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const auto first = hn::LoadU(d, even + i);
        const auto second = hn::LoadU(d, odd + i);
        hn::StoreU(hn::InterleaveLower(d, first, second), d, to + 2 * i);
        hn::StoreU(hn::InterleaveUpper(d, first, second), d, to + 2 * i + 16);
    }
    plain::joinBytes(even, odd, to, i, count);
}

#endif

// One vector of floats out of as many low and high bytes.
template <class D>
auto joined(D d, const std::uint8_t* low, const std::uint8_t* high) {
    const hn::Rebind<std::uint16_t, D> words;
    const hn::Rebind<std::uint8_t, D> octets;
    const hn::Rebind<hwy::float16_t, D> halves;
    const auto word = hn::Or(hn::PromoteTo(words, hn::LoadU(octets, low)),
                             hn::ShiftLeft<8>(hn::PromoteTo(words, hn::LoadU(octets, high))));
    return hn::PromoteTo(d, hn::BitCast(halves, word));
}

void joinHalves(const std::uint8_t* low, const std::uint8_t* high, float* to, std::size_t count) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(joined(d, low + i, high + i), d, to + i);
    }
    const hn::CappedTag<float, 1> one;
    for (; i < count; ++i) {
        hn::StoreU(joined(one, low + i, high + i), one, to + i);
    }
}

template <class D>
auto widened(D d, const std::uint8_t* from) {
    const hn::Rebind<hwy::float16_t, D> halves;
    return hn::PromoteTo(d, hn::LoadU(halves, reinterpret_cast<const hwy::float16_t*>(from)));
}

void widenHalves(const std::uint8_t* from, float* to, std::size_t count) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        hn::StoreU(widened(d, from + 2 * i), d, to + i);
    }
    const hn::CappedTag<float, 1> one;
    for (; i < count; ++i) {
        hn::StoreU(widened(one, from + 2 * i), one, to + i);
    }
}

}  // namespace Corvel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Corvel {

HWY_EXPORT(sumDifferences);
HWY_EXPORT(joinHalves);
HWY_EXPORT(joinBytes);
HWY_EXPORT(widenHalves);

void sumDifferences(std::uint8_t* bytes, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(sumDifferences)(bytes, count);
}

void joinHalves(const std::uint8_t* low, const std::uint8_t* high, float* to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(joinHalves)(low, high, to, count);
}

void joinHalves(const std::uint8_t* low, const std::uint8_t* high, std::uint16_t* to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(joinBytes)(low, high, reinterpret_cast<std::uint8_t*>(to), count);
}

void joinFloats(const std::uint8_t* even, const std::uint8_t* odd, float* to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(joinBytes)(even, odd, reinterpret_cast<std::uint8_t*>(to), 2 * count);
}

void widenHalves(const std::uint8_t* from, float* to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(widenHalves)(from, to, count);
}

void widenHalves(const std::uint16_t* from, float* to, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(widenHalves)(reinterpret_cast<const std::uint8_t*>(from), to, count);
}

}  // namespace Corvel
#endif
