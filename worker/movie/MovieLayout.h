#pragma once

#include "worker/movie/AtomWriter.h"

#include <cstdint>

namespace Morvane::Worker {

/// Bytes that are kept free behind `ftyp` for the index: room for some 150,000 frames of a codec that stores
/// them out of order, 500,000 of any other. docs/adr/ tells how the index gets there.
inline constexpr std::int64_t indexReserveBytes = std::int64_t{2} << 20;

inline constexpr std::int64_t shortHeaderBytes = 8;  ///< size and type
inline constexpr std::int64_t longHeaderBytes = 16;  ///< with a size of 64 bits

/// The header of an atom of `size` bytes as a whole. REQUIRES: below 4 GiB.
Bytes shortHeader(std::int64_t size, std::uint32_t type);
Bytes longHeader(std::int64_t size, std::uint32_t type);

/// The `ftyp` atom that every movie of ours begins with.
Bytes fileTypeAtom();

}  // namespace Morvane::Worker
