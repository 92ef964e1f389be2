#include "worker/picture/RowKernels.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace Morvane::Worker::RowKernels {
namespace {

constexpr std::uint8_t untouched8 = 0xA5;
constexpr std::uint16_t untouched16 = 0xA5A5;

/// Values of all kinds: nominal, exact halves between two samples, outside 0…1, and what is no number.
std::vector<float> row(std::size_t width) {
    std::mt19937 random(static_cast<unsigned>(width));
    std::uniform_real_distribution<float> nominal(-0.2F, 1.2F);
    std::vector<float> values(4 * width);
    for (std::size_t i = 0; i < values.size(); ++i) {
        switch (i % 7) {
            case 0:
                values[i] = (static_cast<float>(i % 255) + 0.5F) / 255.0F;
                break;
            case 1:
                values[i] = std::numeric_limits<float>::quiet_NaN();
                break;
            case 2:
                values[i] = (i % 2 ? 1.0F : -1.0F) * std::numeric_limits<float>::infinity();
                break;
            case 3:
                values[i] = (i % 2 ? 1.0F : -1.0F) * std::numeric_limits<float>::max();
                break;
            default:
                values[i] = nominal(random);
        }
    }
    return values;
}

/// Runs each test once for every instruction set that this machine has, at widths around all vector lengths.
class RowKernels : public testing::TestWithParam<std::tuple<std::int64_t, std::size_t>> {
protected:
    void SetUp() override { hwy::SetSupportedTargetsForTest(std::get<0>(GetParam())); }
    void TearDown() override { hwy::SetSupportedTargetsForTest(0); }

    const std::size_t width = std::get<1>(GetParam());
    const std::vector<float> pixels = row(width);
};

/// Both must write the same samples and nothing behind them.
template <typename Sample, typename Kernel>
void expectSame(Kernel vector, Kernel scalar, const std::vector<float>& pixels, std::size_t samples,
                Sample untouched) {
    std::vector<Sample> one(samples + 64, untouched);
    std::vector<Sample> other(samples + 64, untouched);
    vector(pixels.data(), one.data(), pixels.size() / 4);
    scalar(pixels.data(), other.data(), pixels.size() / 4);
    EXPECT_EQ(one, other);
}

TEST_P(RowKernels, ThreeChannelsAgreeWithTheScalarReference) {
    expectSame<std::uint8_t>(rgb8, Scalar::rgb8, pixels, 3 * width, untouched8);
    expectSame<std::uint16_t>(rgb16, Scalar::rgb16, pixels, 3 * width, untouched16);
    expectSame<std::uint16_t>(rgb16Swapped, Scalar::rgb16Swapped, pixels, 3 * width, untouched16);
}

template <typename Sample, typename Kernel>
void expectSameFour(Kernel vector, Kernel scalar, const std::vector<float>& pixels, Sample untouched) {
    for (const AlphaPlace place : {AlphaPlace::First, AlphaPlace::Last})
        for (const bool opaque : {false, true}) {
            std::vector<Sample> one(pixels.size() + 64, untouched);
            std::vector<Sample> other(pixels.size() + 64, untouched);
            vector(pixels.data(), one.data(), pixels.size() / 4, place, opaque);
            scalar(pixels.data(), other.data(), pixels.size() / 4, place, opaque);
            EXPECT_EQ(one, other);
        }
}

TEST_P(RowKernels, FourChannelsAgreeWithTheScalarReference) {
    expectSameFour<std::uint8_t>(rgba8, Scalar::rgba8, pixels, untouched8);
    expectSameFour<std::uint16_t>(rgba16, Scalar::rgba16, pixels, untouched16);
    expectSameFour<std::uint16_t>(rgba16Swapped, Scalar::rgba16Swapped, pixels, untouched16);
}

template <typename Sample, std::size_t count>
struct Planes {
    Planes(std::size_t width, Sample untouched) {
        for (auto& plane : planes)
            plane.assign(width + 64, untouched);
        for (std::size_t i = 0; i < count; ++i)
            pointers[i] = planes[i].data();
    }
    std::vector<Sample> planes[count];
    Sample* pointers[count] = {};
};

TEST_P(RowKernels, PlanesAgreeWithTheScalarReference) {
    for (const float highest : {255.0F, 1023.0F, 4095.0F, 65535.0F}) {
        Planes<std::uint16_t, 4> one(width, untouched16);
        Planes<std::uint16_t, 4> other(width, untouched16);
        planes16(pixels.data(), one.pointers, width, highest);
        Scalar::planes16(pixels.data(), other.pointers, width, highest);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(one.planes[i], other.planes[i]);
    }
    Planes<std::uint8_t, 4> one(width, untouched8);
    Planes<std::uint8_t, 4> other(width, untouched8);
    one.pointers[1] = other.pointers[1] = nullptr;
    planes8(pixels.data(), one.pointers, width);
    Scalar::planes8(pixels.data(), other.pointers, width);
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_EQ(one.planes[i], other.planes[i]);
}

INSTANTIATE_TEST_SUITE_P(EveryInstructionSet, RowKernels,
                         testing::Combine(testing::ValuesIn(hwy::SupportedAndGeneratedTargets()),
                                          testing::Values(0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33,
                                                          100)));

TEST(Rounding, RoundToNearestAndLimit) {
    const float rgba[] = {0.5F, 1.0F / 255 * 0.49F, 1.0F / 255 * 0.51F, 0.0F, 2.0F, -1.0F, std::nanf(""),
                          1.0F};
    std::uint8_t out[8];
    Scalar::rgba8(rgba, out, 2, AlphaPlace::Last, false);
    const std::uint8_t expected[] = {128, 0, 1, 0, 255, 0, 0, 255};
    EXPECT_TRUE(std::equal(out, out + 8, expected));
}

/// Rounding up or down must even out: no picture may get lighter or darker.
TEST(Rounding, RoundingHasNoBias) {
    constexpr std::size_t count = 100000;
    std::vector<float> rgba(4 * count);
    double sum = 0;
    for (std::size_t i = 0; i < count; ++i) {
        rgba[4 * i] = static_cast<float>(i) / (count - 1);
        sum += rgba[4 * i] * 255.0;
    }
    std::vector<std::uint8_t> out(3 * count);
    Scalar::rgb8(rgba.data(), out.data(), count);
    for (std::size_t i = 0; i < count; ++i)
        sum -= out[3 * i];
    EXPECT_LT(std::abs(sum / count), 1e-3);
}

/// Near a half the product of two floats, being a float, would already have been rounded once.
TEST(Rounding, ProductIsRoundedOnce) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> nominal(0.0F, 1.0F);
    std::vector<float> rgba(4 * 65536);
    for (float& value : rgba)
        value = nominal(random);
    std::vector<std::uint16_t> out(4 * 65536);
    rgba16(rgba.data(), out.data(), 65536, AlphaPlace::Last, false);
    for (std::size_t i = 0; i < rgba.size(); ++i)
        ASSERT_EQ(out[i], std::lround(static_cast<double>(rgba[i]) * 65535));
}

/// Each 16-bit sample as a float must come back as itself: no step may go through fewer bits.
TEST(Rounding, Every16BitSampleSurvives) {
    std::vector<float> rgba(4 * 65536);
    for (std::size_t i = 0; i < 65536; ++i)
        rgba[4 * i] = static_cast<float>(i) / 65535.0F;
    std::vector<std::uint16_t> out(3 * 65536);
    rgb16(rgba.data(), out.data(), 65536);
    for (std::size_t i = 0; i < 65536; ++i)
        ASSERT_EQ(out[3 * i], i);
}

}  // namespace
}  // namespace Morvane::Worker::RowKernels
