#include "worker/movie/IndexCheck.h"

#include "worker/Status.h"
#include "worker/movie/AtomReader.h"
#include "worker/movie/OutputFile.h"
#include "worker/movie/TopLevelAtoms.h"

#include <fmt/core.h>

#include <algorithm>
#include <vector>

namespace Morvane::Worker {

namespace {

struct Range {
    std::int64_t begin;
    std::int64_t end;
};

[[noreturn]] void differs(const std::string& path, const char* what) {
    throw StatusError(Status::InputOutput, fmt::format("{} reads back wrong: {}", path, what));
}

}  // namespace

void checkIndex(const std::string& path, const MovieIndex& index, const Bytes& moov,
                std::int64_t indexOffset) {
    const OutputFile file = OutputFile::openToRead(path);
    std::vector<Range> media;
    bool indexFound = false;
    TopLevelAtoms atoms(file);
    while (const TopLevelAtom* atom = atoms.next()) {
        if (atom->type == atomType("mdat")) {
            media.push_back({atom->offset + atom->headerBytes, atom->offset + atom->bytes});
        } else if (atom->type == atomType("moov")) {
            indexFound = !indexFound && atom->offset == indexOffset &&
                         atom->bytes == static_cast<std::int64_t>(moov.size());
        }
    }
    if (atoms.position() != file.size()) {
        differs(path, "its atoms do not fill the file");
    }
    if (!indexFound || file.read(indexOffset, moov.size()) != moov) {
        differs(path, "its index is another");
    }
    for (const IndexTrack& track : index.tracks) {
        for (const SampleTable::Chunk& chunk : track.samples.chunks()) {
            const bool inside = std::any_of(media.begin(), media.end(), [&](const Range& range) {
                return chunk.offset >= range.begin && chunk.offset + chunk.bytes <= range.end;
            });
            if (!inside) {
                differs(path, "its index points outside the media");
            }
        }
    }
}

}  // namespace Morvane::Worker
