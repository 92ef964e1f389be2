#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "host/images/CodeKernels.cpp"
#include <hwy/foreach_target.h>
// Highway asks for this order: it includes this file once for every target.
#include <hwy/highway.h>

#include "host/images/CodeKernels.h"

HWY_BEFORE_NAMESPACE();
namespace Corvel::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

template <class D>
using CodesOf = hn::Vec<hn::Rebind<std::uint16_t, D>>;

template <bool swapped, class D>
hn::Vec<D> ordered(D d, hn::Vec<D> words) {
    if constexpr (!swapped) {
        return words;
    } else if constexpr (sizeof(hn::TFromD<D>) == 2) {
        return hn::Or(hn::ShiftLeft<8>(words), hn::ShiftRight<8>(words));
    } else {
        const auto everySecond = hn::Set(d, 0x00FF00FFU);
        return hn::Or(hn::RotateRight<8>(hn::And(words, everySecond)),
                      hn::And(hn::RotateRight<24>(words), everySecond));
    }
}

// Each kind of pixel: what is loaded of as many as `D` has lanes, and the three codes of each.

struct Bytes {
    using Word = std::uint8_t;

    template <class D>
    static void split(D d, const unsigned char* pixels, std::size_t at, CodesOf<D>* codes) {
        hn::Vec<D> samples[3];
        hn::LoadInterleaved3(d, pixels + 3 * at, samples[0], samples[1], samples[2]);
        for (int i = 0; i < 3; ++i) {
            codes[i] = hn::PromoteTo(hn::Rebind<std::uint16_t, D>(), samples[i]);
        }
    }
};

template <bool swapped>
struct Words {
    using Word = std::uint16_t;

    template <class D>
    static void split(D d, const unsigned char* pixels, std::size_t at, CodesOf<D>* codes) {
        hn::LoadInterleaved3(d, reinterpret_cast<const std::uint16_t*>(pixels) + 3 * at, codes[0], codes[1],
                             codes[2]);
        for (int i = 0; i < 3; ++i) {
            codes[i] = ordered<swapped>(d, codes[i]);
        }
    }
};

template <bool swapped>
struct TenBits {
    using Word = std::uint32_t;

    template <class D>
    static void split(D d, const unsigned char* pixels, std::size_t at, CodesOf<D>* codes) {
        const auto words =
            ordered<swapped>(d, hn::LoadU(d, reinterpret_cast<const std::uint32_t*>(pixels) + at));
        codes[0] = codeOf(d, hn::ShiftRight<22>(words));
        codes[1] = codeOf(d, hn::ShiftRight<12>(words));
        codes[2] = codeOf(d, hn::ShiftRight<2>(words));
    }

private:
    template <class D>
    static CodesOf<D> codeOf(D d, hn::Vec<D> words) {
        const auto codes = hn::And(words, hn::Set(d, 1023U));
        return hn::DemoteTo(hn::Rebind<std::uint16_t, D>(), hn::BitCast(hn::RebindToSigned<D>(), codes));
    }
};

template <class Pixels, class D>
void splitAt(D d, const unsigned char* pixels, std::size_t at, std::uint16_t* const* planes) {
    CodesOf<D> codes[3];
    Pixels::split(d, pixels, at, codes);
    for (int i = 0; i < 3; ++i) {
        hn::StoreU(codes[i], hn::Rebind<std::uint16_t, D>(), planes[i] + at);
    }
}

template <class Pixels>
void split(const unsigned char* pixels, std::size_t count, std::uint16_t* const* planes) {
    using Word = typename Pixels::Word;
    // Bytes become words, of which half as many fit.
    using Many =
        std::conditional_t<sizeof(Word) == 1, hn::Half<hn::ScalableTag<Word>>, hn::ScalableTag<Word>>;
    std::size_t at = 0;
    for (; at + hn::Lanes(Many()) <= count; at += hn::Lanes(Many())) {
        splitAt<Pixels>(Many(), pixels, at, planes);
    }
    for (; at < count; ++at) {
        splitAt<Pixels>(hn::CappedTag<Word, 1>(), pixels, at, planes);
    }
}

void splitBytes(const unsigned char* pixels, std::size_t count, std::uint16_t* const* planes) {
    split<Bytes>(pixels, count, planes);
}

void splitWords(const unsigned char* pixels, bool swapped, std::size_t count, std::uint16_t* const* planes) {
    swapped ? split<Words<true>>(pixels, count, planes) : split<Words<false>>(pixels, count, planes);
}

void splitTenBits(const unsigned char* pixels, bool swapped, std::size_t count,
                  std::uint16_t* const* planes) {
    swapped ? split<TenBits<true>>(pixels, count, planes) : split<TenBits<false>>(pixels, count, planes);
}

}  // namespace Corvel::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Corvel {

HWY_EXPORT(splitBytes);
HWY_EXPORT(splitWords);
HWY_EXPORT(splitTenBits);

void splitBytes(const unsigned char* pixels, std::size_t count, std::uint16_t* const* planes) {
    HWY_DYNAMIC_DISPATCH(splitBytes)(pixels, count, planes);
}

void splitWords(const unsigned char* pixels, bool swapped, std::size_t count, std::uint16_t* const* planes) {
    HWY_DYNAMIC_DISPATCH(splitWords)(pixels, swapped, count, planes);
}

void splitTenBits(const unsigned char* pixels, bool swapped, std::size_t count,
                  std::uint16_t* const* planes) {
    HWY_DYNAMIC_DISPATCH(splitTenBits)(pixels, swapped, count, planes);
}

}  // namespace Corvel
#endif
