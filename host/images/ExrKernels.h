#pragma once

#include <cstddef>
#include <cstdint>

namespace Corvel {

/// What ZIP compression of OpenEXR does to the bytes of a block before it deflates them, undone. The block's
/// bytes were split into those at even and those at odd places (the first half and the second half of the
/// block) and each byte was replaced by its difference from the one before, plus 128. Source: the OpenEXR
/// file layout and its reference library.
///
/// All of these run on the widest vectors that the processor has.

/// Turns differences back into bytes, in place. `count` bytes.
void sumDifferences(std::uint8_t* bytes, std::size_t count);

/// `count` half floats, of which `low` holds the low bytes and `high` the high ones, as floats.
void joinHalves(const std::uint8_t* low, const std::uint8_t* high, float* to, std::size_t count);

/// The same as they are.
void joinHalves(const std::uint8_t* low, const std::uint8_t* high, std::uint16_t* to, std::size_t count);

/// `count` floats, of which `even` holds the bytes at even places and `odd` those at odd places, two a float
/// each.
void joinFloats(const std::uint8_t* even, const std::uint8_t* odd, float* to, std::size_t count);

/// `count` little-endian half floats as floats. `from` need not be aligned.
void widenHalves(const std::uint8_t* from, float* to, std::size_t count);

/// `count` half floats of this machine as floats.
void widenHalves(const std::uint16_t* from, float* to, std::size_t count);

}  // namespace Corvel
