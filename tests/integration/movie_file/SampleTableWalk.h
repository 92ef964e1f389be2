#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "MovieAtoms.h"
#include "MovieWalker.h"

namespace Morvane::Tests {

/// The first byte and one past the last.
using FileRange = std::pair<std::int64_t, std::int64_t>;

/// Fills in a track's codec, description and samples from its sample tables, the atoms in "stbl", and adds to
/// `problems` where these disagree. Gives what of the file each chunk covers. Throws std::runtime_error where
/// a table is missing or too short.
std::vector<FileRange> walkSampleTables(const std::vector<Atom>& tables, WalkedTrack& track,
                                        std::vector<std::string>& problems);

}  // namespace Morvane::Tests
