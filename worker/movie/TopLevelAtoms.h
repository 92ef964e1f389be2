#pragma once

#include "worker/movie/OutputFile.h"

#include <cstdint>

namespace Morvane::Worker {

/// An atom of a file that lies in no other.
struct TopLevelAtom {
    std::uint32_t type = 0;
    std::int64_t offset = 0;       ///< bytes from the beginning of the file
    std::int64_t headerBytes = 8;  ///< 8, or 16 with a 64-bit size
    std::int64_t bytes = 0;        ///< as a whole
};

/// Walks through a file's atoms, reading headers only. The file must outlive it and keep its length.
class TopLevelAtoms {
public:
    explicit TopLevelAtoms(const OutputFile& movie) : file(movie), end(movie.size()) {}

    /// The next atom, valid until the next call; null at the end of the file, and at an atom that is torn or
    /// that no writer of ours leaves (one of size 0 or of a size below its header's).
    const TopLevelAtom* next();

    /// Bytes of the file that were whole atoms so far.
    std::int64_t position() const { return current.offset + current.bytes; }
    std::int64_t endOfFile() const { return end; }

private:
    const OutputFile& file;
    std::int64_t end;
    TopLevelAtom current;
};

}  // namespace Morvane::Worker
