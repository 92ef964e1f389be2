#include "worker/sound/ByteOrder.h"

#include <bit>

namespace Morvane::Worker {

void appendBigEndian(std::vector<std::uint8_t>& out, const std::uint8_t* samples, std::size_t count,
                     std::size_t width, std::size_t kept) {
    const std::size_t start = out.size();
    out.resize(start + count * kept);
    std::uint8_t* to = out.data() + start;
    for (std::size_t i = 0; i < count; ++i, samples += width) {
        for (std::size_t byte = 0; byte < kept; ++byte) {
            *to++ = samples[std::endian::native == std::endian::little ? width - 1 - byte : byte];
        }
    }
}

}  // namespace Morvane::Worker
