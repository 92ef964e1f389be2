#include "host/images/SplitKernels.h"

#include <gtest/gtest.h>

#include <vector>

namespace Corvel {
namespace {

class SplitPixels : public testing::TestWithParam<int> {};

// 37 pixels: some whole vectors of any processor and some left over.
TEST_P(SplitPixels, GivesEachPlaneItsSamples) {
    constexpr std::size_t count = 37;
    const std::size_t channels = static_cast<std::size_t>(GetParam());
    std::vector<float> pixels(count * channels);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        pixels[i] = static_cast<float>(i);
    }
    std::vector<std::vector<float>> planes(channels, std::vector<float>(count + 1, -1));
    std::vector<float*> wanted;
    for (std::vector<float>& plane : planes) {
        wanted.push_back(plane.data());
    }
    wanted[0] = channels > 1 ? nullptr : wanted[0];

    splitPixels(pixels.data(), GetParam(), count, wanted.data());

    for (std::size_t channel = channels > 1 ? 1 : 0; channel < channels; ++channel) {
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(planes[channel][i], static_cast<float>(i * channels + channel));
        }
        EXPECT_EQ(planes[channel][count], -1) << "wrote past the end of plane " << channel;
    }
}

INSTANTIATE_TEST_SUITE_P(Channels, SplitPixels, testing::Values(1, 2, 3, 4, 5));

}  // namespace
}  // namespace Corvel
