#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Corvel {

/// Time codes in the packing of OpenEXR and DPX (SMPTE 12M binary groups, see ImfTimeCode.h): two BCD digits
/// a field, bit 6 the drop-frame flag. Its frames end at 39, so above 30 frames a second it counts pairs, and
/// the field mark, bit 15, tells the second frame of a pair.

/// The text of such a word, with ";" before the frames for drop-frame. `rate` is frames a second, 0 where
/// nobody knows; a number of pairs that the rate does not have is taken for frames. Empty for a word that is
/// no time of day, such as the all-ones word of a DPX header that has none.
std::string unpackTimecode(std::uint32_t timeAndFlags, double rate);

/// The word of a text such as 01:00:00:00; nothing for another text, and for more than 60 frames a second.
std::optional<std::uint32_t> packTimecode(const std::string& text, double rate);

}  // namespace Corvel
