#pragma once

#include "worker/movie/AtomWriter.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Morvane::Worker {

/// Where a track's samples lie in the file and when they are shown: what becomes the atoms stts, ctts, stss,
/// stsc, stsz and stco or co64 (QuickTime File Format, "Sample Table Atoms"). Samples are added in decoding
/// order; times are ticks of the track's time scale.
class SampleTable {
public:
    /// Samples that lie one after the other in the file.
    struct Chunk {
        std::int64_t offset;  ///< bytes from the beginning of the file
        std::int64_t bytes;
        std::uint32_t samples;
        std::int64_t start;  ///< decoding time of the first sample, ticks
    };

    struct Sample {
        std::int64_t offset;  ///< bytes from the beginning of the file
        std::uint32_t bytes;
        std::uint32_t duration;           ///< ticks
        std::uint32_t compositionOffset;  ///< ticks from decoding to display
        bool key;
    };

    /// Starts a new chunk with the next sample, also where that follows without a gap.
    void endChunk() { chunkOpen = false; }
    void add(const Sample& sample);
    /// `count` samples of `bytes` each and one tick long, all key, as sound has them, as one chunk.
    /// REQUIRES: every call on one table gives the same `bytes`.
    void addUniform(std::int64_t offset, std::uint32_t count, std::uint32_t bytes);

    std::int64_t sampleCount() const { return samples; }
    std::int64_t duration() const { return ticks; }
    const std::vector<Chunk>& chunks() const { return chunkList; }
    void moveChunk(std::size_t chunk, std::int64_t offset) { chunkList.at(chunk).offset = offset; }

    /// The sample tables but for the description, ready to follow it inside `stbl`.
    void write(AtomWriter& out) const;

private:
    struct Run {
        std::uint32_t samples;
        std::uint32_t value;
    };

    static void extend(std::vector<Run>& runs, std::uint32_t samples, std::uint32_t value);
    static void writeRuns(AtomWriter& out, std::uint32_t type, const std::vector<Run>& runs);
    void writeKeySamples(AtomWriter& out) const;
    void writeSizes(AtomWriter& out) const;
    void writeChunks(AtomWriter& out) const;

    std::vector<Chunk> chunkList;
    std::vector<Run> durations;
    std::vector<Run> compositionOffsets;
    std::vector<std::uint32_t> keySamples;  ///< counted from 1
    std::vector<std::uint32_t> sizes;       ///< empty when all samples have `uniformSize`
    std::uint32_t uniformSize = 0;
    std::int64_t samples = 0;
    std::int64_t ticks = 0;
    bool chunkOpen = false;
};

}  // namespace Morvane::Worker
