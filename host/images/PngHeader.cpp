#include "host/images/PngHeader.h"

#include <iterator>

namespace Corvel {

std::uint32_t pngNumberAt(const unsigned char* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           bytes[3];
}

PngHeader pngHeaderAt(const unsigned char* data) {
    constexpr int channelsOfColourType[] = {1, 0, 3, 0, 2, 0, 4};
    PngHeader header{pngNumberAt(data), pngNumberAt(data + 4), data[8], 0};
    const bool usual =
        data[9] < std::size(channelsOfColourType) && data[10] == 0 && data[11] == 0 && data[12] == 0;
    header.channels = usual ? channelsOfColourType[data[9]] : 0;
    return header;
}

}  // namespace Corvel
