#include "worker/Status.h"
#include "worker/movie/AtomReader.h"
#include "worker/movie/AtomWriter.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

TEST(AtomWriterTest, NumbersAreBigEndianAndSizesIncludeTheHeader) {
    AtomWriter sut;

    sut.atom(atomType("outr"), [&] {
        sut.u16(0x0102);
        sut.atom(atomType("innr"), [&] { sut.u64(0x0102030405060708); });
    });

    const Bytes expected = {0,  0,   0,   26,  'o', 'u', 't', 'r', 1, 2, 0, 0, 0,
                            16, 'i', 'n', 'n', 'r', 1,   2,   3,   4, 5, 6, 7, 8};
    EXPECT_EQ(sut.bytes(), expected);
}

TEST(AtomWriterTest, AFullAtomBeginsWithVersionAndFlags) {
    AtomWriter sut;

    sut.fullAtom(atomType("full"), 1, 0x20304, [&] { sut.u8(9); });

    EXPECT_EQ(sut.bytes(), (Bytes{0, 0, 0, 13, 'f', 'u', 'l', 'l', 1, 2, 3, 4, 9}));
}

TEST(AtomWriterTest, PascalTextIsCutAt255Bytes) {
    AtomWriter sut;

    sut.pascalText(std::string(300, 'x'));

    EXPECT_EQ(sut.bytes().size(), 256U);
    EXPECT_EQ(sut.bytes()[0], 255);
}

TEST(AtomReaderTest, FindsAtomsByTheirPath) {
    AtomWriter atoms;
    atoms.atom(atomType("aaaa"), [&] { atoms.u8(1); });
    atoms.atom(atomType("bbbb"), [&] { atoms.atom(atomType("cccc"), [&] { atoms.u8(7); }); });

    const std::optional<Atom> found = findAtom(atoms.bytes(), {atomType("bbbb"), atomType("cccc")});

    ASSERT_TRUE(found.has_value());
    EXPECT_EQ(found->body.size(), 1U);
    EXPECT_EQ(found->body[0], 7);
    EXPECT_EQ(found->whole.size(), 9U);
    EXPECT_FALSE(findAtom(atoms.bytes(), {atomType("bbbb"), atomType("dddd")}).has_value());
    EXPECT_THROW(requireAtom(atoms.bytes(), {atomType("dddd")}), StatusError);
}

TEST(AtomReaderTest, SizesOf64BitsAreRead) {
    const Bytes atom = {0, 0, 0, 1, 'w', 'i', 'd', 'e', 0, 0, 0, 0, 0, 0, 0, 18, 5, 6};

    const std::vector<Atom> found = childAtoms(atom);

    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].body.size(), 2U);
    EXPECT_EQ(found[0].body[0], 5);
}

TEST(AtomReaderTest, SizesThatDoNotFitAreRefused) {
    EXPECT_THROW(childAtoms(Bytes{0, 0, 0, 9, 'a', 'a', 'a', 'a'}), StatusError);
    EXPECT_THROW(childAtoms(Bytes{0, 0, 0, 7, 'a', 'a', 'a', 'a'}), StatusError);
    EXPECT_THROW(childAtoms(Bytes{0, 0, 0, 0, 'a', 'a', 'a', 'a'}), StatusError);
    EXPECT_THROW(childAtoms(Bytes{0, 0, 0, 1, 'a', 'a', 'a', 'a'}), StatusError);
    EXPECT_THROW(childAtoms(Bytes{0, 0, 0}), StatusError);
    EXPECT_THROW(childAtoms(Bytes{0, 0, 0, 1, 'a', 'a', 'a', 'a', 255, 255, 255, 255, 255, 255, 255, 255}),
                 StatusError);
}

TEST(AtomReaderTest, FourClosingZeroBytesAreAccepted) {
    EXPECT_EQ(childAtoms(Bytes{0, 0, 0, 8, 'a', 'a', 'a', 'a', 0, 0, 0, 0}).size(), 1U);
}

TEST(AtomCursorTest, ReadingPastTheEndIsRefused) {
    const Bytes bytes = {1, 2, 3};
    AtomCursor sut(bytes);

    EXPECT_EQ(sut.u16(), 0x0102);
    EXPECT_THROW(sut.u16(), StatusError);
    EXPECT_EQ(sut.u8(), 3);
    EXPECT_THROW(sut.u8(), StatusError);
}

}  // namespace
}  // namespace Morvane::Worker
