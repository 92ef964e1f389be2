#include "worker/movie/ChunkCheck.h"

#include "worker/Status.h"
#include "worker/movie/FrameCheck.h"
#include "worker/movie/OutputFile.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace Morvane::Worker {

namespace {

void measure(CheckedChunk& chunk) {
    std::int64_t decoded = 0;
    chunk.firstShown = std::numeric_limits<std::int64_t>::max();
    for (const SampleTable::Sample& sample : chunk.movie->samples) {
        chunk.firstShown = std::min(chunk.firstShown, decoded + sample.compositionOffset);
        chunk.lastShown = std::max(chunk.lastShown, decoded + sample.compositionOffset);
        decoded += sample.duration;
    }
}

void checkFrames(CheckedChunk& chunk, const std::optional<std::int64_t>& wanted) {
    const auto held = static_cast<std::int64_t>(chunk.movie->samples.size());
    if (wanted && *wanted != held) {
        chunk.complaints.push_back(
            fmt::format("holds {} frame{}, not {}", held, held == 1 ? "" : "s", *wanted));
    }
    if (!chunk.movie->samples.front().key) {
        chunk.complaints.emplace_back("does not begin with a key frame");
    }
    if (chunk.lastShown - chunk.firstShown != (held - 1) * chunk.movie->ticksPerFrame) {
        chunk.complaints.emplace_back("its frames are not shown one after the other");
    }
    checkFirstAndLastFrame(chunk.path, chunk.lastShown - chunk.firstShown);
}

CheckedChunk checkChunk(const WantedChunk& wanted, const std::optional<StoredMovie>& form) {
    CheckedChunk chunk;
    chunk.path = wanted.path;
    try {
        chunk.movie = readStoredMovie(OutputFile::openToRead(wanted.path));
        measure(chunk);
        if (form) {
            chunk.complaints = differencesBetween(*form, *chunk.movie);
        }
        checkFrames(chunk, wanted.frames);
    } catch (const StatusError& error) {
        chunk.complaints.emplace_back(error.what());
    }
    return chunk;
}

}  // namespace

std::vector<CheckedChunk> checkChunks(const std::vector<WantedChunk>& chunks) {
    std::vector<CheckedChunk> checked;
    checked.reserve(chunks.size());
    std::optional<StoredMovie> form;
    for (const WantedChunk& wanted : chunks) {
        checked.push_back(checkChunk(wanted, form));
        if (!form && checked.back().movie) {
            form = checked.back().movie;
            form->samples.clear();
        }
    }
    return checked;
}

}  // namespace Morvane::Worker
