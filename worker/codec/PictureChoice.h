#pragma once

#include "worker/codec/CodecTable.h"

#include <string>

namespace Morvane::Worker {

/// What a codec's picture must be like.
struct PictureWish {
    std::string profile = "auto";  ///< "auto" or empty: any
    std::string chroma = "auto";   ///< "auto": any that needs no request
    int bits = 0;                  ///< 0: any
    bool alpha = false;            ///< true: only a picture with alpha; false: without if there is one
    bool lossless = false;         ///< nothing may be lost: RGB before 4:4:4 before the rest
    int width = 0;                 ///< pixels; 0: any
    int height = 0;                ///< pixels; 0: any
};

/// The first of the codec's pictures that fits, or null.
const CodecPicture* choosePicture(const Codec& codec, const PictureWish& wish);

/// Whether `list` ("a|b|c") holds `name`.
bool listHolds(const char* list, const std::string& name);

}  // namespace Morvane::Worker
