#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "worker/read/MovieDescription.h"
#include "worker/read/MovieInput.h"

namespace Morvane::Worker {

/// Keys and values of a movie: first those that a host knows ("input/timecode", "quicktime/timecode_rate",
/// "quicktime/reel", "input/frame_rate", "quicktime/codec_id", "quicktime/codec_name", "quicktime/encoder",
/// "quicktime/alpha"), each only where the movie has it, then the file's own, then those of the picture track
/// that the file has not. Bytes are as they stand in the file; a key comes once.
std::vector<std::pair<std::string, std::string>> movieMetadata(const MovieInput& input,
                                                               const MovieDescription& description);

/// A four-character type as text; empty where the number is none.
std::string fourCharacters(std::uint32_t tag);

}  // namespace Morvane::Worker
