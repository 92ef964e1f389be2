#pragma once

#include "worker/movie/StoredMovie.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Morvane::Worker {

/// A movie that is to be a part of another one.
struct WantedChunk {
    std::string path;
    std::optional<std::int64_t> frames;  ///< what it must hold; nothing: whatever it does
};

struct CheckedChunk {
    std::string path;
    std::optional<StoredMovie> movie;     ///< nothing where it cannot be read
    std::int64_t firstShown = 0;          ///< ticks from the first decoding to the first display
    std::int64_t lastShown = 0;           ///< ticks from the first decoding to the last display
    std::vector<std::string> complaints;  ///< everything that is wrong with it, in words; empty: nothing
};

/// Looks at every one of `chunks`: whether it can be read, whether it has the form of the first one that can
/// (else each difference is named), whether it holds its frames, one after the other, and begins with a key
/// frame, and whether its first and its last picture can be decoded. No file stays open.
std::vector<CheckedChunk> checkChunks(const std::vector<WantedChunk>& chunks);

}  // namespace Morvane::Worker
