#include "worker/movie/StoredMovie.h"

#include "worker/Status.h"
#include "worker/movie/AtomReader.h"
#include "worker/movie/FragmentScan.h"
#include "worker/movie/MetadataAtoms.h"
#include "worker/movie/TimecodeMedia.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace Morvane::Worker {

namespace {

[[noreturn]] void damaged(const char* what) {
    throw StatusError(Status::InputOutput, fmt::format("the movie's index is damaged: {}", what));
}

struct Run {
    std::uint32_t samples;
    std::uint32_t value;
};

/// A table that may hold no more entries than its bytes have room for.
AtomCursor openTable(ByteView body, std::size_t entryBytes, std::uint32_t& entries) {
    AtomCursor cursor(body);
    cursor.u32();
    entries = cursor.u32();
    if (entries > cursor.remaining() / entryBytes) {
        damaged("a table ends too soon");
    }
    return cursor;
}

std::vector<Run> readRuns(ByteView body) {
    std::uint32_t entries = 0;
    AtomCursor cursor = openTable(body, 8, entries);
    std::vector<Run> runs(entries);
    for (Run& run : runs) {
        run.samples = cursor.u32();
        run.value = cursor.u32();
    }
    return runs;
}

/// Calls `set` for each of `samples` with the value of its run.
template <typename Set>
void spread(const std::vector<Run>& runs, std::vector<SampleTable::Sample>& samples, Set&& set) {
    std::size_t next = 0;
    for (const Run& run : runs) {
        if (run.samples > samples.size() - next) {
            damaged("a table counts more frames than there are");
        }
        for (std::uint32_t i = 0; i < run.samples; ++i) {
            set(samples[next++], run.value);
        }
    }
    if (next != samples.size()) {
        damaged("a table counts fewer frames than there are");
    }
}

std::vector<SampleTable::Sample> readSizes(ByteView body, std::int64_t fileBytes) {
    AtomCursor cursor(body);
    cursor.u32();
    const std::uint32_t common = cursor.u32();
    const std::uint32_t count = cursor.u32();
    if (common == 0 && count > cursor.remaining() / 4) {
        damaged("the table of sizes ends too soon");
    }
    if (common != 0 && count > fileBytes / common) {
        damaged("it counts more frames than the file has room for");
    }
    std::vector<SampleTable::Sample> samples(count);
    for (SampleTable::Sample& sample : samples) {
        sample = {0, common != 0 ? common : cursor.u32(), 0, 0, false};
    }
    return samples;
}

std::vector<std::int64_t> readChunkOffsets(ByteView table) {
    const std::optional<Atom> wide = findAtom(table, {atomType("co64")});
    std::uint32_t entries = 0;
    AtomCursor cursor =
        openTable(wide ? wide->body : requireAtom(table, {atomType("stco")}).body, wide ? 8 : 4, entries);
    std::vector<std::int64_t> offsets(entries);
    for (std::int64_t& offset : offsets) {
        offset = wide ? static_cast<std::int64_t>(cursor.u64()) : cursor.u32();
    }
    return offsets;
}

void placeSamples(ByteView table, std::int64_t fileBytes, std::vector<SampleTable::Sample>& samples) {
    const std::vector<std::int64_t> offsets = readChunkOffsets(table);
    std::uint32_t entries = 0;
    AtomCursor cursor = openTable(requireAtom(table, {atomType("stsc")}).body, 12, entries);
    std::uint32_t count = 0;
    std::uint32_t firstOfNext = entries > 0 ? cursor.u32() : 0;
    std::size_t next = 0;
    std::uint32_t read = 0;
    for (std::size_t chunk = 0; chunk < offsets.size(); ++chunk) {
        while (read < entries && firstOfNext == chunk + 1) {
            count = cursor.u32();
            cursor.u32();
            firstOfNext = ++read < entries ? cursor.u32() : 0;
        }
        std::int64_t offset = offsets[chunk];
        for (std::uint32_t i = 0; i < count; ++i, ++next) {
            if (next >= samples.size() || offset < 0 || offset > fileBytes - samples[next].bytes) {
                damaged("a frame lies outside the file");
            }
            samples[next].offset = offset;
            offset += samples[next].bytes;
        }
    }
    if (next != samples.size()) {
        damaged("frames lie nowhere");
    }
}

void markKeys(ByteView table, std::vector<SampleTable::Sample>& samples) {
    const std::optional<Atom> keys = findAtom(table, {atomType("stss")});
    if (!keys) {
        for (SampleTable::Sample& sample : samples) {
            sample.key = true;
        }
        return;
    }
    std::uint32_t entries = 0;
    AtomCursor cursor = openTable(keys->body, 4, entries);
    for (std::uint32_t i = 0; i < entries; ++i) {
        const std::uint32_t key = cursor.u32();
        if (key == 0 || key > samples.size()) {
            damaged("a key frame is none of its frames");
        }
        samples[key - 1].key = true;
    }
}

void readSamples(ByteView moov, std::int64_t fileBytes, StoredMovie& movie) {
    const ByteView table = requireAtom(moov, {atomType("moov"), atomType("trak"), atomType("mdia"),
                                              atomType("minf"), atomType("stbl")})
                               .body;
    movie.samples = readSizes(requireAtom(table, {atomType("stsz")}).body, fileBytes);
    spread(readRuns(requireAtom(table, {atomType("stts")}).body), movie.samples,
           [](SampleTable::Sample& sample, std::uint32_t ticks) { sample.duration = ticks; });
    if (const std::optional<Atom> offsets = findAtom(table, {atomType("ctts")})) {
        spread(readRuns(offsets->body), movie.samples,
               [](SampleTable::Sample& sample, std::uint32_t ticks) { sample.compositionOffset = ticks; });
    }
    markKeys(table, movie.samples);
    placeSamples(table, fileBytes, movie.samples);
    if (movie.samples.empty()) {
        damaged("it counts no frames");
    }
    movie.ticksPerFrame = movie.samples.front().duration;
    for (const SampleTable::Sample& sample : movie.samples) {
        if (sample.duration != movie.ticksPerFrame || sample.duration == 0) {
            damaged("its frames do not all last the same time");
        }
    }
    if (movie.ticksPerFrame > std::numeric_limits<std::int32_t>::max()) {
        damaged("its frames last for ever");
    }
}

}  // namespace

StoredMovie readStoredMovie(const OutputFile& file) {
    const FragmentedMovie found = scanFragments(file);
    if (found.header.empty() || found.fragmented) {
        throw StatusError(Status::BadArgument,
                          fmt::format("{} is {}", file.path(),
                                      found.fragmented ? "not finished: recover it first" : "no movie"));
    }
    StoredMovie movie;
    try {
        movie.pictures = readVideoTrack(found.header);
        readSamples(found.header, file.size(), movie);
        movie.timecode = readTimecode(found.header, file);
        movie.metadata = readMetadata(found.header);
    } catch (const StatusError& error) {
        throw StatusError(error.status, fmt::format("{}: {}", file.path(), error.what()));
    }
    return movie;
}

}  // namespace Morvane::Worker
