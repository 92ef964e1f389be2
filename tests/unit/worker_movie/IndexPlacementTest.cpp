#include "worker/movie/IndexPlacement.h"

#include "MovieWalker.h"
#include "ScratchFile.h"
#include "worker/Status.h"
#include "worker/movie/IndexCheck.h"
#include "worker/movie/MovieLayout.h"
#include "worker/movie/TimecodeMedia.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

/// A video sample description of 86 bytes that says nothing.
Bytes emptyVideoDescription() {
    AtomWriter out;
    out.fullAtom(atomType("stsd"), 0, 0, [&] {
        out.u32(1);
        out.atom(atomType("test"), [&] { out.zeros(78); });
    });
    return out.take();
}

/// A file of `ftyp`, a reserve of `reserve` bytes and one `mdat` with samples of 100 bytes, and what goes
/// with it.
struct Prepared {
    Prepared(const ScratchFile& scratch, std::int64_t reserve, int samples)
        : file(OutputFile::create(scratch.path(), ExistingFile::Replace)) {
        AtomWriter out;
        out.append(fileTypeAtom());
        movie.reserveOffset = static_cast<std::int64_t>(out.bytes().size());
        movie.reserveBytes = reserve;
        out.append(shortHeader(reserve, atomType("free")));
        out.zeros(static_cast<std::size_t>(reserve - shortHeaderBytes));
        const auto media = static_cast<std::int64_t>(out.bytes().size()) + shortHeaderBytes;
        out.atom(atomType("mdat"), [&] { out.zeros(static_cast<std::size_t>(100 * samples)); });
        movie.end = static_cast<std::int64_t>(out.bytes().size());
        out.zeros(3);  // what a crash left behind
        file.write(0, out.bytes());
        IndexTrack track;
        track.description = emptyVideoDescription();
        track.timeScale = 24000;
        for (int i = 0; i < samples; ++i) {
            track.samples.add({media + 100 * i, 100, 1000, 0, true});
        }
        movie.index.timeScale = 24000;
        movie.index.tracks.push_back(track);
    }

    std::int64_t indexBytes() const { return static_cast<std::int64_t>(writeMovieAtom(movie.index).size()); }

    OutputFile file;
    UnplacedMovie movie;
};

using Types = std::vector<std::string>;

TEST(IndexPlacementTest, AnIndexThatFillsTheReserveExactlyLeavesNoFreeAtom) {
    const ScratchFile scratch;
    const std::int64_t exact = Prepared(scratch, 100, 3).indexBytes() + longHeaderBytes;
    for (const std::int64_t spare : {0, 8, 9, 100}) {
        Prepared prepared(scratch, exact + spare, 3);

        placeIndex(prepared.file, prepared.movie, true, 0);

        const Tests::WalkedMovie walked = Tests::walkMovie(scratch.path());
        EXPECT_EQ(walked.problems, std::vector<std::string>{}) << spare;
        EXPECT_EQ(walked.topLevel,
                  spare == 0 ? (Types{"ftyp", "moov", "mdat"}) : (Types{"ftyp", "moov", "free", "mdat"}));
    }
}

TEST(IndexPlacementTest, AnIndexThatLeavesNoRoomForAnAtomBehindItIsPutFirstByACopy) {
    const ScratchFile scratch;
    const std::int64_t exact = Prepared(scratch, 100, 3).indexBytes() + longHeaderBytes;
    for (const std::int64_t spare : {-1, 1, 7}) {
        Prepared prepared(scratch, exact + spare, 3);

        placeIndex(prepared.file, prepared.movie, true, 0);

        EXPECT_EQ(Tests::problemsOf(scratch.path()), "") << spare;
        EXPECT_EQ(Tests::walkMovie(scratch.path()).topLevel, (Types{"ftyp", "moov", "mdat"}));
    }
}

TEST(IndexPlacementTest, WhatLiesBehindTheMediaIsCutOff) {
    const ScratchFile scratch;
    Prepared prepared(scratch, 2000, 3);

    placeIndex(prepared.file, prepared.movie, false, 0);

    EXPECT_EQ(Tests::problemsOf(scratch.path()), "");
    EXPECT_EQ(prepared.file.size(), prepared.movie.end + prepared.indexBytes());
}

TEST(IndexPlacementTest, WithoutAReserveTheMediaAreCopied) {
    const ScratchFile scratch;
    for (const bool indexFirst : {false, true}) {
        Prepared prepared(scratch, 8, 3);
        prepared.movie.reserveBytes = 0;

        placeIndex(prepared.file, prepared.movie, indexFirst, 0);

        EXPECT_EQ(Tests::problemsOf(scratch.path()), "");
        EXPECT_EQ(prepared.file.path(), std::filesystem::canonical(scratch.path()));
    }
}

TEST(IndexCheckTest, FindsWhatDiffers) {
    const ScratchFile scratch;
    Prepared prepared(scratch, 2000, 3);
    placeIndex(prepared.file, prepared.movie, true, 0);
    const MovieIndex& index = prepared.movie.index;
    const Bytes moov = writeMovieAtom(index);
    const std::int64_t offset = prepared.movie.reserveOffset;
    EXPECT_NO_THROW(checkIndex(scratch.path(), index, moov, offset));

    EXPECT_THROW(checkIndex(scratch.path(), index, moov, offset + 8), StatusError);
    MovieIndex outside = index;
    outside.tracks[0].samples.moveChunk(0, 10);
    EXPECT_THROW(checkIndex(scratch.path(), outside, moov, offset), StatusError);
    prepared.file.write(offset + 100, Bytes{0xEE});
    EXPECT_THROW(checkIndex(scratch.path(), index, moov, offset), StatusError);
    prepared.file.write(offset + 100, Bytes{moov[100]});
    prepared.file.write(prepared.file.size(), Bytes{0});
    EXPECT_THROW(checkIndex(scratch.path(), index, moov, offset), StatusError);
}

TEST(MovieIndexTest, DurationsBeyond32BitsTakeWiderAtoms) {
    const ScratchFile scratch;
    Prepared prepared(scratch, 2000, 3);
    MovieIndex& index = prepared.movie.index;
    // 21 hours at 60,000 ticks a second.
    index.timeScale = index.tracks[0].timeScale = 60000;
    const SampleTable::Chunk media = index.tracks[0].samples.chunks()[0];
    index.tracks[0].samples = {};
    for (int i = 0; i < 3; ++i) {
        index.tracks[0].samples.add({media.offset + 100 * i, 100, 2'000'000'000, 0, true});
    }

    placeIndex(prepared.file, prepared.movie, true, 0);

    const Tests::WalkedMovie walked = Tests::walkMovie(scratch.path());
    EXPECT_EQ(walked.problems, std::vector<std::string>{});
    EXPECT_EQ(walked.duration, 6'000'000'000);
    EXPECT_EQ(walked.tracks.at(0).mediaDuration, 6'000'000'000);
}

}  // namespace
}  // namespace Morvane::Worker
