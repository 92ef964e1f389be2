#include "worker/output/OutputMode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace Morvane::Worker {
namespace {

TEST(OutputMode, NamesSizeAndRate) {
    EXPECT_EQ((OutputMode{1920, 1080, {25, 1}}.name()), "1920 x 1080, 25");
    EXPECT_EQ((OutputMode{2048, 858, {24000, 1001}}.name()), "2048 x 858, 23.976");
    EXPECT_EQ((OutputMode{640, 480, {30000, 1001}}.name()), "640 x 480, 29.97");
}

TEST(OutputMode, RatesTravelInThousandthsRoundedToNearest) {
    EXPECT_EQ((OutputMode{1, 1, {24000, 1001}}.thousandths()), 23976);
    EXPECT_EQ((OutputMode{1, 1, {30000, 1001}}.thousandths()), 29970);
    EXPECT_EQ((OutputMode{1, 1, {48000, 1001}}.thousandths()), 47952);
    EXPECT_EQ((OutputMode{1, 1, {60000, 1001}}.thousandths()), 59940);
    EXPECT_EQ((OutputMode{1, 1, {50, 1}}.thousandths()), 50000);
}

TEST(OutputMode, AFrameIsFourFloatsAPixel) {
    EXPECT_EQ((OutputMode{1920, 1080, {25, 1}}.frameBytes()), 1920U * 1080U * 16U);
    EXPECT_EQ((OutputMode{40000, 40000, {25, 1}}.frameBytes()), 25'600'000'000U);
}

TEST(OutputMode, StandardModesFitIntoTheArea) {
    const auto modes = standardModes(1280, 1024);

    ASSERT_FALSE(modes.empty());
    for (const OutputMode& mode : modes) {
        EXPECT_LE(mode.width, 1280) << mode.name();
        EXPECT_LE(mode.height, 1024) << mode.name();
    }
    EXPECT_NE(std::find(modes.begin(), modes.end(), OutputMode{1280, 720, {50, 1}}), modes.end());
}

TEST(OutputMode, StandardModesHoldTheUsualFilmAndVideoOnes) {
    const auto modes = standardModes(4096, 2160);

    for (const OutputMode& usual : {OutputMode{1920, 1080, {25, 1}}, OutputMode{1920, 1080, {30000, 1001}},
                                    OutputMode{1998, 1080, {24, 1}}, OutputMode{2048, 1556, {24, 1}},
                                    OutputMode{3840, 2160, {60000, 1001}}, OutputMode{4096, 2160, {48, 1}}})
        EXPECT_NE(std::find(modes.begin(), modes.end(), usual), modes.end()) << usual.name();
}

TEST(OutputMode, NoTwoModesLookAlikeInARequest) {
    std::set<std::tuple<int, int, int>> seen;

    for (const OutputMode& mode : standardModes(4096, 2160))
        EXPECT_TRUE(seen.insert({mode.width, mode.height, mode.thousandths()}).second) << mode.name();
}

TEST(OutputMode, NothingFitsIntoATinyArea) {
    EXPECT_TRUE(standardModes(320, 200).empty());
}

}  // namespace
}  // namespace Morvane::Worker
