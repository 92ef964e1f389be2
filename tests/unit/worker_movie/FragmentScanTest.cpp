#include "worker/movie/FragmentScan.h"

#include "ScratchFile.h"
#include "worker/Status.h"

#include <gtest/gtest.h>

#include <vector>

namespace Morvane::Worker {
namespace {

/// What a fragment of the test's says; times in ticks.
struct Fragment {
    std::uint32_t track = 1;
    std::uint32_t duration = 10;  ///< of each picture
    std::vector<std::uint32_t> sizes = {5, 6};
    std::uint32_t count = 2;
};

Bytes bytesOf(const Fragment& fragment) {
    AtomWriter out;
    out.atom(atomType("moof"), [&] {
        out.atom(atomType("traf"), [&] {
            out.fullAtom(atomType("tfhd"), 0, 0x020000 | 0x8,
                         [&] {  // offsets from the moof; a common duration
                             out.u32(fragment.track);
                             out.u32(fragment.duration);
                         });
            out.fullAtom(atomType("trun"), 0, 0x1 | 0x200, [&] {  // an offset; sizes
                out.u32(fragment.count);
                out.u32(8 + 8 + 20 + 20 + 4 * fragment.sizes.size() + 8);
                for (const std::uint32_t size : fragment.sizes) {
                    out.u32(size);
                }
            });
        });
    });
    std::uint32_t media = 0;
    for (const std::uint32_t size : fragment.sizes) {
        media += size;
    }
    out.atom(atomType("mdat"), [&] { out.zeros(media); });
    return out.take();
}

Bytes header() {
    AtomWriter out;
    out.atom(atomType("ftyp"), [&] { out.zeros(12); });
    out.atom(atomType("free"), [&] { out.zeros(100); });
    out.atom(atomType("moov"), [&] { out.atom(atomType("mvex"), [] {}); });
    return out.take();
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

TEST(FragmentScanTest, FindsReserveHeaderAndPictures) {
    const ScratchFile scratch;
    const Bytes movie = joined({header(), bytesOf({}), bytesOf({})});
    const OutputFile file = scratch.with(movie);

    const FragmentedMovie found = scanFragments(file);

    EXPECT_EQ(found.reserveOffset, 20);
    EXPECT_EQ(found.reserveBytes, 108);
    EXPECT_TRUE(found.fragmented);
    ASSERT_EQ(found.pictures.size(), 4U);
    const auto first = static_cast<std::int64_t>(header().size() + bytesOf({}).size() - 11);
    EXPECT_EQ(found.pictures[0].stored.offset, first);
    EXPECT_EQ(found.pictures[1].stored.offset, first + 5);
    EXPECT_EQ(found.pictures[3].shown, 30);
    EXPECT_TRUE(found.pictures[2].beginsFragment);
    EXPECT_FALSE(found.pictures[3].beginsFragment);
    EXPECT_EQ(found.end, file.size());
}

TEST(FragmentScanTest, StopsQuietlyAtATornFragment) {
    const ScratchFile scratch;
    const Bytes whole = joined({header(), bytesOf({})});
    const Bytes movie = joined({whole, bytesOf({})});
    OutputFile file = scratch.with(movie);
    for (std::size_t length = movie.size() - 1; length >= whole.size(); --length) {
        file.truncate(static_cast<std::int64_t>(length));

        const FragmentedMovie found = scanFragments(file);

        // The second fragment's first picture counts as long as its bytes are all there.
        EXPECT_EQ(found.pictures.size(), length >= movie.size() - 6 ? 3U : 2U) << length;
        EXPECT_LE(found.end, static_cast<std::int64_t>(length));
    }
}

TEST(FragmentScanTest, OtherTracksAreNotPictures) {
    const ScratchFile scratch;
    Fragment sound;
    sound.track = 2;
    const OutputFile file = scratch.with(joined({header(), bytesOf(sound)}));

    EXPECT_TRUE(scanFragments(file).pictures.empty());
}

TEST(FragmentScanTest, AnOrdinaryMovieIsToldApart) {
    const ScratchFile scratch;
    AtomWriter out;
    out.atom(atomType("ftyp"), [&] { out.zeros(12); });
    out.atom(atomType("moov"), [&] { out.atom(atomType("mvhd"), [] {}); });
    const OutputFile file = scratch.with(out.bytes());

    const FragmentedMovie found = scanFragments(file);

    EXPECT_FALSE(found.header.empty());
    EXPECT_FALSE(found.fragmented);
}

TEST(FragmentScanTest, AnIndexThatContradictsItselfIsRefused) {
    const ScratchFile scratch;
    Fragment tooFew;
    tooFew.count = 3;
    Fragment endless;
    endless.count = 0xFFFFFFFF;
    Fragment timeless;
    timeless.duration = 0;
    // A time code's sample that counts such frames would have room for none.
    Fragment everlasting;
    everlasting.duration = 0x80000000;
    Fragment empty;
    empty.sizes = {5, 0};
    for (const Fragment& fragment : {tooFew, endless, timeless, everlasting, empty}) {
        const OutputFile file = scratch.with(joined({header(), bytesOf(fragment)}));
        EXPECT_THROW(scanFragments(file), StatusError);
    }
}

TEST(FragmentScanTest, AnEmptyFileHoldsNothing) {
    const ScratchFile scratch;
    const OutputFile file = scratch.with({});

    const FragmentedMovie found = scanFragments(file);

    EXPECT_TRUE(found.header.empty());
    EXPECT_EQ(found.end, 0);
}

std::vector<FragmentedMovie::Sample> picturesShownAt(std::initializer_list<int> frames) {
    std::vector<FragmentedMovie::Sample> pictures;
    for (const int frame : frames) {
        FragmentedMovie::Sample picture;
        picture.shown = frame * 10;
        pictures.push_back(picture);
    }
    return pictures;
}

std::size_t keptOf(std::initializer_list<int> frames) {
    std::vector<FragmentedMovie::Sample> pictures = picturesShownAt(frames);
    const std::size_t dropped = dropIncompleteTail(pictures, 10);
    EXPECT_EQ(dropped + pictures.size(), frames.size());
    return pictures.size();
}

TEST(IncompleteTailTest, KeepsAsManyAsCanBeShownInARow) {
    EXPECT_EQ(keptOf({2, 3, 4}), 3U);
    EXPECT_EQ(keptOf({2, 6, 4, 3, 5}), 5U);
    EXPECT_EQ(keptOf({2, 6, 4, 3}), 1U);
    EXPECT_EQ(keptOf({2, 6, 4, 3, 5, 10, 8}), 5U);
    EXPECT_EQ(keptOf({2}), 1U);
    EXPECT_EQ(keptOf({}), 0U);
}

}  // namespace
}  // namespace Morvane::Worker
