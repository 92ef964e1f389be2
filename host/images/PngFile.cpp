#include <libdeflate.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "host/images/FileBytes.h"
#include "host/images/IntegerFile.h"
#include "host/images/PngHeader.h"

namespace Corvel {
namespace {

// The header, and the compressed pixels in one piece: chunks are moved together within the file's own bytes.
struct Content {
    PngHeader header;
    unsigned char* compressed = nullptr;
    std::size_t compressedBytes = 0;
};

bool parse(std::vector<unsigned char>& file, Content& content) {
    if (file.size() < pngSignature.size() ||
        !std::equal(pngSignature.begin(), pngSignature.end(), file.begin())) {
        return false;
    }
    std::size_t at = pngSignature.size();
    while (at + pngBytesAround <= file.size()) {
        const std::size_t length = pngNumberAt(file.data() + at);
        const unsigned char* const type = file.data() + at + 4;
        unsigned char* const data = file.data() + at + 8;
        if (length > file.size() - at - pngBytesAround) {
            return false;
        }
        const auto is = [&](const char* name) { return std::memcmp(type, name, 4) == 0; };
        if (is("IHDR") && length == pngHeaderBytes) {
            content.header = pngHeaderAt(data);
        } else if (is("tRNS")) {
            return false;
        } else if (is("IDAT")) {
            content.compressed = content.compressed == nullptr ? data : content.compressed;
            std::memmove(content.compressed + content.compressedBytes, data, length);
            content.compressedBytes += length;
        } else if (is("IEND")) {
            return true;
        }
        at += pngBytesAround + length;
    }
    return false;
}

unsigned char nearestOf(int left, int above, int corner) {
    const int toLeft = std::abs(above - corner);
    const int toAbove = std::abs(left - corner);
    const int toCorner = std::abs(left + above - 2 * corner);
    const int nearer = toLeft <= toAbove ? left : above;
    return static_cast<unsigned char>(std::min(toLeft, toAbove) <= toCorner ? nearer : corner);
}

// What a filter predicts from the bytes to the left, above, and above to the left.
enum Filter : unsigned char { None, Sub, Up, Average, Paeth };

template <Filter filter, std::size_t pixelBytes>
void undo(unsigned char* row, const unsigned char* above, std::size_t bytes) {
    std::array<unsigned char, pixelBytes> left{};
    std::array<unsigned char, pixelBytes> corner{};
    for (std::size_t x = 0; x < bytes; x += pixelBytes) {
        for (std::size_t i = 0; i < pixelBytes; ++i) {
            unsigned predicted = 0;
            if constexpr (filter == Sub) {
                predicted = left[i];
            } else if constexpr (filter == Average) {
                predicted = (unsigned{left[i]} + above[x + i]) / 2;
            } else if constexpr (filter == Paeth) {
                predicted = nearestOf(left[i], above[x + i], corner[i]);
                corner[i] = above[x + i];
            }
            left[i] = static_cast<unsigned char>(row[x + i] + predicted);
            row[x + i] = left[i];
        }
    }
}

template <std::size_t pixelBytes>
bool undoFilter(unsigned char filter, unsigned char* row, const unsigned char* above, std::size_t bytes) {
    switch (filter) {
        case None:
            return true;
        case Sub:
            undo<Sub, pixelBytes>(row, above, bytes);
            return true;
        case Up:
            for (std::size_t x = 0; x < bytes; ++x) {
                row[x] = static_cast<unsigned char>(row[x] + above[x]);
            }
            return true;
        case Average:
            undo<Average, pixelBytes>(row, above, bytes);
            return true;
        case Paeth:
            undo<Paeth, pixelBytes>(row, above, bytes);
            return true;
        default:
            return false;
    }
}

bool undoFilter(std::size_t pixelBytes, unsigned char filter, unsigned char* row, const unsigned char* above,
                std::size_t bytes) {
    switch (pixelBytes) {
        case 1:
            return undoFilter<1>(filter, row, above, bytes);
        case 2:
            return undoFilter<2>(filter, row, above, bytes);
        case 3:
            return undoFilter<3>(filter, row, above, bytes);
        case 4:
            return undoFilter<4>(filter, row, above, bytes);
        case 6:
            return undoFilter<6>(filter, row, above, bytes);
        default:
            return undoFilter<8>(filter, row, above, bytes);
    }
}

bool inflate(const Content& content, std::vector<unsigned char>& pixels, std::size_t expected) {
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> library(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    pixels.resize(expected);
    return library && libdeflate_zlib_decompress(library.get(), content.compressed, content.compressedBytes,
                                                 pixels.data(), expected, nullptr) == LIBDEFLATE_SUCCESS;
}

}  // namespace

bool readPng(const IntegerFile& file, IntegerScratch& scratch, const IntegerSink& sink) {
    Content content;
    if (!readWholeFile(file.path, scratch.stored) || !parse(scratch.stored, content)) {
        return false;
    }
    const PngHeader& header = content.header;
    if (header.channels != file.channels || static_cast<int>(header.width) != file.width ||
        static_cast<int>(header.height) != file.height || (header.bits != 8 && header.bits != 16) ||
        static_cast<std::size_t>(header.bits) != 8 * file.sampleBytes) {
        return false;
    }
    const std::size_t pixelBytes = static_cast<std::size_t>(file.channels) * file.sampleBytes;
    const std::size_t rowBytes = static_cast<std::size_t>(file.width) * pixelBytes;
    const std::size_t stride = 1 + rowBytes;  // each row begins with its filter
    if (!inflate(content, scratch.samples, stride * static_cast<std::size_t>(file.height))) {
        return false;
    }
    sink.begin(file.sampleBytes == 1 ? SampleForm::Bytes : SampleForm::SwappedWords);
    const std::vector<unsigned char> black(rowBytes);
    const unsigned char* above = black.data();
    for (int y = 0; y < file.height; ++y) {
        unsigned char* const row = scratch.samples.data() + static_cast<std::size_t>(y) * stride;
        if (!undoFilter(pixelBytes, row[0], row + 1, above, rowBytes)) {
            return false;
        }
        sink.place(y, row + 1);
        above = row + 1;
    }
    return true;
}

}  // namespace Corvel
