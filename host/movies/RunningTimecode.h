#pragma once

#include <string>

namespace Corvel {

/// The time code `frames` later than `start` ("01:00:00:00"; ";" or "." before the frames for drop-frame
/// counting), at `nominalRate` whole frames a second. Hours wrap at 24. A text that is no time code comes
/// back as it is. Source: SMPTE 12M; drop-frame leaves out the first two numbers of every minute but each
/// tenth at 30 frames a second, four at 60.
std::string timecodeAfter(const std::string& start, int frames, int nominalRate);

}  // namespace Corvel
