#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Corvel {

/// Where a render is, after a frame or within one.
struct FrameProgress {
    int frame = 0;                   ///< number of the frame done last, or under way
    int done = 0;                    ///< frames done
    int total = 0;                   ///< frames in all
    double fraction = 0;             ///< of the frame under way, 0 to 1
    std::optional<double> fps = {};  ///< frames a second
    std::optional<double> secondsLeft = {};
    std::uint64_t bytes = 0;  ///< size of the movie so far
};

/// The texts of a render's progress. Pure functions.

/// "frame 1037 [=====>     ]  37/100  12.3 fps  0:05 left  12.4 MB", no longer than `columns` characters: the
/// bar takes what room there is, and in a narrow terminal the last things are left out.
std::string barText(const FrameProgress& progress, int columns);

/// "frame 1037 (37 of 100), 12.3 frames/s, 0:05 left, 12.4 MB"
std::string plainText(const FrameProgress& progress);

/// "0:05", "12:34", "1:02:03"; fractions of a second are rounded up.
std::string durationText(double seconds);

/// "999 bytes", "1.2 kB", "12.4 MB", "3.0 GB": powers of 1000.
std::string sizeText(std::uint64_t bytes);

}  // namespace Corvel
