#pragma once

#include "worker/movie/AtomWriter.h"
#include "worker/movie/MovieTracks.h"

namespace Morvane::Worker {

/// The atoms `udta` and `meta` that hold `metadata`: known names as QuickTime user data ("title" is ©nam),
/// other keys, and values too long for user data, as metadata items under their own name (QuickTime File
/// Format, "User Data Atoms" and "Metadata Structure"). Empty values are left out. "software" is this program
/// unless given.
Bytes writeMetadataAtoms(const Metadata& metadata);

/// What writeMetadataAtoms wrote into a `moov` atom. Other atoms in `udta` and `meta` are skipped.
Metadata readMetadata(ByteView moov);

/// The `udta` and `meta` atoms of a `moov` atom, as they are.
Bytes copyMetadataAtoms(ByteView moov);

}  // namespace Morvane::Worker
