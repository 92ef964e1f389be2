#include "worker/movie/SampleTable.h"

#include "worker/movie/AtomReader.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

/// The 32-bit numbers behind version and flags of one of the tables; empty when it is missing.
std::vector<std::uint32_t> numbersOf(const SampleTable& table, const char (&type)[5]) {
    AtomWriter out;
    table.write(out);
    const std::optional<Atom> atom = findAtom(out.bytes(), {atomType(type)});
    std::vector<std::uint32_t> numbers;
    if (atom) {
        AtomCursor cursor(atom->body);
        cursor.u32();
        while (cursor.remaining() > 0) {
            numbers.push_back(cursor.u32());
        }
    }
    return numbers;
}

using Numbers = std::vector<std::uint32_t>;

TEST(SampleTableTest, SamplesWithoutAGapAreOneChunk) {
    SampleTable sut;
    sut.add({100, 10, 5, 0, true});
    sut.add({110, 20, 5, 0, true});
    sut.add({200, 30, 5, 0, true});

    EXPECT_EQ(numbersOf(sut, "stco"), (Numbers{2, 100, 200}));
    EXPECT_EQ(numbersOf(sut, "stsc"), (Numbers{2, 1, 2, 1, 2, 1, 1}));
    EXPECT_EQ(numbersOf(sut, "stsz"), (Numbers{0, 3, 10, 20, 30}));
    EXPECT_EQ(numbersOf(sut, "stts"), (Numbers{1, 3, 5}));
    EXPECT_EQ(sut.duration(), 15);
    EXPECT_EQ(sut.sampleCount(), 3);
}

TEST(SampleTableTest, AChunkEndsWhereItIsTold) {
    SampleTable sut;
    sut.add({100, 10, 5, 0, true});
    sut.endChunk();
    sut.add({110, 20, 5, 0, true});

    EXPECT_EQ(numbersOf(sut, "stco"), (Numbers{2, 100, 110}));
    EXPECT_EQ(numbersOf(sut, "stsc"), (Numbers{1, 1, 1, 1}));
}

TEST(SampleTableTest, EqualSizesAreToldOnce) {
    SampleTable sut;
    sut.add({0, 8, 1, 0, true});
    sut.add({8, 8, 1, 0, true});

    EXPECT_EQ(numbersOf(sut, "stsz"), (Numbers{8, 2}));
}

TEST(SampleTableTest, OnlyReorderedSamplesHaveCompositionOffsets) {
    SampleTable inOrder;
    inOrder.add({0, 8, 1, 0, true});
    SampleTable reordered;
    reordered.add({0, 8, 1, 2, true});
    reordered.add({8, 8, 1, 4, false});
    reordered.add({16, 8, 1, 4, false});

    EXPECT_EQ(numbersOf(inOrder, "ctts"), Numbers{});
    EXPECT_EQ(numbersOf(reordered, "ctts"), (Numbers{2, 1, 2, 2, 4}));
}

TEST(SampleTableTest, KeySamplesAreListedUnlessAllAre) {
    SampleTable all;
    all.add({0, 8, 1, 0, true});
    SampleTable some;
    some.add({0, 8, 1, 0, true});
    some.add({8, 8, 1, 0, false});
    some.add({16, 8, 1, 0, true});

    EXPECT_EQ(numbersOf(all, "stss"), Numbers{});
    EXPECT_EQ(numbersOf(some, "stss"), (Numbers{2, 1, 3}));
}

TEST(SampleTableTest, OffsetsOf64BitsAreUsedWhereOneNeedsThem) {
    SampleTable sut;
    sut.add({0xFFFFFFFF, 8, 1, 0, true});
    EXPECT_EQ(numbersOf(sut, "stco"), (Numbers{1, 0xFFFFFFFF}));

    sut.add({0x100000008, 8, 1, 0, true});
    EXPECT_EQ(numbersOf(sut, "stco"), Numbers{});
    EXPECT_EQ(numbersOf(sut, "co64"), (Numbers{2, 0, 0xFFFFFFFF, 1, 8}));
}

TEST(SampleTableTest, SoundIsCountedInSampleFrames) {
    SampleTable sut;
    sut.addUniform(1000, 24000, 4);
    sut.addUniform(200000, 24000, 4);
    sut.addUniform(400000, 100, 4);

    EXPECT_EQ(numbersOf(sut, "stts"), (Numbers{1, 48100, 1}));
    EXPECT_EQ(numbersOf(sut, "stsz"), (Numbers{4, 48100}));
    EXPECT_EQ(numbersOf(sut, "stsc"), (Numbers{2, 1, 24000, 1, 3, 100, 1}));
    EXPECT_EQ(numbersOf(sut, "stco"), (Numbers{3, 1000, 200000, 400000}));
    EXPECT_EQ(numbersOf(sut, "stss"), Numbers{});
    EXPECT_EQ(sut.duration(), 48100);
}

TEST(SampleTableTest, ChunksCanBeMoved) {
    SampleTable sut;
    sut.addUniform(1000, 10, 4);
    sut.addUniform(2000, 10, 4);

    sut.moveChunk(1, 50);

    EXPECT_EQ(numbersOf(sut, "stco"), (Numbers{2, 1000, 50}));
}

}  // namespace
}  // namespace Morvane::Worker
