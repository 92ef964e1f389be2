#pragma once

#include <cstdint>
#include <string>

namespace Morvane::Timecode {

struct Ratio {
    std::uint32_t numerator;
    std::uint32_t denominator;
};

/// A video frame rate in one word: the nominal whole number of frames a second in bits 0 to 30, and in bit 31
/// the flag that says that the true rate is 1000/1001 of it (24 with the flag is 23.976, 30 is 29.97).
class FrameRate {
public:
    FrameRate() = default;  ///< the code 0
    FrameRate(std::uint32_t nominalRate, bool flag);

    std::uint32_t nominalRate() const;
    bool hasFlag() const;

    /// Frames a second, rounded to single precision.
    float toFloat() const;

    /// 60000/1001, 30000/1001 and, for 24, 23976/1000; otherwise hundredths such as 2500/100. Of the flagged
    /// rates only 24, 30 and 60 keep their flag here, deliberately.
    Ratio toRatio() const;

    /// "29.970" with the flag, "25" without.
    std::string rateText() const;
    /// "30000/1001" with the flag, "25/1" without.
    std::string ratioText() const;

    std::uint32_t frameRateCode = 0;
};

/// Judged by hundredths of a frame a second: 59.94, 29.97, 23.97 and 23.98 get the flag, everything else is
/// cut off to a whole number (also 47.952 and 29.976, deliberately).
FrameRate toFrameRateCode(float framesPerSecond);

/// 30000/1001, 24000/1001 and the usual decimal approximations get the flag, everything else is cut off to a
/// whole number. REQUIRES: denominator is not 0.
FrameRate frameRateFromRatio(std::uint32_t numerator, std::uint32_t denominator);

/// The frame at `target` nearest to frame `count` at `rate`; an exact half goes down.
/// REQUIRES: the nominal rate of `rate` is not 0.
std::int64_t rescale(FrameRate rate, std::int32_t count, FrameRate target);

}  // namespace Morvane::Timecode
