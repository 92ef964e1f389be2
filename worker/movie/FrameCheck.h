#pragma once

#include <cstdint>
#include <string>

namespace Morvane::Worker {

/// Decodes the first and the last picture of the movie at `path`; the last one must be shown `lastShown`
/// ticks of its track after the first. Throws StatusError: InputOutput with what is wrong,
/// NotSupportedByCodec where there is no decoder.
void checkFirstAndLastFrame(const std::string& path, std::int64_t lastShown);

}  // namespace Morvane::Worker
