#include "worker/movie/MetadataAtoms.h"

#include "worker/movie/AtomReader.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

TEST(MetadataAtomsTest, AKnownNameIsUserDataOfUndeterminedLanguage) {
    const Bytes atoms = writeMetadataAtoms({{"title", "Ball"}});

    const std::optional<Atom> title = findAtom(atoms, {atomType("udta"), atomType("\xA9"
                                                                                  "nam")});
    ASSERT_TRUE(title.has_value());
    EXPECT_EQ(Bytes(title->body.begin(), title->body.end()), (Bytes{0, 4, 0x55, 0xC4, 'B', 'a', 'l', 'l'}));
    EXPECT_FALSE(findAtom(atoms, {atomType("meta")}).has_value());
}

TEST(MetadataAtomsTest, TheProgramNamesItselfUnlessAnotherIsNamed) {
    const std::uint32_t software = atomType(
        "\xA9"
        "swr");

    const Bytes own = writeMetadataAtoms({});
    const Bytes other = writeMetadataAtoms({{"software", "Other"}});

    const std::string ownText(findAtom(own, {atomType("udta"), software})->body.begin() + 4,
                              findAtom(own, {atomType("udta"), software})->body.end());
    EXPECT_EQ(ownText, "Corvel " CORVEL_VERSION);
    EXPECT_EQ(findAtom(other, {atomType("udta"), software})->body.size(), 4U + 5U);
}

TEST(MetadataAtomsTest, AnyOtherKeyIsAnItemUnderItsOwnName) {
    const Bytes atoms = writeMetadataAtoms({{"shot", "17"}});

    const Atom keys = requireAtom(atoms, {atomType("meta"), atomType("keys")});
    AtomCursor cursor(keys.body.subspan(4));
    EXPECT_EQ(cursor.u32(), 1U);
    EXPECT_EQ(childAtoms(keys.body.subspan(8)).at(0).body.size(), 4U);
    const Atom value = requireAtom(atoms, {atomType("meta"), atomType("ilst"), 1, atomType("data")});
    EXPECT_EQ(Bytes(value.body.begin(), value.body.end()), (Bytes{0, 0, 0, 1, 0, 0, 0, 0, '1', '7'}));
}

}  // namespace
}  // namespace Morvane::Worker
