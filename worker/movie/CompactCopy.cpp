#include "worker/movie/CompactCopy.h"

#include "worker/Status.h"
#include "worker/movie/IndexCheck.h"
#include "worker/movie/MovieLayout.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <filesystem>
#include <limits>
#include <vector>

namespace Morvane::Worker {

namespace {

constexpr std::size_t copyBytes = std::size_t{1} << 22;

struct Piece {
    std::size_t track;
    std::size_t chunk;
    std::int64_t start;  ///< ticks of the track
    std::int64_t from;   ///< bytes from the beginning of the old file
    std::int64_t bytes;
};

/// All tracks' chunks in the order of their times; pictures before sound that begins with them.
std::vector<Piece> piecesInOrder(const MovieIndex& index) {
    std::vector<Piece> pieces;
    for (std::size_t track = 0; track < index.tracks.size(); ++track) {
        const auto& chunks = index.tracks[track].samples.chunks();
        for (std::size_t chunk = 0; chunk < chunks.size(); ++chunk) {
            pieces.push_back({track, chunk, chunks[chunk].start, chunks[chunk].offset, chunks[chunk].bytes});
        }
    }
    std::stable_sort(pieces.begin(), pieces.end(), [&](const Piece& a, const Piece& b) {
        const AVRational scaleA = {1, static_cast<int>(index.tracks[a.track].timeScale)};
        const AVRational scaleB = {1, static_cast<int>(index.tracks[b.track].timeScale)};
        return av_compare_ts(a.start, scaleA, b.start, scaleB) < 0;
    });
    return pieces;
}

void moveChunks(MovieIndex& index, const std::vector<Piece>& pieces, std::int64_t offset) {
    for (const Piece& piece : pieces) {
        index.tracks[piece.track].samples.moveChunk(piece.chunk, offset);
        offset += piece.bytes;
    }
}

void copyMedia(const OutputFile& from, OutputFile& to, const std::vector<Piece>& pieces,
               std::int64_t offset) {
    Bytes buffer;
    for (const Piece& piece : pieces) {
        for (std::int64_t done = 0; done < piece.bytes;) {
            const std::int64_t count = std::min<std::int64_t>(copyBytes, piece.bytes - done);
            buffer.resize(static_cast<std::size_t>(count));
            from.read(piece.from + done, buffer);
            to.write(offset, buffer);
            offset += count;
            done += count;
        }
    }
}

Bytes mediaHeader(std::int64_t mediaBytes) {
    const std::int64_t bytes = mediaBytes + shortHeaderBytes;
    return bytes <= std::numeric_limits<std::uint32_t>::max()
               ? shortHeader(bytes, atomType("mdat"))
               : longHeader(mediaBytes + longHeaderBytes, atomType("mdat"));
}

void writeMovie(const OutputFile& file, OutputFile& copy, MovieIndex index, bool indexFirst) {
    const std::vector<Piece> pieces = piecesInOrder(index);
    std::int64_t mediaBytes = 0;
    for (const Piece& piece : pieces) {
        mediaBytes += piece.bytes;
    }
    Bytes start = fileTypeAtom();
    const Bytes media = mediaHeader(mediaBytes);
    const auto startBytes = static_cast<std::int64_t>(start.size());
    const auto headerBytes = static_cast<std::int64_t>(media.size());
    Bytes moov;
    if (indexFirst) {
        // The offsets depend on the index's size and that on the offsets' width, which only grows.
        std::size_t expected = 0;
        do {
            expected = moov.size();
            moveChunks(index, pieces, startBytes + static_cast<std::int64_t>(expected) + headerBytes);
            moov = writeMovieAtom(index);
        } while (moov.size() != expected);
    } else {
        moveChunks(index, pieces, startBytes + headerBytes);
        moov = writeMovieAtom(index);
    }
    const std::int64_t mediaOffset =
        startBytes + headerBytes + (indexFirst ? static_cast<std::int64_t>(moov.size()) : 0);
    const std::int64_t indexOffset = indexFirst ? startBytes : mediaOffset + mediaBytes;
    copy.write(0, start);
    copy.write(mediaOffset - headerBytes, media);
    copyMedia(file, copy, pieces, mediaOffset);
    copy.write(indexOffset, moov);
    copy.sync();
    checkIndex(copy.path(), index, moov, indexOffset);
}

}  // namespace

OutputFile copyCompact(const OutputFile& file, const MovieIndex& index, bool indexFirst) {
    std::error_code unresolved;
    std::filesystem::path target = std::filesystem::canonical(file.path(), unresolved);
    if (unresolved) {
        target = file.path();
    }
    const std::filesystem::path name = target.parent_path() / ("." + target.filename().string() + ".index");
    OutputFile copy = OutputFile::create(name, ExistingFile::Replace);
    try {
        copy.takePermissionsOf(file);
        writeMovie(file, copy, index, indexFirst);
        file.checkStillThere();
        copy.renameOver(target);
    } catch (...) {
        copy.remove();
        throw;
    }
    return copy;
}

}  // namespace Morvane::Worker
