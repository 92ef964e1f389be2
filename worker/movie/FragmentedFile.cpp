#include "worker/movie/FragmentedFile.h"

#include "worker/Status.h"
#include "worker/movie/AtomReader.h"
#include "worker/movie/MetadataAtoms.h"
#include "worker/movie/MovieIndex.h"
#include "worker/movie/MovieLayout.h"
#include "worker/movie/TimecodeMedia.h"

#include <algorithm>

namespace Morvane::Worker {

namespace {

/// Bytes of packets that make a fragment at once.
constexpr std::int64_t fragmentBytes = std::int64_t{8} << 20;

/// A write may be torn where two pages of memory meet, but not within a byte. So a fragment's `moof` stands
/// in the file with another first letter, as an atom that every reader skips, until all of the fragment is
/// there.
constexpr std::size_t typeOffset = 4;
constexpr std::uint8_t hiddenType = 'x';

/// ISO/IEC 14496-12, "Movie Extends Box": every track may go on in fragments; these state everything
/// themselves.
Bytes fragmentsFollow(std::size_t tracks) {
    AtomWriter out;
    out.atom(atomType("mvex"), [&] {
        for (std::size_t track = 1; track <= tracks; ++track) {
            out.fullAtom(atomType("trex"), 0, 0, [&] {
                out.u32(track);
                out.u32(1);  // the first and only sample description
                out.zeros(12);
            });
        }
    });
    return out.take();
}

}  // namespace

FragmentedFile::FragmentedFile(const std::string& path, const VideoTrack& video, ExistingFile existing)
    : scale(timeScaleFor(video.frameRate)),
      muxer(video, scale, [this](ByteView bytes) { take(bytes); }),
      output(OutputFile::create(path, existing)) {
    // Zeros on the disk, not a hole: when the disk is full, the index still has its place.
    Bytes start = fileTypeAtom();
    const auto startBytes = static_cast<std::int64_t>(start.size());
    const Bytes reserve = shortHeader(indexReserveBytes, atomType("free"));
    start.insert(start.end(), reserve.begin(), reserve.end());
    start.resize(static_cast<std::size_t>(startBytes + indexReserveBytes));
    try {
        output.write(0, start);
    } catch (const StatusError&) {
        output.remove();
        throw;
    }
    endOffset = startBytes + indexReserveBytes;
}

void FragmentedFile::add(const AVPacket& packet) {
    muxer.add(packet);
    ++packetCount;
    ++waitingPackets;
    waiting += packet.size;
    if (!headerWritten) {
        writeHeader(packet);
    }
    if (waiting >= fragmentBytes || waitingPackets >= FragmentMuxer::mostPackets) {
        flush();
    }
}

void FragmentedFile::writeHeader(const AVPacket& first) {
    muxer.flush();
    const ByteView moov = requireAtom(librarysHeader, {atomType("moov")}).whole;
    MovieIndex index;
    index.timeScale = scale.ticksPerSecond;
    index.created = movieTimeNow();
    index.metadata = writeMetadataAtoms(metadata);
    index.tracks.push_back(readVideoTrack(moov));
    index.tracks.back().firstShown = (first.pts - first.dts) * scale.ticksPerFrame;
    AtomWriter out;
    if (timecode) {
        const Bytes media = timecodeMedia(*timecode, 1, scale);
        index.tracks.push_back(timecodeIndexTrack(*timecode, 1, scale, endOffset + shortHeaderBytes));
        out.atom(atomType("mdat"), [&] { out.append(media); });
    }
    index.fragments = fragmentsFollow(index.tracks.size());
    out.append(writeMovieAtom(index));
    output.write(endOffset, out.bytes());
    advance(static_cast<std::int64_t>(out.bytes().size()));
    headerWritten = true;
    librarysHeader.clear();
}

void FragmentedFile::flush() {
    if (waiting == 0) {
        return;
    }
    waiting = 0;
    waitingPackets = 0;
    fragmentHeader.clear();
    fragmentMedia = 0;
    try {
        muxer.flush();
        // The fragment is whole: from this byte on it counts.
        output.write(endOffset + typeOffset, ByteView(fragmentHeader).subspan(typeOffset, 1));
    } catch (const StatusError&) {
        output.truncate(endOffset);
        throw;
    }
    advance(static_cast<std::int64_t>(fragmentHeader.size()) + fragmentMedia);
}

void FragmentedFile::take(ByteView bytes) {
    if (!headerWritten) {
        librarysHeader.insert(librarysHeader.end(), bytes.begin(), bytes.end());
        return;
    }
    takeFragment(bytes);
}

void FragmentedFile::takeFragment(ByteView bytes) {
    if (fragmentMedia == 0) {
        bytes = collectHeader(bytes);
    }
    output.write(endOffset + static_cast<std::int64_t>(fragmentHeader.size()) + fragmentMedia, bytes);
    fragmentMedia += static_cast<std::int64_t>(bytes.size());
}

ByteView FragmentedFile::collectHeader(ByteView bytes) {
    fragmentHeader.insert(fragmentHeader.end(), bytes.begin(), bytes.end());
    const std::size_t headerBytes =
        fragmentHeader.size() < shortHeaderBytes ? 0 : AtomCursor(fragmentHeader).u32();
    if (headerBytes == 0 || fragmentHeader.size() < headerBytes) {
        return {};
    }
    const std::size_t media = fragmentHeader.size() - headerBytes;
    fragmentHeader.resize(headerBytes);
    Bytes hidden = fragmentHeader;
    hidden[typeOffset] = hiddenType;
    output.write(endOffset, hidden);
    return bytes.last(media);
}

std::int64_t FragmentedFile::append(ByteView media) {
    AtomWriter out;
    out.atom(atomType("mdat"), [&] { out.append(media); });
    try {
        output.write(endOffset, out.bytes());
    } catch (const StatusError&) {
        output.truncate(endOffset);
        throw;
    }
    const std::int64_t offset = endOffset + shortHeaderBytes;
    advance(static_cast<std::int64_t>(out.bytes().size()));
    return offset;
}

void FragmentedFile::shorten(std::int64_t end) {
    output.truncate(end);
    endOffset = end;
}

void FragmentedFile::advance(std::int64_t bytes) {
    output.startWriteback(endOffset, bytes);
    endOffset += bytes;
}

}  // namespace Morvane::Worker
