#include "host/image_library/DpxFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "host/image_library/IntegerFile.h"
#include "host/image_library/WholeFile.h"

namespace Corvel {
namespace {

// Offsets into the header, SMPTE 268M.
constexpr std::size_t imageDataOffset = 4;
constexpr std::size_t elements = 770;
constexpr std::size_t pixelsPerLine = 772;
constexpr std::size_t linesPerElement = 776;
constexpr std::size_t dataSign = 780;
constexpr std::size_t descriptor = 800;
constexpr std::size_t bitDepth = 803;
constexpr std::size_t packing = 804;
constexpr std::size_t encoding = 806;
constexpr std::size_t elementOffset = 808;
constexpr std::size_t linePadding = 812;
constexpr std::size_t headerBytes = 816;
constexpr std::uint64_t undefined = 0xFFFFFFFF;

class Header {
public:
    explicit Header(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        known = file && isNamed();
    }
    explicit Header(const std::vector<unsigned char>& file) {
        std::copy_n(file.begin(), std::min(file.size(), bytes.size()), bytes.begin());
        known = file.size() >= bytes.size() && isNamed();
    }

    bool isDpx() const { return known; }
    bool isBigEndian() const { return bytes[0] == 'S'; }

    std::uint64_t number(std::size_t offset, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t place = isBigEndian() ? i : size - 1 - i;
            value = value << 8 | static_cast<unsigned char>(bytes[offset + place]);
        }
        return value;
    }

    // A number that may be left undefined, which is all ones, or 0.
    std::uint64_t numberOr(std::size_t offset, std::size_t size, std::uint64_t otherwise) const {
        const std::uint64_t value = number(offset, size);
        return value == 0 || value == undefined ? otherwise : value;
    }

private:
    bool isNamed() const {
        return std::memcmp(bytes.data(), "SDPX", 4) == 0 || std::memcmp(bytes.data(), "XPDS", 4) == 0;
    }

    std::array<char, headerBytes> bytes{};
    bool known = false;
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

constexpr std::uint64_t rgb = 50;
constexpr std::uint64_t methodA = 1;

bool isTenBitRgb(const Header& header, const IntegerFile& file) {
    return header.isDpx() && file.channels == 3 && header.number(elements, 2) == 1 &&
           header.number(dataSign, 4) == 0 && header.number(descriptor, 1) == rgb &&
           header.number(bitDepth, 1) == 10 && header.number(packing, 2) == methodA &&
           header.number(encoding, 2) == 0 && header.numberOr(linePadding, 4, 0) == 0 &&
           header.number(pixelsPerLine, 4) == static_cast<std::uint64_t>(file.width) &&
           header.number(linesPerElement, 4) == static_cast<std::uint64_t>(file.height);
}

}  // namespace

bool readTenBitDpx(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink) {
    if (!readWholeFile(file.path, scratch.stored)) {
        return false;
    }
    const Header header(scratch.stored);
    if (!isTenBitRgb(header, file)) {
        return false;
    }
    const std::uint64_t wordsOffset = header.number(imageDataOffset, 4);
    const std::size_t rowBytes = static_cast<std::size_t>(file.width) * 4;
    if (header.numberOr(elementOffset, 4, wordsOffset) != wordsOffset ||
        wordsOffset > scratch.stored.size() ||
        scratch.stored.size() - wordsOffset < rowBytes * static_cast<std::size_t>(file.height)) {
        return false;
    }
    const bool swapped = header.isBigEndian() != (std::endian::native == std::endian::big);
    sink.begin(swapped ? SampleForm::SwappedTenBits : SampleForm::TenBits);
    for (int y = 0; y < file.height; ++y) {
        sink.place(y, scratch.stored.data() + wordsOffset + static_cast<std::size_t>(y) * rowBytes);
    }
    return true;
}

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
