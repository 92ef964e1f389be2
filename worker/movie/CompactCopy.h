#pragma once

#include "worker/movie/MovieIndex.h"
#include "worker/movie/OutputFile.h"

namespace Morvane::Worker {

/// Copies the media that `index` names, chunk by chunk in the order in which they are played, into a new file
/// beside `file`, with an index before them or after them, checks it and renames it over `file`. Gives the
/// new file. On failure nothing is left but `file` as it was. The new file's name on the way is hidden and
/// always the same, so that what a crash leaves of it is overwritten the next time.
OutputFile copyCompact(const OutputFile& file, const MovieIndex& index, bool indexFirst);

}  // namespace Morvane::Worker
