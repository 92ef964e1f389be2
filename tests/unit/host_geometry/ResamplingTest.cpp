#include "host/geometry/Resampling.h"

#include <gtest/gtest.h>

#include <numeric>

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
