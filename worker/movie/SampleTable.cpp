#include "worker/movie/SampleTable.h"

#include <algorithm>
#include <limits>

namespace Morvane::Worker {

void SampleTable::extend(std::vector<Run>& runs, std::uint32_t count, std::uint32_t value) {
    if (!runs.empty() && runs.back().value == value &&
        runs.back().samples <= std::numeric_limits<std::uint32_t>::max() - count) {
        runs.back().samples += count;
    } else {
        runs.push_back({count, value});
    }
}

void SampleTable::add(const Sample& sample) {
    if (chunkOpen && chunkList.back().offset + chunkList.back().bytes == sample.offset) {
        chunkList.back().bytes += sample.bytes;
        ++chunkList.back().samples;
    } else {
        chunkList.push_back({sample.offset, sample.bytes, 1, ticks});
        chunkOpen = true;
    }
    extend(durations, 1, sample.duration);
    extend(compositionOffsets, 1, sample.compositionOffset);
    sizes.push_back(sample.bytes);
    ++samples;
    ticks += sample.duration;
    if (sample.key) {
        keySamples.push_back(static_cast<std::uint32_t>(samples));
    }
}

void SampleTable::addUniform(std::int64_t offset, std::uint32_t count, std::uint32_t bytes) {
    chunkList.push_back({offset, static_cast<std::int64_t>(count) * bytes, count, ticks});
    extend(durations, count, 1);
    uniformSize = bytes;
    samples += count;
    ticks += count;
}

void SampleTable::write(AtomWriter& out) const {
    writeRuns(out, atomType("stts"), durations);
    const bool reordered = std::any_of(compositionOffsets.begin(), compositionOffsets.end(),
                                       [](const Run& run) { return run.value != 0; });
    if (reordered) {
        writeRuns(out, atomType("ctts"), compositionOffsets);
    }
    writeKeySamples(out);
    writeChunks(out);
    writeSizes(out);
}

void SampleTable::writeRuns(AtomWriter& out, std::uint32_t type, const std::vector<Run>& runs) {
    out.fullAtom(type, 0, 0, [&] {
        out.u32(runs.size());
        for (const Run& run : runs) {
            out.u32(run.samples);
            out.u32(run.value);
        }
    });
}

void SampleTable::writeKeySamples(AtomWriter& out) const {
    // Without the atom every sample is a key sample.
    if (uniformSize != 0 || keySamples.size() == static_cast<std::size_t>(samples)) {
        return;
    }
    out.fullAtom(atomType("stss"), 0, 0, [&] {
        out.u32(keySamples.size());
        for (const std::uint32_t sample : keySamples) {
            out.u32(sample);
        }
    });
}

void SampleTable::writeSizes(AtomWriter& out) const {
    const bool equal =
        std::all_of(sizes.begin(), sizes.end(), [this](std::uint32_t size) { return size == sizes.front(); });
    const std::uint32_t common = uniformSize != 0 ? uniformSize : !sizes.empty() && equal ? sizes.front() : 0;
    out.fullAtom(atomType("stsz"), 0, 0, [&] {
        out.u32(common);
        out.u32(static_cast<std::uint64_t>(samples));
        if (common == 0) {
            for (const std::uint32_t size : sizes) {
                out.u32(size);
            }
        }
    });
}

void SampleTable::writeChunks(AtomWriter& out) const {
    out.fullAtom(atomType("stsc"), 0, 0, [&] {
        // Each entry holds until the next one's first chunk.
        std::vector<std::size_t> firsts;
        for (std::size_t i = 0; i < chunkList.size(); ++i) {
            if (i == 0 || chunkList[i].samples != chunkList[i - 1].samples) {
                firsts.push_back(i);
            }
        }
        out.u32(firsts.size());
        for (const std::size_t first : firsts) {
            out.u32(first + 1);
            out.u32(chunkList[first].samples);
            out.u32(1);  // the first and only sample description
        }
    });
    const bool wide = std::any_of(chunkList.begin(), chunkList.end(), [](const Chunk& chunk) {
        return chunk.offset > std::numeric_limits<std::uint32_t>::max();
    });
    out.fullAtom(wide ? atomType("co64") : atomType("stco"), 0, 0, [&] {
        out.u32(chunkList.size());
        for (const Chunk& chunk : chunkList) {
            wide ? out.u64(static_cast<std::uint64_t>(chunk.offset))
                 : out.u32(static_cast<std::uint64_t>(chunk.offset));
        }
    });
}

}  // namespace Morvane::Worker
