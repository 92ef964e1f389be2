#include "worker/movie/TopLevelAtoms.h"

#include "worker/movie/AtomReader.h"
#include "worker/movie/MovieLayout.h"

#include <algorithm>

namespace Morvane::Worker {

const TopLevelAtom* TopLevelAtoms::next() {
    const std::int64_t offset = position();
    const std::int64_t left = end - offset;
    if (left < shortHeaderBytes) {
        return nullptr;
    }
    const Bytes header = file.read(offset, static_cast<std::size_t>(std::min(left, longHeaderBytes)));
    AtomCursor cursor(header);
    TopLevelAtom atom;
    atom.offset = offset;
    std::uint64_t size = cursor.u32();
    atom.type = cursor.u32();
    if (size == 1 && cursor.remaining() == 8) {
        size = cursor.u64();
        atom.headerBytes = longHeaderBytes;
    }
    if (size < static_cast<std::uint64_t>(atom.headerBytes) || size > static_cast<std::uint64_t>(left)) {
        return nullptr;
    }
    atom.bytes = static_cast<std::int64_t>(size);
    current = atom;
    return &current;
}

}  // namespace Morvane::Worker
