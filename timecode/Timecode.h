#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "timecode/FrameRate.h"

namespace Morvane::Timecode {

enum class Mode : std::int32_t {
    NonDrop = 0,      ///< "01:00:00:00"
    Drop = 1,         ///< "01;00;00;00"
    FrameNumber = 2,  ///< "90000"
    Feet40 = 3,       ///< feet and frames, 40 frames a foot: "02+20"
    Feet16 = 4,       ///< feet and frames, 16 frames a foot
};

/// What the parser answers for a text that is no time code.
inline constexpr std::int64_t invalidTimecode = std::numeric_limits<std::int64_t>::min();

/// Frames from the start of the day, in 32 bits. With `drop`, a flagged rate loses 20 frames for every whole
/// ten minutes and nothing in between: not the usual drop-frame rule, but the parser's, and both must agree.
std::int32_t framesFromFields(FrameRate rate, bool drop, std::int32_t hours, std::int32_t minutes,
                              std::int32_t seconds, std::int32_t frames);

/// The text of `frame`, with "-" before negative frames and, with `showPlus`, "+" before the others (never in
/// FrameNumber). `offset` is added in the two time-code modes; hours wrap at 24. Drop is the 29.97 drop-frame
/// numbering whatever the rate. Empty for a mode that does not exist.
std::string formatTimecode(std::int64_t frame, FrameRate rate, Mode mode, bool showPlus = false,
                           std::int64_t offset = 0);

/// The frame that `text` names, less `offset` in the two time-code modes.
/// - NonDrop and Drop: up to four fields separated by ":" or ";", the last one being frames; or digits alone,
///   two a field ("10000000" is ten hours). Drop takes off 20 frames for every whole ten minutes at any rate,
///   so it is deliberately not the inverse of `formatTimecode`.
/// - `fieldCount`, where given, receives the number of fields present (empty ones count), else 4.
/// - `invalidTimecode` for any other character, seconds or minutes above 59, frames not below the rate;
/// - 0 for more than four fields, unreadable feet and frames, and a mode that does not exist.
std::int64_t parseTimecode(const std::string& text, FrameRate rate, Mode mode, std::int64_t offset = 0,
                           std::int32_t* fieldCount = nullptr);

}  // namespace Morvane::Timecode
