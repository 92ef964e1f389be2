#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Corvel {

/// What a PNG file (W3C, second edition) begins with.
constexpr std::array<unsigned char, 8> pngSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};

/// Each chunk after that is the length of its data, four letters, the data and a check.
constexpr std::size_t pngBytesAround = 12;

/// A number of four bytes, as PNG files have them.
std::uint32_t pngNumberAt(const unsigned char* bytes);

/// The chunk IHDR.
struct PngHeader {
    std::uint32_t width = 0, height = 0;
    int bits = 0;
    int channels = 0;  ///< 0: not stored in the usual way: by a palette, interlaced
};

constexpr std::size_t pngHeaderBytes = 13;
/// Reads its data, so many bytes.
PngHeader pngHeaderAt(const unsigned char* data);

}  // namespace Corvel
