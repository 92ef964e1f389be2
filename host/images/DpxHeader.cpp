#include "host/images/DpxHeader.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/images/FileBytes.h"

namespace Corvel {

DpxHeader::DpxHeader(const std::string& path) {
    const FileBytes file(path);
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(file.size(), bytes));
    recognise(file.isOpen() && file.read(0, stored.data(), count) ? count : 0);
}

DpxHeader::DpxHeader(const std::vector<unsigned char>& file) {
    const std::size_t count = std::min(file.size(), bytes);
    std::copy_n(file.begin(), count, stored.begin());
    recognise(count);
}

void DpxHeader::recognise(std::size_t count) {
    constexpr std::size_t least = LinePadding + 4;
    whole = count == bytes;
    known = count >= least &&
            (std::memcmp(stored.data(), "SDPX", 4) == 0 || std::memcmp(stored.data(), "XPDS", 4) == 0);
}

std::uint64_t DpxHeader::number(Field field, std::size_t size) const {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
        value = value << 8 | stored[field + (isBigEndian() ? i : size - 1 - i)];
    }
    return value;
}

std::uint64_t DpxHeader::numberOr(Field field, std::size_t size, std::uint64_t otherwise) const {
    const std::uint64_t value = number(field, size);
    return value == 0 || value == undefined ? otherwise : value;
}

bool DpxHeader::isTenBitRgb() const {
    constexpr std::uint64_t rgb = 50;
    constexpr std::uint64_t methodA = 1;
    const std::uint64_t pixels = number(ImageDataOffset, 4);
    return number(Elements, 2) == 1 && number(DataSign, 4) == 0 && number(Descriptor, 1) == rgb &&
           number(BitDepth, 1) == 10 && number(Packing, 2) == methodA && number(Encoding, 2) == 0 &&
           numberOr(LinePadding, 4, 0) == 0 && numberOr(ElementOffset, 4, pixels) == pixels;
}

float DpxHeader::real(Field field) const {
    return std::bit_cast<float>(static_cast<std::uint32_t>(number(field, 4)));
}

std::string DpxHeader::text(Field field, std::size_t size) const {
    const auto* const first = stored.begin() + field;
    if (*first == 0xFF) {
        return "";
    }
    return {first, std::find(first, first + size, 0)};
}

}  // namespace Corvel
