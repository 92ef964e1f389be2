#include "host/image_library/DpxFile.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace Corvel {
namespace {

// Offsets into the header, SMPTE 268M.
constexpr std::size_t imageDataOffset = 4;
constexpr std::size_t pixelsPerLine = 772;
constexpr std::size_t linesPerElement = 776;
constexpr std::size_t descriptor = 800;
constexpr std::size_t bitDepth = 803;
constexpr std::size_t packing = 804;
constexpr std::size_t encoding = 806;
constexpr std::size_t headerBytes = 808;

class Header {
public:
    explicit Header(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        known =
            file && (std::memcmp(bytes.data(), "SDPX", 4) == 0 || std::memcmp(bytes.data(), "XPDS", 4) == 0);
        bigEndian = bytes[0] == 'S';
    }

    bool isDpx() const { return known; }

    std::uint64_t number(std::size_t offset, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t place = bigEndian ? i : size - 1 - i;
            value = value << 8 | static_cast<unsigned char>(bytes[offset + place]);
        }
        return value;
    }

private:
    std::array<char, headerBytes> bytes{};
    bool known = false;
    bool bigEndian = false;
};

// Samples a pixel of the first image element, 0 for a descriptor that is not listed.
std::uint64_t samplesPerPixel(std::uint64_t descriptorCode) {
    switch (descriptorCode) {
        case 1:
        case 2:
        case 3:
        case 4:
        case 6:
        case 8:
            return 1;
        case 50:
            return 3;
        case 51:
        case 52:
            return 4;
        case 100:
            return 2;
        case 101:
        case 102:
            return 3;
        case 103:
            return 4;
        default:
            return 0;
    }
}

// The least that so many samples can take: lines may be padded to whole words, but some programs don't.
std::uint64_t leastBytes(std::uint64_t samples, std::uint64_t bits, bool filled) {
    if (filled && bits == 10) {
        return (samples + 2) / 3 * 4;
    }
    if (filled && bits == 12) {
        return samples * 2;
    }
    return (samples * bits + 7) / 8;
}

}  // namespace

bool dpxIsComplete(const std::string& path) {
    const Header header(path);
    if (!header.isDpx() || header.number(encoding, 2) != 0) {
        return true;
    }
    const std::uint64_t samples = header.number(pixelsPerLine, 4) * header.number(linesPerElement, 4) *
                                  samplesPerPixel(header.number(descriptor, 1));
    const std::uint64_t needed =
        header.number(imageDataOffset, 4) +
        leastBytes(samples, header.number(bitDepth, 1), header.number(packing, 2) != 0);
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(path, error);
    return error || size >= needed;
}

}  // namespace Corvel
