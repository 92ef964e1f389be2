#include "host/images/FrameRange.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

using Frames = std::vector<int>;

TEST(FrameRange, NamesOneFrame) {
    EXPECT_EQ(parseFrameRange("7"), Frames{7});
}

TEST(FrameRange, IncludesBothEnds) {
    EXPECT_EQ(parseFrameRange("1001-1004"), (Frames{1001, 1002, 1003, 1004}));
}

TEST(FrameRange, TakesEveryNthFrameFromTheFirst) {
    EXPECT_EQ(parseFrameRange("1-9x3"), (Frames{1, 4, 7}));
    EXPECT_EQ(parseFrameRange("1-10x3"), (Frames{1, 4, 7, 10}));
}

TEST(FrameRange, JoinsParts) {
    EXPECT_EQ(parseFrameRange("1,5,10-12"), (Frames{1, 5, 10, 11, 12}));
}

TEST(FrameRange, ReadsNegativeNumbers) {
    EXPECT_EQ(parseFrameRange("-3--1"), (Frames{-3, -2, -1}));
    EXPECT_EQ(parseFrameRange("-1-1"), (Frames{-1, 0, 1}));
    EXPECT_EQ(parseFrameRange("-5"), (Frames{-5}));
}

TEST(FrameRange, CountsDownwardsFromAHigherFirstFrame) {
    EXPECT_EQ(parseFrameRange("10-1x4"), (Frames{2, 6, 10}));
}

TEST(FrameRange, IsASetInAscendingOrder) {
    EXPECT_EQ(parseFrameRange("5,1-3,2"), (Frames{1, 2, 3, 5}));
}

TEST(FrameRange, IgnoresBlanks) {
    EXPECT_EQ(parseFrameRange(" 1 - 3, 7 "), (Frames{1, 2, 3, 7}));
}

class BadRange : public testing::TestWithParam<const char*> {};

TEST_P(BadRange, IsRefusedWithTheTextQuoted) {
    const std::string text = GetParam();
    try {
        parseFrameRange(text);
        FAIL() << "accepted \"" << text << '"';
    } catch (const BadFrameRange& error) {
        EXPECT_NE(std::string(error.what()).find('"' + text + '"'), std::string::npos) << error.what();
    }
}

INSTANTIATE_TEST_SUITE_P(FrameRange, BadRange,
                         testing::Values("", ",", "1,", "a", "1-", "1-2x", "1-2x0", "1-2x-1", "1x2", "1--",
                                         "1.5", "99999999999", "1-2000000000", "1 to 5"));

TEST(FrameRange, ReachesTheEndsOfTheNumbers) {
    EXPECT_EQ(parseFrameRange("2147483646-2147483647"), (Frames{2147483646, 2147483647}));
    EXPECT_EQ(parseFrameRange("-2147483648--2147483647"), (Frames{-2147483647 - 1, -2147483647}));
}

TEST(FrameRangeText, JoinsNeighbours) {
    EXPECT_EQ(frameRangeText({1, 2, 3, 7, 9, 10}), "1-3,7,9-10");
    EXPECT_EQ(frameRangeText({-2, -1}), "-2--1");
    EXPECT_EQ(frameRangeText({}), "");
}

TEST(FrameRangeText, ReadsBackAsTheSameFrames) {
    const Frames frames{-10, -3, -2, -1, 0, 5, 2147483646, 2147483647};
    EXPECT_EQ(parseFrameRange(frameRangeText(frames)), frames);
}

}  // namespace
}  // namespace Corvel
