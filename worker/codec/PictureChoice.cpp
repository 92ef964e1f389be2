#include "worker/codec/PictureChoice.h"

#include <algorithm>
#include <vector>

namespace Morvane::Worker {

namespace {

bool isSet(const std::string& choice) {
    return !choice.empty() && choice != "auto";
}

bool fits(const CodecPicture& picture, const PictureWish& wish, bool alpha) {
    if (isSet(wish.profile) && *picture.profiles != 0 && !listHolds(picture.profiles, wish.profile))
        return false;
    if (isSet(wish.chroma) && wish.chroma != picture.chroma)
        return false;
    if (picture.onRequest && !isSet(wish.profile) && !isSet(wish.chroma) && !wish.lossless)
        return false;
    if (wish.bits != 0 && wish.bits != picture.bits)
        return false;
    return picture.alpha == alpha && wish.width % picture.multipleOfWidth == 0 &&
           wish.height % picture.multipleOfHeight == 0;
}

/// Chroma samplings from the one that loses least.
int chromaRank(const CodecPicture& picture) {
    static constexpr std::string_view order[] = {"rgb", "444", "422", "420"};
    return static_cast<int>(std::find(std::begin(order), std::end(order), picture.chroma) -
                            std::begin(order));
}

const CodecPicture* chooseWith(const Codec& codec, const PictureWish& wish, bool alpha) {
    std::vector<const CodecPicture*> fitting;
    for (const CodecPicture& picture : codec.pictures)
        if (fits(picture, wish, alpha))
            fitting.push_back(&picture);
    if (fitting.empty())
        return nullptr;
    if (!wish.lossless)
        return fitting.front();
    return *std::min_element(fitting.begin(), fitting.end(),
                             [](const CodecPicture* one, const CodecPicture* other) {
                                 return chromaRank(*one) < chromaRank(*other);
                             });
}

}  // namespace

const CodecPicture* choosePicture(const Codec& codec, const PictureWish& wish) {
    const CodecPicture* picture = chooseWith(codec, wish, wish.alpha);
    // An encoder that only takes pictures with alpha gets an opaque one.
    return picture || wish.alpha ? picture : chooseWith(codec, wish, true);
}

bool listHolds(const char* list, const std::string& name) {
    std::string_view rest = list;
    while (true) {
        const std::size_t end = rest.find('|');
        if (rest.substr(0, end) == name)
            return true;
        if (end == std::string_view::npos)
            return false;
        rest.remove_prefix(end + 1);
    }
}

}  // namespace Morvane::Worker
