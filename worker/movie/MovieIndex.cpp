#include "worker/movie/MovieIndex.h"

#include "worker/Status.h"
#include "worker/movie/AtomReader.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <algorithm>
#include <ctime>
#include <limits>

namespace Morvane::Worker {

namespace {

constexpr std::int64_t secondsFrom1904To1970 = 2'082'844'800;
constexpr std::uint32_t unspecifiedLanguage = 0x7FFF;
constexpr std::uint32_t fixedOne = 0x00010000;
constexpr std::uint32_t fullVolume = 0x0100;
constexpr std::uint32_t trackEnabled = 1;
constexpr std::uint32_t trackInMovie = 2;
constexpr std::uint32_t dataInThisFile = 1;

/// The number of the atom version whose times and durations have 64 bits.
std::uint32_t versionFor(std::uint64_t duration) {
    return duration > std::numeric_limits<std::uint32_t>::max() ? 1 : 0;
}

void writeTime(AtomWriter& out, std::uint32_t version, std::uint64_t value) {
    version == 1 ? out.u64(value) : out.u32(value);
}

void writeMatrix(AtomWriter& out) {
    for (const std::uint32_t value : {fixedOne, 0U, 0U, 0U, fixedOne, 0U, 0U, 0U, 0x40000000U}) {
        out.u32(value);
    }
}

void writeHandler(AtomWriter& out, std::uint32_t component, std::uint32_t type, const char* name) {
    out.fullAtom(atomType("hdlr"), 0, 0, [&] {
        out.u32(component);
        out.u32(type);
        out.zeros(12);
        out.pascalText(name);
    });
}

class IndexWriter {
public:
    explicit IndexWriter(const MovieIndex& described) : index(described) {}

    Bytes write() {
        out.atom(atomType("moov"), [&] {
            writeMovieHeader();
            for (std::size_t i = 0; i < index.tracks.size(); ++i) {
                out.atom(atomType("trak"), [&] { writeTrack(index.tracks[i], i + 1); });
            }
            out.append(index.fragments);
            out.append(index.metadata);
        });
        return out.take();
    }

private:
    /// Ticks of the movie's time scale; sound is rounded up, so that its last sample is not cut off.
    std::uint64_t movieDuration(const IndexTrack& track) const {
        return static_cast<std::uint64_t>(av_rescale_rnd(track.samples.duration(), index.timeScale,
                                                         std::max(track.timeScale, 1U), AV_ROUND_UP));
    }

    void writeMovieHeader() {
        std::uint64_t duration = 0;
        for (const IndexTrack& track : index.tracks) {
            // In fragments the time code's only sample says nothing about the movie's length.
            duration = std::max(duration, index.fragments.empty() ? movieDuration(track) : 0);
        }
        const std::uint32_t version = versionFor(duration);
        out.fullAtom(atomType("mvhd"), version, 0, [&] {
            writeTime(out, version, index.created);
            writeTime(out, version, index.created);
            out.u32(index.timeScale);
            writeTime(out, version, duration);
            out.u32(fixedOne);  // preferred rate
            out.u16(fullVolume);
            out.zeros(10);
            writeMatrix(out);
            out.zeros(24);  // preview, poster, selection and current time
            out.u32(index.tracks.size() + 1);
        });
    }

    void writeTrack(const IndexTrack& track, std::size_t id) {
        writeTrackHeader(track, id);
        if (track.kind == TrackKind::Video) {
            writeEdits(track);
            writeTimecodeReference();
        }
        out.atom(atomType("mdia"), [&] {
            writeMediaHeader(track);
            writeHandler(out, atomType("mhlr"), handlerOf(track.kind), nameOf(track.kind));
            out.atom(atomType("minf"), [&] { writeMediaInformation(track); });
        });
    }

    void writeTrackHeader(const IndexTrack& track, std::size_t id) {
        const std::uint64_t duration = movieDuration(track);
        const std::uint32_t version = versionFor(duration);
        // A time-code track describes; enabled, some players would show it.
        const std::uint32_t flags =
            track.kind == TrackKind::Timecode ? trackInMovie : trackEnabled | trackInMovie;
        out.fullAtom(atomType("tkhd"), version, flags, [&] {
            writeTime(out, version, index.created);
            writeTime(out, version, index.created);
            out.u32(id);
            out.zeros(4);
            writeTime(out, version, duration);
            out.zeros(8);
            out.u16(0);  // layer
            out.u16(0);  // alternate group
            out.u16(track.kind == TrackKind::Sound ? fullVolume : 0);
            out.u16(0);
            writeMatrix(out);
            out.u32(track.width);
            out.u32(track.height);
        });
    }

    void writeEdits(const IndexTrack& track) {
        const std::uint64_t duration = movieDuration(track);
        const std::uint32_t version =
            versionFor(std::max(duration, static_cast<std::uint64_t>(track.firstShown)));
        out.atom(atomType("edts"), [&] {
            out.fullAtom(atomType("elst"), version, 0, [&] {
                out.u32(1);
                writeTime(out, version, duration);
                writeTime(out, version, static_cast<std::uint64_t>(track.firstShown));
                out.u32(fixedOne);
            });
        });
    }

    void writeTimecodeReference() {
        const auto timecode = std::find_if(index.tracks.begin(), index.tracks.end(),
                                           [](const IndexTrack& t) { return t.kind == TrackKind::Timecode; });
        if (timecode != index.tracks.end()) {
            out.atom(atomType("tref"), [&] {
                out.atom(atomType("tmcd"),
                         [&] { out.u32(static_cast<std::uint64_t>(timecode - index.tracks.begin()) + 1); });
            });
        }
    }

    void writeMediaHeader(const IndexTrack& track) {
        const auto duration = static_cast<std::uint64_t>(track.samples.duration());
        const std::uint32_t version = versionFor(duration);
        out.fullAtom(atomType("mdhd"), version, 0, [&] {
            writeTime(out, version, index.created);
            writeTime(out, version, index.created);
            out.u32(track.timeScale);
            writeTime(out, version, duration);
            out.u16(unspecifiedLanguage);
            out.u16(0);  // quality
        });
    }

    static std::uint32_t handlerOf(TrackKind kind) {
        return kind == TrackKind::Video   ? atomType("vide")
               : kind == TrackKind::Sound ? atomType("soun")
                                          : atomType("tmcd");
    }

    static const char* nameOf(TrackKind kind) {
        return kind == TrackKind::Video   ? "Video Media Handler"
               : kind == TrackKind::Sound ? "Sound Media Handler"
                                          : "Time Code Media Handler";
    }

    void writeMediaInformation(const IndexTrack& track) {
        if (track.kind == TrackKind::Video) {
            out.fullAtom(atomType("vmhd"), 0, 1, [&] { out.zeros(8); });
        } else if (track.kind == TrackKind::Sound) {
            out.fullAtom(atomType("smhd"), 0, 0, [&] { out.zeros(4); });
        } else {
            writeTimecodeMediaHeader();
        }
        writeHandler(out, atomType("dhlr"), atomType("alis"), "Data Handler");
        out.atom(atomType("dinf"), [&] {
            out.fullAtom(atomType("dref"), 0, 0, [&] {
                out.u32(1);
                out.fullAtom(atomType("alis"), 0, dataInThisFile, [] {});
            });
        });
        out.atom(atomType("stbl"), [&] {
            out.append(track.description);
            track.samples.write(out);
        });
    }

    void writeTimecodeMediaHeader() {
        out.atom(atomType("gmhd"), [&] {
            out.fullAtom(atomType("gmin"), 0, 0, [&] {
                out.u16(0x40);  // copy
                for (int i = 0; i < 3; ++i) {
                    out.u16(0x8000);
                }
                out.u16(0);
                out.u16(0);
            });
            out.atom(atomType("tmcd"), [&] {
                out.fullAtom(atomType("tcmi"), 0, 0, [&] {
                    out.u16(0);   // font
                    out.u16(0);   // face
                    out.u16(12);  // size in points
                    out.u16(0);
                    out.zeros(6);                                       // black
                    out.u16(0xFFFF), out.u16(0xFFFF), out.u16(0xFFFF);  // on white
                    out.pascalText("Courier");
                });
            });
        });
    }

    const MovieIndex& index;
    AtomWriter out;
};

}  // namespace

Bytes writeMovieAtom(const MovieIndex& index) {
    return IndexWriter(index).write();
}

IndexTrack readVideoTrack(ByteView moov) {
    const ByteView body = requireAtom(moov, {atomType("moov")}).body;
    IndexTrack track;
    const ByteView trak = requireAtom(body, {atomType("trak")}).body;
    const ByteView handler = requireAtom(trak, {atomType("mdia"), atomType("hdlr")}).body;
    AtomCursor handlerCursor(handler);
    handlerCursor.take(8);
    if (handlerCursor.u32() != atomType("vide")) {
        throw StatusError(Status::InputOutput, "the movie's first track holds no pictures");
    }
    const ByteView header = requireAtom(trak, {atomType("tkhd")}).body;
    AtomCursor end(header.last(std::min<std::size_t>(8, header.size())));
    track.width = end.u32();
    track.height = end.u32();
    AtomCursor media(requireAtom(trak, {atomType("mdia"), atomType("mdhd")}).body);
    const std::uint32_t version = media.u32() >> 24;
    media.take(version == 1 ? 16 : 8);
    track.timeScale = media.u32();
    if (track.timeScale == 0) {
        throw StatusError(Status::InputOutput, "the movie's index is damaged: its clock stands still");
    }
    const ByteView description =
        requireAtom(trak, {atomType("mdia"), atomType("minf"), atomType("stbl"), atomType("stsd")}).whole;
    track.description.assign(description.begin(), description.end());
    return track;
}

std::uint64_t movieTimeNow() {
    return static_cast<std::uint64_t>(std::time(nullptr) + secondsFrom1904To1970);
}

}  // namespace Morvane::Worker
