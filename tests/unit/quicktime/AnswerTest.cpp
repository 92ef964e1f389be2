#include "quicktime/Answer.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace Morvane::QuickTime;

std::int32_t codeOf(const std::string& answer, std::int32_t before) {
    readErrorCode(answer, before);
    return before;
}

TEST(Answer, IsAnErrorOnlyWithTheWholePrefix) {
    EXPECT_TRUE(isError("Error: 3"));
    EXPECT_TRUE(isError("Error: "));
    EXPECT_FALSE(isError("Error:"));
    EXPECT_FALSE(isError("error: 3"));
    EXPECT_FALSE(isError(" Error: 3"));
    EXPECT_FALSE(isError(""));
}

TEST(Answer, KeepsTheOldResultWithoutAReadableCode) {
    EXPECT_EQ(codeOf("Error: -34", 7), -34);
    EXPECT_EQ(codeOf("Error: 3 and more", 7), 3);
    EXPECT_EQ(codeOf("Error: disk full", 7), 7);
    EXPECT_EQ(codeOf("Error: ", 7), 7);
}

TEST(FrameBytes, AreSixteenAPixel) {
    EXPECT_EQ(frameBytes(1920, 1080), 1920u * 1080u * 16u);
}

// Deliberate: the product wraps in 32 bits.
TEST(FrameBytes, WrapIn32SignedBits) {
    EXPECT_EQ(frameBytes(16384, 16384), 0u);
    EXPECT_EQ(frameBytes(-1, 1), static_cast<std::uint64_t>(-16));
    EXPECT_EQ(frameBytes(-1, 0), 0u);
    EXPECT_EQ(frameBytes(13000, 13000),
              static_cast<std::uint64_t>(std::int64_t{13000} * 13000 * 16 - (std::int64_t{1} << 32)));
    EXPECT_EQ(frameBytes(std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::max()),
              16u);
}

}  // namespace
