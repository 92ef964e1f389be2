#include "host/images/DpxFile.h"

#include <bit>
#include <cstdint>
#include <filesystem>

#include "host/images/DpxHeader.h"
#include "host/images/FileBytes.h"
#include "host/images/IntegerFile.h"

namespace Corvel {
namespace {

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

bool readTenBitDpx(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink) {
    if (!readWholeFile(file.path, scratch.stored)) {
        return false;
    }
    const DpxHeader header(scratch.stored);
    if (!header.isDpx() || !header.isTenBitRgb() || file.channels != 3 ||
        header.number(DpxHeader::PixelsPerLine, 4) != static_cast<std::uint64_t>(file.width) ||
        header.number(DpxHeader::LinesPerElement, 4) != static_cast<std::uint64_t>(file.height)) {
        return false;
    }
    const std::uint64_t wordsOffset = header.number(DpxHeader::ImageDataOffset, 4);
    const std::size_t rowBytes = static_cast<std::size_t>(file.width) * 4;
    if (wordsOffset > scratch.stored.size() ||
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

bool dpxHasIndustryPart(const std::string& path) {
    const DpxHeader header(path);
    return header.isDpx() && header.hasIndustryPart();
}

bool dpxIsComplete(const std::string& path) {
    const DpxHeader header(path);
    if (!header.isDpx() || header.number(DpxHeader::Encoding, 2) != 0) {
        return true;
    }
    const std::uint64_t samples = header.number(DpxHeader::PixelsPerLine, 4) *
                                  header.number(DpxHeader::LinesPerElement, 4) *
                                  samplesPerPixel(header.number(DpxHeader::Descriptor, 1));
    const std::uint64_t needed =
        header.number(DpxHeader::ImageDataOffset, 4) +
        leastBytes(samples, header.number(DpxHeader::BitDepth, 1), header.number(DpxHeader::Packing, 2) != 0);
    std::error_code error;
    const std::uint64_t size = std::filesystem::file_size(path, error);
    return error || size >= needed;
}

}  // namespace Corvel
