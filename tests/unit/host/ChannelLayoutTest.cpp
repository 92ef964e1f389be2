#include "host/images/ChannelLayout.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

void expectChannels(const std::vector<std::string>& names, int red, int green, int blue, int alpha) {
    const ChannelLayout sut = findChannels(names);
    EXPECT_EQ(sut.red, red);
    EXPECT_EQ(sut.green, green);
    EXPECT_EQ(sut.blue, blue);
    EXPECT_EQ(sut.alpha, alpha);
}

TEST(ChannelLayout, FindsColoursInAnyOrder) {
    expectChannels({"R", "G", "B"}, 0, 1, 2, -1);
    expectChannels({"A", "B", "G", "R"}, 3, 2, 1, 0);
    expectChannels({"Z", "blue", "Green", "RED", "alpha"}, 3, 2, 1, 4);
}

TEST(ChannelLayout, PrefersColoursOutsideOfLayers) {
    expectChannels({"diffuse.R", "diffuse.G", "diffuse.B", "R", "G", "B", "A"}, 3, 4, 5, 6);
}

TEST(ChannelLayout, TakesTheFirstLayerWithColours) {
    expectChannels({"depth.Z", "beauty.A", "beauty.B", "beauty.G", "beauty.R", "spec.R"}, 4, 3, 2, 1);
}

TEST(ChannelLayout, DoesNotMixLayers) {
    expectChannels({"a.R", "b.G", "b.B", "c.R", "c.G", "c.B"}, 3, 4, 5, -1);
}

TEST(ChannelLayout, TakesASingleChannelAsGrey) {
    expectChannels({"Y"}, 0, 0, 0, -1);
    expectChannels({"Y", "A"}, 0, 0, 0, 1);
    expectChannels({"A", "Y"}, 1, 1, 1, 0);
    expectChannels({"depth"}, 0, 0, 0, -1);
}

TEST(ChannelLayout, TakesTheFirstThreeOfUnknownChannels) {
    expectChannels({"u", "v", "w", "x"}, 0, 1, 2, -1);
    expectChannels({"u", "v", "w", "A"}, 0, 1, 2, 3);
}

TEST(ChannelLayout, SpansTheChannelsThatMustBeDecoded) {
    const ChannelLayout sut = findChannels({"Z", "B", "G", "R", "ID"});
    EXPECT_EQ(sut.begin(), 1);
    EXPECT_EQ(sut.end(), 4);
}

}  // namespace
}  // namespace Corvel
