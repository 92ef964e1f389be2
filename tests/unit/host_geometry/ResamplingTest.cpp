#include "host/geometry/Resampling.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <utility>

namespace Corvel {
namespace {

constexpr Filter all[] = {Filter::Nearest,  Filter::Box,        Filter::Triangle,
                          Filter::Mitchell, Filter::CatmullRom, Filter::Lanczos};

TEST(Resampling, WeightsAddUpToOneAndSamplesAreThere) {
    for (const Filter filter : all) {
        for (const Span& span :
             {Span{0, 10, 0, 7}, Span{0, 10, 0, 35}, Span{2.3, 5.1, 0, 4}, Span{0, 10, 0, 1}}) {
            const Resampling sut(span, 10, filter);
            const std::size_t taps = static_cast<std::size_t>(sut.taps());
            for (std::size_t i = 0; i < sut.firsts().size(); ++i) {
                EXPECT_GE(sut.firsts()[i], 0);
                EXPECT_LE(sut.firsts()[i] + sut.taps(), 10);
                const auto begin = sut.weights().begin() + static_cast<std::ptrdiff_t>(i * taps);
                EXPECT_NEAR(std::accumulate(begin, begin + sut.taps(), 0.0), 1, 1e-5);
            }
        }
    }
}

class ResamplingOfAnyLengths : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(ResamplingOfAnyLengths, TrianglesHaveNoNegativeWeights) {
    const auto [from, to] = GetParam();
    const Resampling sut({0, static_cast<double>(from), 0, to}, from, Filter::Triangle);
    const std::size_t taps = static_cast<std::size_t>(sut.taps());

    ASSERT_EQ(sut.firsts().size(), static_cast<std::size_t>(to));
    ASSERT_EQ(sut.weights().size(), static_cast<std::size_t>(to) * taps);
    EXPECT_GE(*std::min_element(sut.weights().begin(), sut.weights().end()), 0.0F);
    for (std::size_t i = 0; i < sut.firsts().size(); ++i) {
        EXPECT_GE(sut.firsts()[i], 0);
        EXPECT_LE(sut.firsts()[i] + sut.taps(), from);
        const auto begin = sut.weights().begin() + static_cast<std::ptrdiff_t>(i * taps);
        EXPECT_NEAR(std::accumulate(begin, begin + sut.taps(), 0.0), 1, 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, ResamplingOfAnyLengths,
                         testing::Values(std::pair(1, 1), std::pair(1, 50), std::pair(50, 1), std::pair(2, 3),
                                         std::pair(3, 2), std::pair(640, 1280), std::pair(1280, 640),
                                         std::pair(2048, 1920), std::pair(1001, 7), std::pair(7, 1001)));

TEST(Resampling, TwiceTheLengthInterpolates) {
    const Resampling sut({0, 4, 0, 8}, 4, Filter::Triangle);

    // Output 3 lies a quarter of a sample beyond sample 1.
    ASSERT_EQ(sut.taps(), 2);
    EXPECT_EQ(sut.firsts()[3], 1);
    EXPECT_FLOAT_EQ(sut.weights()[6], 0.75F);
    EXPECT_FLOAT_EQ(sut.weights()[7], 0.25F);
}

TEST(Resampling, SamplesThatStayWhatTheyAreAreNotMixed) {
    for (const Filter filter : all) {
        const Resampling sut({3, 5, 0, 5}, 10, filter);
        EXPECT_EQ(sut.taps(), 1);
        EXPECT_EQ(sut.firsts(), (std::vector<int>{3, 4, 5, 6, 7}));
        EXPECT_FALSE(sut.held());
    }
}

TEST(Resampling, NearestTakesTheSampleInWhosePlaceItStands) {
    EXPECT_EQ(Resampling({0, 4, 0, 2}, 4, Filter::Nearest).firsts(), (std::vector<int>{1, 3}));
    EXPECT_EQ(Resampling({0, 2, 0, 4}, 2, Filter::Nearest).firsts(), (std::vector<int>{0, 0, 1, 1}));
}

TEST(Resampling, BoxIsTheMeanOfWhatItCovers) {
    const Resampling sut({0, 3, 0, 2}, 3, Filter::Box);
    ASSERT_EQ(sut.taps(), 3);
    EXPECT_NEAR(sut.weights()[0], 2.0 / 3, 1e-6);
    EXPECT_NEAR(sut.weights()[1], 1.0 / 3, 1e-6);
    EXPECT_NEAR(sut.weights()[2], 0, 1e-6);
}

TEST(Resampling, OneSampleMakesALineOfAnyLength) {
    const Resampling sut({0, 1, 0, 3}, 1, Filter::Lanczos);
    EXPECT_EQ(sut.taps(), 1);
    EXPECT_EQ(sut.weights(), (std::vector<float>{1, 1, 1}));
}

}  // namespace
}  // namespace Corvel
