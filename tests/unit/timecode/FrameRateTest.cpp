#include "timecode/FrameRate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Morvane::Timecode;

constexpr std::uint32_t flag = 0x80000000u;

std::uint32_t wordOf(float framesPerSecond) {
    return toFrameRateCode(framesPerSecond).frameRateCode;
}

std::uint32_t wordOfRatio(std::uint32_t numerator, std::uint32_t denominator) {
    return frameRateFromRatio(numerator, denominator).frameRateCode;
}

std::string ratioOf(std::uint32_t nominal, bool flagged) {
    const Ratio ratio = FrameRate(nominal, flagged).toRatio();
    return std::to_string(ratio.numerator) + "/" + std::to_string(ratio.denominator);
}

TEST(FrameRate, IsTheWordZeroByDefault) {
    EXPECT_EQ(FrameRate().frameRateCode, 0u);
}

TEST(FrameRate, PacksTheRateInto31BitsAndTheFlagIntoTheLast) {
    const FrameRate sut(24, true);

    EXPECT_EQ(sut.frameRateCode, flag | 24u);
    EXPECT_EQ(sut.nominalRate(), 24u);
    EXPECT_TRUE(sut.hasFlag());
    EXPECT_EQ(FrameRate(flag | 25u, false).frameRateCode, 25u);
}

TEST(ToFrameRateCode, FlagsFourValuesInHundredths) {
    EXPECT_EQ(wordOf(23.97f), flag | 24u);
    EXPECT_EQ(wordOf(23.976f), flag | 24u);
    EXPECT_EQ(wordOf(23.98f), flag | 24u);
    EXPECT_EQ(wordOf(29.97f), flag | 30u);
    EXPECT_EQ(wordOf(59.94f), flag | 60u);
}

// Deliberate: neighbours of the flagged values and other rates of the family are cut off.
TEST(ToFrameRateCode, CutsOffEveryOtherRate) {
    EXPECT_EQ(wordOf(25.0f), 25u);
    EXPECT_EQ(wordOf(30.0f), 30u);
    EXPECT_EQ(wordOf(23.5f), 23u);
    EXPECT_EQ(wordOf(29.976f), 29u);
    EXPECT_EQ(wordOf(47.952f), 47u);
    EXPECT_EQ(wordOf(12.5f), 12u);
    EXPECT_EQ(wordOf(0.0f), 0u);
}

TEST(ToFrameRateCode, RoundsToTheNearestHundredth) {
    EXPECT_EQ(wordOf(29.96875f), flag | 30u);
    EXPECT_EQ(wordOf(7.99609375f), 8u);
    EXPECT_EQ(wordOf(7.9921875f), 7u);
    EXPECT_EQ(wordOf(-7.99609375f), static_cast<std::uint32_t>(-8) & ~flag);
}

TEST(ToFrameRateCode, WrapsWhatIsNoRateWithoutTrouble) {
    EXPECT_EQ(wordOf(-25.0f), static_cast<std::uint32_t>(-25) & ~flag);
    EXPECT_EQ(wordOf(std::nanf("")), 0u);
    EXPECT_EQ(wordOf(std::numeric_limits<float>::infinity()), 0u);
    EXPECT_EQ(wordOf(std::numeric_limits<float>::max()), 0u);
    EXPECT_EQ(wordOf(4294967296.0f), 0u);
}

TEST(FrameRateFromRatio, FlagsEveryRatioOver1001) {
    EXPECT_EQ(wordOfRatio(30000, 1001), flag | 30u);
    EXPECT_EQ(wordOfRatio(24000, 1001), flag | 24u);
    EXPECT_EQ(wordOfRatio(60000, 1001), flag | 60u);
    EXPECT_EQ(wordOfRatio(48000, 1001), flag | 48u);
}

TEST(FrameRateFromRatio, FlagsTheUsualApproximations) {
    EXPECT_EQ(wordOfRatio(23976, 1000), flag | 24u);
    EXPECT_EQ(wordOfRatio(5994, 100), flag | 60u);
    EXPECT_EQ(wordOfRatio(2997, 100), flag | 30u);
    EXPECT_EQ(wordOfRatio(2997, 125), flag | 24u);
    EXPECT_EQ(wordOfRatio(2397, 100), flag | 24u);
    EXPECT_EQ(wordOfRatio(2398, 100), flag | 24u);
}

TEST(FrameRateFromRatio, CutsOffEveryOtherRatio) {
    EXPECT_EQ(wordOfRatio(25, 1), 25u);
    EXPECT_EQ(wordOfRatio(25, 2), 12u);
    EXPECT_EQ(wordOfRatio(2996, 100), 29u);
    EXPECT_EQ(wordOfRatio(29970, 1000), 29u);
}

TEST(FrameRate, IsAThousandth1001PartAsFloat) {
    EXPECT_EQ(FrameRate(24, true).toFloat(), static_cast<float>(24000.0 / 1001.0));
    EXPECT_EQ(FrameRate(30, true).toFloat(), static_cast<float>(30000.0 / 1001.0));
    EXPECT_EQ(FrameRate(25, false).toFloat(), 25.0f);
}

TEST(FrameRate, SurvivesTheTripAsFramesASecond) {
    for (const FrameRate rate :
         {FrameRate(24, true), FrameRate(30, true), FrameRate(60, true), FrameRate(25, false)}) {
        EXPECT_EQ(wordOf(rate.toFloat()), rate.frameRateCode);
    }
    // Deliberate: 47.952 is not among the values that are recognised.
    EXPECT_EQ(wordOf(FrameRate(48, true).toFloat()), 47u);
}

// Deliberate: 24 has a decimal ratio, and flagged rates but 24, 30 and 60 lose their flag.
TEST(FrameRate, HasARatio) {
    EXPECT_EQ(ratioOf(60, true), "60000/1001");
    EXPECT_EQ(ratioOf(30, true), "30000/1001");
    EXPECT_EQ(ratioOf(24, true), "23976/1000");
    EXPECT_EQ(ratioOf(48, true), "4800/100");
    EXPECT_EQ(ratioOf(25, false), "2500/100");
}

TEST(FrameRate, HasARateText) {
    EXPECT_EQ(FrameRate(24, true).rateText(), "23.976");
    EXPECT_EQ(FrameRate(30, true).rateText(), "29.970");
    EXPECT_EQ(FrameRate(60, true).rateText(), "59.940");
    EXPECT_EQ(FrameRate(25, false).rateText(), "25");
}

TEST(FrameRate, HasARatioText) {
    EXPECT_EQ(FrameRate(30, true).ratioText(), "30000/1001");
    EXPECT_EQ(FrameRate(24, true).ratioText(), "24000/1001");
    EXPECT_EQ(FrameRate(25, false).ratioText(), "25/1");
}

TEST(Rescale, GivesTheNearestFrame) {
    EXPECT_EQ(rescale(FrameRate(25, false), 25, FrameRate(30, true)), 30);
    EXPECT_EQ(rescale(FrameRate(24, false), 24, FrameRate(48, false)), 48);
    EXPECT_EQ(rescale(FrameRate(30, true), 30000, FrameRate(24, true)), 24000);
    EXPECT_EQ(rescale(FrameRate(25, false), 0, FrameRate(30, false)), 0);
}

TEST(Rescale, RoundsAnExactHalfDown) {
    EXPECT_EQ(rescale(FrameRate(50, false), 1, FrameRate(25, false)), 0);
    EXPECT_EQ(rescale(FrameRate(50, false), 3, FrameRate(25, false)), 1);
}

TEST(Rescale, CutsTowardsZeroBelowZero) {
    EXPECT_EQ(rescale(FrameRate(25, false), -25, FrameRate(50, false)), -49);
}

TEST(Rescale, WrapsIn64BitsWithoutTrouble) {
    const FrameRate fastest(0x7fffffff, false);

    EXPECT_NO_FATAL_FAILURE(rescale(fastest, std::numeric_limits<std::int32_t>::min(), fastest));
}

}  // namespace
