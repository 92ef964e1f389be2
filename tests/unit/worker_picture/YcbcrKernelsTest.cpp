#include "worker/picture/YcbcrKernels.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

namespace Morvane::Worker::YcbcrKernels {
namespace {

constexpr float untouched = -77;
constexpr std::size_t behind = 64;
constexpr std::size_t margin = ChromaReduction::mostTaps;

/// 10 bits of video range with BT.709's weights.
constexpr SampleForm form{-0.0685F, 1.09F, 0.2126F, 0.7152F, 0.0722F, 876, 64, 482.9F, 569.0F, 512, 4, 1019};

/// Runs each test once for every instruction set that this machine has, at widths around all vector lengths.
class YcbcrKernels : public testing::TestWithParam<std::tuple<std::int64_t, std::size_t>> {
protected:
    void SetUp() override { hwy::SetSupportedTargetsForTest(std::get<0>(GetParam())); }
    void TearDown() override { hwy::SetSupportedTargetsForTest(0); }

    static std::vector<float> noise(std::size_t count, unsigned seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<float> values(-0.3F, 1.4F);
        std::vector<float> row(count);
        std::generate(row.begin(), row.end(), [&] { return values(random); });
        return row;
    }

    template <typename Value>
    static void expectUntouchedFrom(const std::vector<Value>& row, std::size_t end) {
        for (std::size_t i = end; i < row.size(); ++i)
            ASSERT_EQ(row[i], static_cast<Value>(untouched)) << "behind the end";
    }

    const std::size_t width = std::get<1>(GetParam());
};

TEST_P(YcbcrKernels, SplitFollowsTheMatrixWithinTheLimits) {
    std::vector<float> rgba = noise(4 * width, 1);
    if (width > 2)
        rgba[4] = std::numeric_limits<float>::quiet_NaN();
    std::vector<std::uint16_t> luma(width + behind, static_cast<std::uint16_t>(untouched));
    std::vector<float> cb(width + behind, untouched), cr(width + behind, untouched);

    split(rgba.data(), width, form, luma.data(), cb.data(), cr.data());

    for (std::size_t x = 0; x < width; ++x) {
        const auto channel = [&](std::size_t i) {
            const double value = std::isnan(rgba[4 * x + i]) ? 0.0 : static_cast<double>(rgba[4 * x + i]);
            return std::clamp<double>(value, form.lowestRgb, form.highestRgb);
        };
        const double light = static_cast<double>(form.red) * channel(0) +
                             static_cast<double>(form.green) * channel(1) +
                             static_cast<double>(form.blue) * channel(2);
        ASSERT_NEAR(luma[x], form.black + form.lumaScale * light, 0.501) << x;
        ASSERT_NEAR(cb[x], form.cbScale * (channel(2) - light), 1e-3) << x;
        ASSERT_NEAR(cr[x], form.crScale * (channel(0) - light), 1e-3) << x;
    }
    expectUntouchedFrom(luma, width);
    expectUntouchedFrom(cb, width);
    expectUntouchedFrom(cr, width);
}

TEST_P(YcbcrKernels, ReduceIsAWeightedSumOfNeighbours) {
    for (const int shift : {1, 2})
        for (const double offset : {0.0, 0.5}) {
            const auto reduction = ChromaReduction::of(shift, offset);
            const std::vector<float> values = noise((width << shift) + 2 * margin, 2);
            std::vector<float> row(width + behind, untouched);

            reduce(values.data() + margin, width, reduction, row.data());

            for (std::size_t x = 0; x < width; ++x) {
                double sum = 0;
                for (int tap = 0; tap < reduction.taps; ++tap)
                    sum += static_cast<double>(reduction.weights[static_cast<std::size_t>(tap)]) *
                           values[margin + (x << shift) + static_cast<std::size_t>(tap) -
                                  static_cast<std::size_t>(-reduction.first)];
                ASSERT_NEAR(row[x], sum, 1e-5) << x;
            }
            expectUntouchedFrom(row, width);
        }
}

TEST_P(YcbcrKernels, StoreAddsRowsUpAndRoundsThem) {
    std::vector<float> one = noise(width, 3), other = noise(width, 4);
    for (std::vector<float>* row : {&one, &other})
        for (float& value : *row)
            value *= 900;
    const float* const rows[] = {one.data(), other.data()};
    const float weights[] = {0.75F, 0.25F};
    std::vector<std::uint16_t> samples(width + behind, static_cast<std::uint16_t>(untouched));

    store(rows, weights, 2, width, form, samples.data());

    for (std::size_t x = 0; x < width; ++x) {
        const double sum = form.neutral + 0.75 * one[x] + 0.25 * other[x];
        ASSERT_NEAR(samples[x], std::clamp<double>(sum, form.lowest, form.highest), 0.501) << x;
    }
    expectUntouchedFrom(samples, width);
}

TEST_P(YcbcrKernels, WholeRowsAreTheSameSamples) {
    const std::vector<float> rgba = noise(4 * width, 6);
    const auto filler = static_cast<std::uint16_t>(untouched);
    std::vector<std::uint16_t> planes[4];
    for (std::vector<std::uint16_t>& plane : planes)
        plane.assign(width + behind, filler);
    std::vector<std::uint16_t> luma(width), chroma(width);
    std::vector<float> cb(width), cr(width);
    split(rgba.data(), width, form, luma.data(), cb.data(), cr.data());

    convert(rgba.data(), width, form,
            WholeRow<std::uint16_t>{planes[0].data(), planes[1].data(), planes[2].data(), planes[3].data(),
                                    1023});

    EXPECT_TRUE(std::equal(luma.begin(), luma.end(), planes[0].begin()));
    for (const int component : {1, 2}) {
        const float* const rows[] = {component == 1 ? cb.data() : cr.data()};
        const float weights[] = {1};
        store(rows, weights, 1, width, form, chroma.data());
        EXPECT_TRUE(std::equal(chroma.begin(), chroma.end(), planes[component].begin()));
    }
    for (std::size_t x = 0; x < width; ++x)
        ASSERT_EQ(planes[3][x],
                  std::lround(std::clamp(static_cast<double>(rgba[4 * x + 3]), 0.0, 1.0) * 1023));
    for (const std::vector<std::uint16_t>& plane : planes)
        expectUntouchedFrom(plane, width);
}

TEST_P(YcbcrKernels, BytesAreTheSameNumbers) {
    SampleForm narrow = form;
    narrow.lumaScale = 219;
    narrow.black = 16;
    narrow.neutral = 128;
    narrow.lowest = 1;
    narrow.highest = 254;
    const std::vector<float> rgba = noise(4 * width, 5);
    std::vector<float> cb(width), cr(width);
    std::vector<std::uint8_t> bytes(width);
    std::vector<std::uint16_t> words(width);

    split(rgba.data(), width, narrow, bytes.data(), cb.data(), cr.data());
    split(rgba.data(), width, narrow, words.data(), cb.data(), cr.data());
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), words.begin()));

    const float* const rows[] = {cb.data()};
    const float weights[] = {0.3F};
    store(rows, weights, 1, width, narrow, bytes.data());
    store(rows, weights, 1, width, narrow, words.data());
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), words.begin()));
}

INSTANTIATE_TEST_SUITE_P(EveryInstructionSet, YcbcrKernels,
                         testing::Combine(testing::ValuesIn(hwy::SupportedAndGeneratedTargets()),
                                          testing::Values(1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 100)));

}  // namespace
}  // namespace Morvane::Worker::YcbcrKernels
