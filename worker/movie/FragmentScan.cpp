#include "worker/movie/FragmentScan.h"

#include "worker/Status.h"
#include "worker/movie/AtomReader.h"
#include "worker/movie/TopLevelAtoms.h"

#include <algorithm>
#include <limits>
#include <string>

namespace Morvane::Worker {

namespace {

// ISO/IEC 14496-12, "Track Fragment Header Box" and "Track Fragment Run Box".
constexpr std::uint32_t baseOffsetPresent = 0x1;
constexpr std::uint32_t descriptionPresent = 0x2;
constexpr std::uint32_t defaultDurationPresent = 0x8;
constexpr std::uint32_t defaultSizePresent = 0x10;
constexpr std::uint32_t defaultFlagsPresent = 0x20;
constexpr std::uint32_t dataOffsetPresent = 0x1;
constexpr std::uint32_t firstFlagsPresent = 0x4;
constexpr std::uint32_t durationPresent = 0x100;
constexpr std::uint32_t sizePresent = 0x200;
constexpr std::uint32_t flagsPresent = 0x400;
constexpr std::uint32_t compositionPresent = 0x800;
constexpr std::uint32_t notAKeySample = 0x10000;

constexpr std::uint32_t pictureTrack = 1;
constexpr std::uint64_t beyondAnyFile = std::uint64_t{1} << 60;
constexpr std::int64_t largestIndex = std::int64_t{1} << 30;
constexpr std::uint32_t mostSamplesInARun = 10'000'000;
constexpr std::uint32_t longestFrame = std::numeric_limits<std::int32_t>::max();  // ticks

struct Defaults {
    std::int64_t base = 0;
    std::uint32_t duration = 0;
    std::uint32_t size = 0;
    std::uint32_t flags = 0;
};

Defaults readHeader(ByteView body, std::int64_t moofOffset, std::uint32_t& track) {
    AtomCursor cursor(body);
    const std::uint32_t flags = cursor.u32();
    track = cursor.u32();
    Defaults defaults;
    defaults.base = moofOffset;
    if (flags & baseOffsetPresent) {
        defaults.base = static_cast<std::int64_t>(std::min(cursor.u64(), beyondAnyFile));
    }
    if (flags & descriptionPresent) {
        cursor.u32();
    }
    defaults.duration = flags & defaultDurationPresent ? cursor.u32() : 0;
    defaults.size = flags & defaultSizePresent ? cursor.u32() : 0;
    defaults.flags = flags & defaultFlagsPresent ? cursor.u32() : 0;
    return defaults;
}

class FragmentReader {
public:
    FragmentReader(std::vector<FragmentedMovie::Sample>& found, std::int64_t endOfFile)
        : pictures(found), end(endOfFile) {}

    void read(ByteView moof, std::int64_t moofOffset) {
        for (const Atom& atom : childAtoms(moof)) {
            if (atom.type == atomType("traf")) {
                readTrack(atom.body, moofOffset);
            }
        }
    }

private:
    void readTrack(ByteView traf, std::int64_t moofOffset) {
        std::uint32_t track = 0;
        const Defaults defaults = readHeader(requireAtom(traf, {atomType("tfhd")}).body, moofOffset, track);
        if (track != pictureTrack) {
            return;
        }
        std::int64_t offset = defaults.base;
        bool first = true;
        for (const Atom& atom : childAtoms(traf)) {
            if (atom.type == atomType("trun")) {
                readRun(atom.body, defaults, offset, first);
            }
        }
    }

    void readRun(ByteView trun, const Defaults& defaults, std::int64_t& offset, bool& first) {
        AtomCursor cursor(trun);
        const std::uint32_t flags = cursor.u32();
        const std::uint32_t count = cursor.u32();
        if (count > mostSamplesInARun) {
            throw StatusError(Status::InputOutput, "the movie's index is damaged: a run without end");
        }
        if (flags & dataOffsetPresent) {
            offset = defaults.base + static_cast<std::int32_t>(cursor.u32());
        }
        const std::uint32_t firstFlags = flags & firstFlagsPresent ? cursor.u32() : defaults.flags;
        for (std::uint32_t i = 0; i < count; ++i) {
            FragmentedMovie::Sample sample;
            sample.stored.offset = offset;
            sample.stored.duration = flags & durationPresent ? cursor.u32() : defaults.duration;
            sample.stored.bytes = flags & sizePresent ? cursor.u32() : defaults.size;
            const std::uint32_t sampleFlags = flags & flagsPresent ? cursor.u32()
                                              : i == 0             ? firstFlags
                                                                   : defaults.flags;
            sample.stored.key = !(sampleFlags & notAKeySample);
            sample.stored.compositionOffset = flags & compositionPresent ? cursor.u32() : 0;
            sample.beginsFragment = first;
            keep(sample);
            offset += sample.stored.bytes;
            first = false;
        }
    }

    void keep(FragmentedMovie::Sample& sample) {
        if (sample.stored.duration == 0 || sample.stored.duration > longestFrame) {
            throw StatusError(Status::InputOutput, "the movie's index is damaged: a frame lasts " +
                                                       std::to_string(sample.stored.duration) + " ticks");
        }
        // Also because a few bytes could say any number of them.
        if (sample.stored.bytes == 0) {
            throw StatusError(Status::InputOutput, "the movie's index is damaged: a frame has no bytes");
        }
        const bool whole = sample.stored.offset >= 0 && sample.stored.offset + sample.stored.bytes <= end;
        torn = torn || !whole;
        if (!torn) {
            sample.shown = decoded + sample.stored.compositionOffset;
            decoded += sample.stored.duration;
            pictures.push_back(sample);
        }
    }

    std::vector<FragmentedMovie::Sample>& pictures;
    std::int64_t end;
    std::int64_t decoded = 0;
    bool torn = false;
};

/// An atom's bytes as a whole.
Bytes readIndexAtom(const OutputFile& file, const TopLevelAtom& atom) {
    if (atom.bytes > largestIndex) {
        throw StatusError(Status::InputOutput, "the movie's index is damaged: it is too large");
    }
    return file.read(atom.offset, static_cast<std::size_t>(atom.bytes));
}

}  // namespace

FragmentedMovie scanFragments(const OutputFile& file) {
    FragmentedMovie movie;
    TopLevelAtoms atoms(file);
    FragmentReader fragments(movie.pictures, atoms.endOfFile());
    while (const TopLevelAtom* atom = atoms.next()) {
        if (atom->type == atomType("free") && movie.reserveBytes == 0 && movie.header.empty()) {
            movie.reserveOffset = atom->offset;
            movie.reserveBytes = atom->bytes;
        } else if (atom->type == atomType("moov") && movie.header.empty()) {
            movie.header = readIndexAtom(file, *atom);
            movie.fragmented = findAtom(movie.header, {atomType("moov"), atomType("mvex")}).has_value();
        } else if (atom->type == atomType("moof")) {
            const Bytes moof = readIndexAtom(file, *atom);
            fragments.read(childAtoms(moof).at(0).body, atom->offset);
        }
    }
    movie.end = atoms.position();
    for (const FragmentedMovie::Sample& sample : movie.pictures) {
        movie.end = std::max(movie.end, sample.stored.offset + sample.stored.bytes);
    }
    return movie;
}

std::size_t dropIncompleteTail(std::vector<FragmentedMovie::Sample>& pictures, std::uint32_t ticksPerFrame) {
    // The first n pictures in decoding order are complete when the last of them to be shown is the nth.
    std::size_t complete = 0;
    std::int64_t last = std::numeric_limits<std::int64_t>::min();
    for (std::size_t i = 0; i < pictures.size(); ++i) {
        last = std::max(last, pictures[i].shown);
        const std::int64_t frames = (last - pictures.front().shown) / ticksPerFrame + 1;
        if (frames == static_cast<std::int64_t>(i) + 1) {
            complete = i + 1;
        }
    }
    const std::size_t dropped = pictures.size() - complete;
    pictures.resize(complete);
    return dropped;
}

}  // namespace Morvane::Worker
