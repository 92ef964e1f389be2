#include "Kex/Image/LUT.h"

#include <gtest/gtest.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <vector>

namespace Kex::Image {
namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();

/// Floats of every size and sign, subnormal ones, infinities and NaNs included: every 16411th bit pattern,
/// and all around the places where a formula changes.
std::vector<float> floatsOfEveryKind() {
    std::vector<float> all;
    for (std::uint64_t bits = 0; bits < std::uint64_t{1} << 32; bits += 16411) {
        all.push_back(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    }
    for (const float edge : {0.0F, 0.0031308F, 0.04045F, 0.018F, 0.081F, 95 / 1023.0F, 1.0F}) {
        float below = edge;
        float above = edge;
        for (int step = 0; step < 50; ++step) {
            all.insert(all.end(), {below, above, -below, -above});
            below = std::nextafterf(below, -infinity);
            above = std::nextafterf(above, infinity);
        }
    }
    return all;
}

/// How far the array form is from the formula, relative above 1; 0 where both leave the range of floats
/// alike.
double errorOf(float value, double formula) {
    const auto rounded = static_cast<float>(formula);
    if (std::isnan(formula)) {
        return std::isnan(value) ? 0 : infinity;
    }
    if (value == rounded) {
        return 0;
    }
    return std::fabs(value - formula) / std::max(1.0, std::fabs(formula));
}

std::vector<float> ramp(std::size_t count) {
    std::vector<float> row(count);
    for (std::size_t i = 0; i < count; ++i) {
        row[i] = static_cast<float>(i) / 32;
    }
    return row;
}

/// Calls the function once with each instruction set of this processor for which the arrays' code exists.
void forEveryInstructionSet(const std::function<void(const char* name)>& function) {
    const std::int64_t all = hwy::SupportedTargets() & HWY_TARGETS;
    for (std::int64_t left = all; left != 0; left &= left - 1) {
        const std::int64_t target = left & -left;
        hwy::SetSupportedTargetsForTest(target);
        hwy::GetChosenTarget().Update(target);
        function(hwy::TargetName(target));
    }
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(all);
}

class EveryLut : public testing::TestWithParam<int> {
protected:
    const LUT& sut() const { return *LUT::getLut(GetParam()); }
};

TEST_P(EveryLut, ConvertsArraysAsTheFormulaSaysOnEveryInstructionSet) {
    const std::vector<float> from = floatsOfEveryKind();
    std::vector<float> to(from.size());

    forEveryInstructionSet([&](const char* name) {
        sut().toStored(to.data(), from.data(), from.size(), 1);

        double worst = 0;
        for (std::size_t i = 0; i < from.size(); ++i) {
            worst = std::max(worst, errorOf(to[i], sut().toStored(static_cast<double>(from[i]))));
        }
        EXPECT_LE(worst, 1e-6) << sut().name() << " " << name;
    });
}

TEST_P(EveryLut, ConvertsArraysBackAsTheInverseSaysOnEveryInstructionSet) {
    const std::vector<float> from = floatsOfEveryKind();
    std::vector<float> to(from.size());

    forEveryInstructionSet([&](const char* name) {
        sut().toLinear(to.data(), from.data(), from.size(), 1);

        double worst = 0;
        for (std::size_t i = 0; i < from.size(); ++i) {
            worst = std::max(worst, errorOf(to[i], sut().toLinear(static_cast<double>(from[i]))));
        }
        EXPECT_LE(worst, 1e-6) << sut().name() << " " << name;
    });
}

TEST_P(EveryLut, KeepsWhatIsNoNumber) {
    const std::array<float, 3> from = {infinity, -infinity, std::numeric_limits<float>::quiet_NaN()};
    std::array<float, 3> stored{};
    std::array<float, 3> linear{};

    sut().toStored(stored.data(), from.data(), from.size(), 1);
    sut().toLinear(linear.data(), from.data(), from.size(), 1);

    for (const auto& to : {stored, linear}) {
        EXPECT_EQ(to[0], infinity);
        EXPECT_EQ(to[1], -infinity);
        EXPECT_TRUE(std::isnan(to[2]));
    }
}

TEST_P(EveryLut, ComesBackThroughItsInverse) {
    for (const double x : {-4.0, -0.5, -0.001, 0.0, 0.001, 0.01, 0.18, 0.5, 1.0, 1.7, 40.0}) {
        EXPECT_NEAR(sut().toLinear(sut().toStored(x)), x, 1e-9 + 1e-12 * std::fabs(x))
            << sut().name() << " " << x;
    }
}

TEST_P(EveryLut, MirrorsNegativeValuesThroughBlack) {
    const double black = sut().toStored(0.0);

    for (const double x : {1e-4, 0.02, 0.5, 3.0}) {
        EXPECT_NEAR(sut().toStored(-x) - black, black - sut().toStored(x), 1e-12);
    }
}

TEST_P(EveryLut, WritesOnlyEveryFourthFloatOfAnInterleavedRow) {
    forEveryInstructionSet([&](const char* name) {
        // All lengths, so that every mixture of whole vectors and remainders is seen.
        for (std::size_t count = 0; count < 70; ++count) {
            const std::vector<float> from = ramp(count);
            std::vector<float> straight(count);
            sut().toStored(straight.data(), from.data(), count, 1);
            // Exactly the floats that may be written, so that a sanitizer sees any other.
            std::vector<float> to(count == 0 ? 0 : 4 * (count - 1) + 1, -7.0F);

            sut().toStored(to.data(), from.data(), count, 4);

            for (std::size_t i = 0; i < to.size(); ++i) {
                ASSERT_EQ(to[i], i % 4 == 0 ? straight[i / 4] : -7.0F) << name << " " << count << " " << i;
            }
        }
    });
}

TEST_P(EveryLut, TakesAnyOtherStride) {
    const std::vector<float> from(37, 0.5F);
    std::vector<float> straight(from.size());
    sut().toLinear(straight.data(), from.data(), from.size(), 1);
    std::vector<float> to(3 * from.size(), -7.0F);

    sut().toLinear(to.data(), from.data(), from.size(), 3);

    for (std::size_t i = 0; i < to.size(); ++i) {
        ASSERT_EQ(to[i], i % 3 == 0 ? straight[i / 3] : -7.0F);
    }
}

TEST_P(EveryLut, ConvertsARowInPlace) {
    std::vector<float> row(41, 0.25F);
    std::vector<float> expected(row.size());
    sut().toStored(expected.data(), row.data(), row.size(), 1);

    sut().toStored(row.data(), row.data(), row.size(), 1);

    EXPECT_EQ(row, expected);
}

TEST_P(EveryLut, IsFoundByItsName) {
    EXPECT_EQ(sut().type(), GetParam());
    EXPECT_EQ(LUT::find(sut().name()), &sut());
}

INSTANTIATE_TEST_SUITE_P(AllTypes, EveryLut, testing::Range(0, 7),
                         [](const auto& each) { return "Type" + std::to_string(each.param); });

TEST(Lut, HasNoOtherTypesAndNames) {
    EXPECT_EQ(LUT::getLut(-1), nullptr);
    EXPECT_EQ(LUT::getLut(7), nullptr);
    EXPECT_EQ(LUT::find("SRGB"), nullptr);
}

TEST(Lut, OfType6IsTheCurveOfSrgb) {
    const LUT& sut = *LUT::getLut(6);

    // IEC 61966-2-1: 18 % grey, white, the end of the line, and beyond white.
    EXPECT_NEAR(sut.toStored(0.18), 0.461356, 1e-6);
    EXPECT_NEAR(sut.toStored(1.0), 1.0, 1e-12);
    EXPECT_NEAR(sut.toStored(0.0031308), 0.0404499, 1e-6);
    EXPECT_NEAR(sut.toStored(2.0), 1.353256, 1e-6);
    EXPECT_NEAR(sut.toLinear(0.5), 0.214041, 1e-6);
}

TEST(Lut, OfType6KeepsBlackAndWhiteExact) {
    const std::array<float, 2> from = {0, 1};
    std::array<float, 2> to{};

    LUT::getLut(6)->toStored(to.data(), from.data(), from.size(), 1);

    EXPECT_EQ(to[0], 0.0F);
    EXPECT_NEAR(to[1], 1.0F, 6e-8);
}

TEST(Lut, OfFilmHasItsReferenceCodes) {
    const LUT& sut = *LUT::find("cineon");

    EXPECT_NEAR(1023 * sut.toStored(0.0), 95, 1e-9);
    EXPECT_NEAR(1023 * sut.toStored(1.0), 685, 1e-9);
    EXPECT_NEAR(1023 * sut.toStored(0.18), 470, 3);
    EXPECT_NEAR(sut.toLinear(1.0), 13.53, 0.01);
}

}  // namespace
}  // namespace Kex::Image
