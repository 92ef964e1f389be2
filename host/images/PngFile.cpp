#include <libdeflate.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "host/images/FileBytes.h"
#include "host/images/IntegerFile.h"
#include "host/images/PngFilter.h"
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

bool inflate(const Content& content, std::vector<unsigned char>& pixels, std::size_t expected) {
    const std::unique_ptr<libdeflate_decompressor, void (*)(libdeflate_decompressor*)> library(
        libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
    pixels.resize(expected + pngBytesBeyond);
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
    const std::vector<unsigned char> black(rowBytes + pngBytesBeyond);
    const unsigned char* above = black.data();
    for (int y = 0; y < file.height; ++y) {
        unsigned char* const row = scratch.samples.data() + static_cast<std::size_t>(y) * stride;
        if (!undoPngFilter(row[0], pixelBytes, row + 1, above, rowBytes)) {
            return false;
        }
        sink.place(y, row + 1);
        above = row + 1;
    }
    return true;
}

}  // namespace Corvel
