#pragma once

#include "worker/movie/MovieIndex.h"

#include <cstdint>
#include <string>

namespace Morvane::Worker {

/// Opens the movie at `path` anew and compares it with what it should be: atoms that fill the file exactly,
/// the index at `indexOffset` byte for byte `moov`, every chunk of `index` inside an `mdat` atom. Throws
/// StatusError (InputOutput) with what differs.
void checkIndex(const std::string& path, const MovieIndex& index, const Bytes& moov,
                std::int64_t indexOffset);

}  // namespace Morvane::Worker
