#pragma once

#include <cstddef>
#include <vector>

namespace Morvane::Worker {

class MovieInput;

/// The packets of a movie (counted from 0, in decoding order) in the order in which their frames come out of
/// the decoder. Decodes the whole movie, so only for movies whose packets do not say when they are shown.
/// Packets without a frame are left out. Throws StatusError as MovieInput and openDecoder.
std::vector<std::size_t> showingOrderByDecoding(const MovieInput& movie);

}  // namespace Morvane::Worker
