#pragma once

#include <cstddef>
#include <cstdint>

namespace Corvel {

/// `count` pixels of three whole numbers each, taken apart: planes[i] gets the samples at place i of each
/// pixel. `pixels` need not be aligned; `swapped` says that its words are in the order of bytes that is not
/// this machine's.
void splitBytes(const unsigned char* pixels, std::size_t count, std::uint16_t* const* planes);
void splitWords(const unsigned char* pixels, bool swapped, std::size_t count, std::uint16_t* const* planes);

/// The same for samples of ten bits, three a pixel in the upper bits of a 32-bit word, the first one in the
/// highest (SMPTE 268M, filled, method A).
void splitTenBits(const unsigned char* pixels, bool swapped, std::size_t count, std::uint16_t* const* planes);

}  // namespace Corvel
