#include "host/play/TentFilter.h"

#include <gtest/gtest.h>

#include <numeric>

namespace Corvel {
namespace {

class TentFilterOfAnyLengths : public testing::TestWithParam<std::pair<int, int>> {};

TEST_P(TentFilterOfAnyLengths, StaysInsideAndAddsUpToOne) {
    const auto [from, to] = GetParam();
    const TentFilter sut(from, to);

    for (int output = 0; output < to; ++output) {
        EXPECT_GE(sut.first(output), 0);
        EXPECT_LE(sut.first(output) + sut.count(), from);
        const float* weights = sut.weights(output);
        EXPECT_NEAR(std::accumulate(weights, weights + sut.count(), 0.0), 1.0, 1e-6);
        for (int tap = 0; tap < sut.count(); ++tap) {
            EXPECT_GE(weights[tap], 0.0F);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, TentFilterOfAnyLengths,
                         testing::Values(std::pair(1, 1), std::pair(1, 50), std::pair(50, 1), std::pair(2, 3),
                                         std::pair(3, 2), std::pair(640, 1280), std::pair(1280, 640),
                                         std::pair(2048, 1920), std::pair(1001, 7), std::pair(7, 1001)));

TEST(TentFilter, TheSameLengthChangesNothing) {
    const TentFilter sut(5, 5);

    for (int output = 0; output < 5; ++output) {
        for (int tap = 0; tap < sut.count(); ++tap) {
            EXPECT_FLOAT_EQ(sut.weights(output)[tap], sut.first(output) + tap == output ? 1.0F : 0.0F);
        }
    }
}

TEST(TentFilter, TwiceTheLengthInterpolates) {
    const TentFilter sut(4, 8);

    // Output 3 lies a quarter of a sample beyond sample 1.
    EXPECT_EQ(sut.count(), 2);
    EXPECT_EQ(sut.first(3), 1);
    EXPECT_FLOAT_EQ(sut.weights(3)[0], 0.75F);
    EXPECT_FLOAT_EQ(sut.weights(3)[1], 0.25F);
}

}  // namespace
}  // namespace Corvel
