#pragma once

#include <optional>
#include <string>

#include "host/images/PictureHeader.h"

namespace Corvel {

/// What the header of an ordinary file of whole numbers says.
struct IntegerHeader {
    int width = 0;
    int height = 0;
    int channels = 0;  ///< grey, grey and alpha, RGB, or RGB and alpha
    int bits = 0;      ///< of one sample
    bool straightAlpha = false;
    std::string curve{};        ///< as PictureHeader has it
    std::string colourSpace{};  ///< likewise
    Metadata metadata{};        ///< the host's own keys
};

/// What the file at `path` says, which is of the kind that the function is called by; nothing for another one
/// and for every header in which there is anything that is not listed in the function's source: more than one
/// picture, pixels that are not square, an orientation, a profile, an unusual way of storing.
std::optional<IntegerHeader> readDpxHeader(const std::string& path);
std::optional<IntegerHeader> readPngHeader(const std::string& path);
std::optional<IntegerHeader> readTiffHeader(const std::string& path);

}  // namespace Corvel
