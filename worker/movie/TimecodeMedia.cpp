#include "worker/movie/TimecodeMedia.h"

#include "worker/Status.h"
#include "worker/movie/AtomReader.h"

#include <fmt/core.h>

#include <algorithm>
#include <limits>

namespace Morvane::Worker {

namespace {

constexpr std::uint32_t wrapsAt24Hours = 2;
constexpr std::uint32_t unspecifiedLanguage = 0x7FFF;
constexpr std::size_t longestReel = 255;
constexpr std::uint32_t sampleBytes = 4;

/// Frames that one sample may last.
std::int64_t longestSample(TimeScale scale) {
    return std::numeric_limits<std::int32_t>::max() / scale.ticksPerFrame;
}

Bytes describe(const TimecodeTrack& timecode, TimeScale scale) {
    AtomWriter out;
    out.fullAtom(atomType("stsd"), 0, 0, [&] {
        out.u32(1);
        out.atom(atomType("tmcd"), [&] {
            out.zeros(6);
            out.u16(1);  // data reference
            out.u32(0);
            out.u32(wrapsAt24Hours);  // never drop-frame
            out.u32(scale.ticksPerSecond);
            out.u32(scale.ticksPerFrame);
            out.u8(static_cast<std::uint32_t>(timecode.framesPerSecond));
            out.u8(0);
            if (!timecode.reel.empty()) {
                out.atom(atomType("name"), [&] {
                    out.u16(static_cast<std::uint32_t>(timecode.reel.size()));
                    out.u16(unspecifiedLanguage);
                    out.text(timecode.reel);
                });
            }
        });
    });
    return out.take();
}

std::optional<ByteView> findTimecodeTrack(ByteView moov) {
    for (const Atom& atom : childAtoms(requireAtom(moov, {atomType("moov")}).body)) {
        if (atom.type != atomType("trak")) {
            continue;
        }
        AtomCursor handler(requireAtom(atom.body, {atomType("mdia"), atomType("hdlr")}).body);
        handler.take(8);
        if (handler.u32() == atomType("tmcd")) {
            return atom.body;
        }
    }
    return std::nullopt;
}

void readDescription(ByteView stsd, TimecodeTrack& timecode) {
    AtomCursor cursor(stsd);
    cursor.take(8 + 8 + 8 + 4 + 4 + 4 + 4);  // up to the number of frames
    timecode.framesPerSecond = cursor.u8();
    cursor.u8();
    if (const std::optional<Atom> name = findAtom(cursor.take(cursor.remaining()), {atomType("name")})) {
        AtomCursor text(name->body);
        const std::size_t length = text.u16();
        text.u16();
        const ByteView reel = text.take(length);
        timecode.reel.assign(reel.begin(), reel.end());
    }
}

}  // namespace

void checkTimecode(const TimecodeTrack& timecode) {
    if (timecode.framesPerSecond < 1 || timecode.framesPerSecond > 255) {
        throw StatusError(Status::BadArgument, fmt::format("a time code cannot count {} frames a second",
                                                           timecode.framesPerSecond));
    }
    if (timecode.startFrame < 0 || timecode.startFrame > std::numeric_limits<std::int32_t>::max()) {
        throw StatusError(Status::BadArgument,
                          fmt::format("a time code cannot start at frame {}", timecode.startFrame));
    }
    if (timecode.reel.size() > longestReel) {
        throw StatusError(Status::BadArgument,
                          fmt::format("the reel's name is longer than {} bytes", longestReel));
    }
}

Bytes timecodeMedia(const TimecodeTrack& timecode, std::int64_t frames, TimeScale scale) {
    AtomWriter out;
    for (std::int64_t frame = 0; frame < frames; frame += longestSample(scale)) {
        out.u32(static_cast<std::uint64_t>(timecode.startFrame + frame));
    }
    return out.take();
}

IndexTrack timecodeIndexTrack(const TimecodeTrack& timecode, std::int64_t frames, TimeScale scale,
                              std::int64_t offset) {
    IndexTrack track;
    track.kind = TrackKind::Timecode;
    track.description = describe(timecode, scale);
    track.timeScale = scale.ticksPerSecond;
    for (std::int64_t frame = 0; frame < frames; frame += longestSample(scale)) {
        const std::int64_t length = std::min(longestSample(scale), frames - frame);
        track.samples.add(
            {offset, sampleBytes, static_cast<std::uint32_t>(length * scale.ticksPerFrame), 0, true});
        offset += sampleBytes;
    }
    return track;
}

std::optional<TimecodeTrack> readTimecode(ByteView moov, const OutputFile& file) {
    const std::optional<ByteView> trak = findTimecodeTrack(moov);
    if (!trak) {
        return std::nullopt;
    }
    TimecodeTrack timecode;
    const ByteView table = requireAtom(*trak, {atomType("mdia"), atomType("minf"), atomType("stbl")}).body;
    readDescription(requireAtom(table, {atomType("stsd")}).body, timecode);
    AtomCursor offsets(requireAtom(table, {atomType("stco")}).body);
    offsets.take(8);
    const Bytes sample = file.read(offsets.u32(), sampleBytes);
    timecode.startFrame = AtomCursor(sample).u32();
    checkTimecode(timecode);
    return timecode;
}

}  // namespace Morvane::Worker
