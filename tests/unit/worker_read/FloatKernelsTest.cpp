#include "worker/read/FloatKernels.h"

#include <gtest/gtest.h>
#include <hwy/aligned_allocator.h>
#include <hwy/targets.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace Morvane::Worker::FloatKernels {
namespace {

constexpr float untouched = -77;
constexpr std::size_t behind = 64;

/// Runs each test once for every instruction set that this machine has, at widths around all vector lengths.
class FloatKernels : public testing::TestWithParam<std::tuple<std::int64_t, std::size_t>> {
protected:
    void SetUp() override { hwy::SetSupportedTargetsForTest(std::get<0>(GetParam())); }
    void TearDown() override { hwy::SetSupportedTargetsForTest(0); }

    template <typename Value>
    std::vector<Value> noise(std::size_t count, unsigned seed) const {
        std::mt19937 random(seed);
        std::uniform_int_distribution<int> values(0, 255);
        std::vector<Value> row(count);
        for (Value& value : row)
            value = static_cast<Value>(values(random));
        return row;
    }

    /// What must be there, and nothing behind it.
    static void expectNear(const std::vector<float>& row, const std::vector<double>& expected,
                           std::size_t rest = behind) {
        ASSERT_EQ(row.size(), expected.size() + rest);
        for (std::size_t i = 0; i < expected.size(); ++i)
            ASSERT_NEAR(row[i], expected[i], 1e-5 * (1 + std::abs(expected[i]))) << "value " << i;
        for (std::size_t i = expected.size(); i < row.size(); ++i)
            ASSERT_EQ(row[i], untouched) << "behind the end";
    }

    static std::vector<float> blank(std::size_t count) {
        return std::vector<float>(count + behind, untouched);
    }

    /// `write(row)` makes these pixels of a row in any place, of a picture of either size.
    template <class Write>
    void expectPixels(const std::vector<double>& expected, const Write& write) const {
        const auto memory = hwy::AllocateAligned<float>(4 * width + behind);
        for (const bool pastCaches : {false, true})
            for (const std::size_t shift : {0, 1, 4}) {
                std::fill_n(memory.get(), 4 * width + behind, untouched);
                float* const start = memory.get() + shift;

                write(PixelRow{start, width, pastCaches});

                expectNear({start, start + 4 * width + behind - shift}, expected, behind - shift);
                for (const float* before = memory.get(); before != start; ++before)
                    ASSERT_EQ(*before, untouched) << "before the beginning";
            }
    }

    const std::size_t width = std::get<1>(GetParam());
};

template <typename Sample>
std::vector<double> scaled(const std::vector<Sample>& samples) {
    std::vector<double> values;
    for (const Sample sample : samples)
        values.push_back((sample - 16.0) / 219.0);
    return values;
}

TEST_P(FloatKernels, ScaleIsADivisionOfEverySample) {
    const auto narrow = noise<std::uint8_t>(width, 1);
    const auto wide = noise<std::uint16_t>(width, 2);
    std::vector<float> ofNarrow = blank(width), ofWide = blank(width);

    scale(narrow.data(), width, 16, 219, ofNarrow.data());
    scale(wide.data(), width, 16, 219, ofWide.data());

    expectNear(ofNarrow, scaled(narrow));
    expectNear(ofWide, scaled(wide));
}

TEST_P(FloatKernels, BlendAddsUpTheRowsThatAreUsed) {
    const auto first = noise<std::uint16_t>(width, 3);
    const auto second = noise<std::uint16_t>(width, 4);
    std::vector<double> expected;
    for (std::size_t x = 0; x < width; ++x)
        expected.push_back(0.75 * first[x] + 0.25 * second[x] - 128);
    std::vector<float> row = blank(width);

    blend(WeightedRows<std::uint16_t>{{first.data(), second.data()}, {0.75F, 0.25F}, 2}, width, 128,
          row.data());

    expectNear(row, expected);
}

TEST_P(FloatKernels, WidenInterpolatesFromFiveNeighbours) {
    for (const int shift : {0, 1, 2})
        for (const double offset : {0.0, 0.5}) {
            const auto interpolation = ChromaInterpolation::of(shift, offset);
            const auto chroma = noise<float>(width + 2 * ChromaInterpolation::margin, 5);
            std::vector<double> expected;
            for (std::size_t x = 0; x < width; ++x)
                for (std::size_t phase = 0; phase < 1U << shift; ++phase) {
                    double sum = 0;
                    for (std::size_t tap = 0; tap < ChromaInterpolation::taps; ++tap)
                        sum += static_cast<double>(interpolation.weights[phase][tap]) * chroma[x + tap];
                    expected.push_back(shift == 0 ? chroma[x + ChromaInterpolation::margin] : sum);
                }
            std::vector<float> row = blank(expected.size());

            widen(chroma.data() + ChromaInterpolation::margin, width, interpolation, row.data());

            expectNear(row, expected);
        }
}

TEST_P(FloatKernels, PixelsApplyTheMatrixAndTakeAlphaAsItIs) {
    const auto matrix = YcbcrMatrix::of(AVCOL_SPC_BT709, 8, false);
    const auto luma = noise<std::uint8_t>(width, 6);
    const auto cb = noise<float>(width, 7), cr = noise<float>(width, 8), alpha = noise<float>(width, 9);
    for (const float* stored : {alpha.data(), static_cast<const float*>(nullptr)}) {
        std::vector<double> expected;
        for (std::size_t x = 0; x < width; ++x) {
            for (const YcbcrMatrix::Chroma weights : {matrix.red, matrix.green, matrix.blue})
                expected.push_back((luma[x] - 16.0) / 219 + static_cast<double>(weights.cb) * cb[x] +
                                   static_cast<double>(weights.cr) * cr[x]);
            expected.push_back(stored == nullptr ? 1 : stored[x]);
        }
        expectPixels(expected, [&](const PixelRow& row) {
            pixels(luma.data(), cb.data(), cr.data(), stored, matrix, row);
        });
    }
}

TEST_P(FloatKernels, PixelsInterleaveRedGreenAndBlue) {
    const auto red = noise<float>(width, 10), green = noise<float>(width, 11), blue = noise<float>(width, 12);
    std::vector<double> expected;
    for (std::size_t x = 0; x < width; ++x)
        for (const float value : {red[x], green[x], blue[x], 1.0F})
            expected.push_back(value);
    expectPixels(expected,
                 [&](const PixelRow& row) { pixels(red.data(), green.data(), blue.data(), nullptr, row); });
}

INSTANTIATE_TEST_SUITE_P(EveryTarget, FloatKernels,
                         testing::Combine(testing::ValuesIn(hwy::SupportedAndGeneratedTargets()),
                                          testing::Values(1, 2, 3, 4, 7, 8, 9, 15, 16, 17, 31, 33, 100)));

}  // namespace
}  // namespace Morvane::Worker::FloatKernels
