#include "host/images/ChannelLayout.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

using Layout = std::optional<ChannelLayout>;

TEST(ChannelLayout, FindsColoursInAnyOrder) {
    EXPECT_EQ(findColours({"R", "G", "B"}), (Layout{{0, 1, 2, -1}}));
    EXPECT_EQ(findColours({"A", "B", "G", "R"}), (Layout{{3, 2, 1, 0}}));
    EXPECT_EQ(findColours({"Z", "blue", "Green", "RED", "alpha"}), (Layout{{3, 2, 1, 4}}));
}

TEST(ChannelLayout, TakesLuminanceAsGrey) {
    EXPECT_EQ(findColours({"Y"}), (Layout{{0, 0, 0, -1}}));
    EXPECT_EQ(findColours({"A", "Y"}), (Layout{{1, 1, 1, 0}}));
    EXPECT_EQ(findColours({"Z", "R"}), (Layout{{1, 1, 1, -1}}))
        << "a picture that was written with one channel";
}

TEST(ChannelLayout, FindsNoColourWhereThereIsNone) {
    EXPECT_FALSE(findColours({"Z"}));
    EXPECT_FALSE(findColours({"A"}));
    EXPECT_FALSE(findColours({"R", "G"}));
    EXPECT_FALSE(findColours({"X", "Y", "Z"})) << "a direction, whose Y is no luminance";
    EXPECT_FALSE(findColours({}));
}

TEST(ChannelLayout, FindsDirections) {
    EXPECT_EQ(findDirections({"Z", "Y", "X"}), (Layout{{2, 1, 0, -1}}));
    EXPECT_FALSE(findDirections({"Z", "Y"}));
}

TEST(ChannelLayout, TakesTheFirstOfUnknownChannels) {
    EXPECT_EQ(firstChannels({"u", "v", "w", "x"}), (ChannelLayout{0, 1, 2, -1}));
    EXPECT_EQ(firstChannels({"u", "v", "w", "A"}), (ChannelLayout{0, 1, 2, 3}));
    EXPECT_EQ(firstChannels({"depth"}), (ChannelLayout{0, 0, 0, -1}));
    EXPECT_EQ(firstChannels({"u", "A"}), (ChannelLayout{0, 0, 0, 1}));
}

TEST(ChannelLayout, SpansTheChannelsThatMustBeDecoded) {
    const ChannelLayout sut = *findColours({"Z", "B", "G", "R", "ID"});
    EXPECT_EQ(sut.begin(), 1);
    EXPECT_EQ(sut.end(), 4);
}

}  // namespace
}  // namespace Corvel
