#include "worker/movie/Joining.h"

#include "worker/Status.h"
#include "worker/movie/IndexPlacement.h"
#include "worker/movie/MetadataAtoms.h"
#include "worker/movie/MovieLayout.h"
#include "worker/movie/SoundMedia.h"
#include "worker/movie/TimecodeMedia.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>
#include <random>

namespace Morvane::Worker {

namespace {

/// Bytes that are copied at once, and that a chunk of the index may have.
constexpr std::int64_t blockBytes = std::int64_t{1} << 22;

std::vector<CheckedChunk> readAndCheck(const JoinRequest& request) {
    if (request.chunks.empty()) {
        throw StatusError(Status::BadArgument, "there is nothing to join");
    }
    std::vector<CheckedChunk> chunks = checkChunks(request.chunks);
    std::string complaints;
    for (const CheckedChunk& chunk : chunks) {
        for (const std::string& complaint : chunk.complaints) {
            complaints += fmt::format("\n  {}: {}", chunk.path, complaint);
        }
    }
    if (!complaints.empty()) {
        throw StatusError(Status::BadArgument, "these movies cannot be joined:" + complaints);
    }
    return chunks;
}

/// Bytes to keep free for the index of so many frames: five numbers of 32 bits a frame, and the rest.
std::int64_t reserveFor(std::int64_t frames) {
    return indexReserveBytes + 20 * frames;
}

std::int64_t framesIn(const std::vector<CheckedChunk>& chunks) {
    std::int64_t frames = 0;
    for (const CheckedChunk& chunk : chunks) {
        frames += static_cast<std::int64_t>(chunk.movie->samples.size());
    }
    return frames;
}

/// A new movie on its way: `ftyp`, the place for the index, media as they come.
class JoinedFile {
public:
    JoinedFile(OutputFile& output, std::int64_t frames) : file(output) {
        Bytes start = fileTypeAtom();
        movie.reserveOffset = static_cast<std::int64_t>(start.size());
        movie.reserveBytes = reserveFor(frames);
        const Bytes reserve = shortHeader(movie.reserveBytes, atomType("free"));
        start.insert(start.end(), reserve.begin(), reserve.end());
        file.write(0, start);
        movie.end = movie.reserveOffset + movie.reserveBytes;
        file.truncate(movie.end);
    }

    /// The pictures of all chunks, as one track.
    void addPictures(const std::vector<CheckedChunk>& chunks) {
        IndexTrack track = chunks.front().movie->pictures;
        for (const CheckedChunk& chunk : chunks) {
            track.firstShown = std::max(track.firstShown, chunk.firstShown);
        }
        for (const CheckedChunk& chunk : chunks) {
            copyPictures(chunk, track);
        }
        scale = {track.timeScale, chunks.front().movie->ticksPerFrame};
        movie.index.timeScale = track.timeScale;
        movie.index.created = movieTimeNow();
        movie.index.tracks.push_back(std::move(track));
    }

    void addTrack(IndexTrack track) { movie.index.tracks.push_back(std::move(track)); }

    void addTimecode(const TimecodeTrack& timecode) {
        const std::int64_t frames = movie.index.tracks.front().samples.sampleCount();
        const std::int64_t offset = append(timecodeMedia(timecode, frames, scale));
        movie.index.tracks.push_back(timecodeIndexTrack(timecode, frames, scale, offset));
    }

    std::int64_t append(ByteView media) {
        const std::int64_t offset = movie.end + shortHeaderBytes;
        file.write(movie.end,
                   shortHeader(static_cast<std::int64_t>(media.size()) + shortHeaderBytes, atomType("mdat")));
        file.write(offset, media);
        movie.end = offset + static_cast<std::int64_t>(media.size());
        return offset;
    }

    void finish(Bytes metadata, bool indexFirst) {
        movie.index.metadata = std::move(metadata);
        placeIndex(file, movie, indexFirst, fewestBytesToLeaveInPlace);
    }

private:
    static constexpr std::int64_t fewestBytesToLeaveInPlace = std::int64_t{64} << 20;

    /// Copies runs of pictures that lie next to each other, as many as fit a block. A delay of fewer pictures
    /// than the longest of all chunks is made as long.
    void copyPictures(const CheckedChunk& chunk, IndexTrack& track) {
        const OutputFile source = OutputFile::openToRead(chunk.path);
        const auto later = static_cast<std::uint32_t>(track.firstShown - chunk.firstShown);
        const std::vector<SampleTable::Sample>& samples = chunk.movie->samples;
        for (std::size_t begin = 0; begin < samples.size();) {
            std::size_t end = begin;
            std::int64_t bytes = 0;
            do {
                bytes += samples[end++].bytes;
            } while (end < samples.size() && samples[end].offset == samples[begin].offset + bytes &&
                     bytes + samples[end].bytes <= blockBytes);
            std::int64_t offset = append(source.read(samples[begin].offset, static_cast<std::size_t>(bytes)));
            track.samples.endChunk();
            for (; begin < end; ++begin) {
                SampleTable::Sample sample = samples[begin];
                sample.offset = offset;
                sample.compositionOffset += later;
                track.samples.add(sample);
                offset += sample.bytes;
            }
        }
    }

    OutputFile& file;
    UnplacedMovie movie;
    TimeScale scale;
};

void writeJoined(OutputFile& file, const JoinRequest& request, const std::vector<CheckedChunk>& chunks) {
    JoinedFile joined(file, framesIn(chunks));
    joined.addPictures(chunks);
    if (request.sound) {
        joined.addTrack(writeSoundFile(request.sound->path, request.sound->offsetSeconds,
                                       [&](ByteView media) { return joined.append(media); }));
    }
    if (const auto& timecode = request.timecode ? request.timecode : chunks.front().movie->timecode) {
        joined.addTimecode(*timecode);
    }
    Metadata metadata = chunks.front().movie->metadata;
    for (const auto& [key, value] : request.metadata) {
        metadata[key] = value;
    }
    joined.finish(writeMetadataAtoms(metadata), request.indexFirst);
}

void refuseExisting(const JoinRequest& request) {
    std::error_code ignored;
    if (request.existing == ExistingFile::Refuse && std::filesystem::exists(request.output, ignored)) {
        throw StatusError(Status::Exists, fmt::format("cannot create {}: it exists already", request.output));
    }
}

/// A name of this join's own: another one to the same output must not write into this one's file.
std::string hiddenNameBeside(const std::filesystem::path& output) {
    std::random_device random;
    return output.parent_path() / fmt::format(".{}.{:08x}.join", output.filename().string(), random());
}

}  // namespace

JoinedMovie joinMovies(const JoinRequest& request) {
    refuseExisting(request);
    if (request.timecode) {
        checkTimecode(*request.timecode);
    }
    const std::vector<CheckedChunk> chunks = readAndCheck(request);
    OutputFile file = OutputFile::create(hiddenNameBeside(request.output), ExistingFile::Refuse);
    try {
        writeJoined(file, request, chunks);
        refuseExisting(request);
        file.renameOver(request.output);
        syncFolderOf(request.output);
    } catch (...) {
        file.remove();
        throw;
    }
    const StoredMovie& first = *chunks.front().movie;
    return {framesIn(chunks), static_cast<double>(first.pictures.timeScale) / first.ticksPerFrame};
}

}  // namespace Morvane::Worker
