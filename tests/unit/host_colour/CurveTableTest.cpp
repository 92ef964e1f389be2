#include "host/colour_library/CurveTable.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Corvel {
namespace {

CurveTable::Function functionOf(double (*function)(double)) {
    return [function](float* pixels, std::size_t count) {
        for (std::size_t i = 0; i < 4 * count; ++i) {
            pixels[i] = i % 4 == 3 ? pixels[i] : static_cast<float>(function(pixels[i]));
        }
    };
}

float valueOf(const CurveTable& sut, float x) {
    float red = x, green = x, blue = x;
    sut.apply(&red, &green, &blue, 1);
    EXPECT_EQ(red, green);
    return blue;
}

double power(double x) {
    return x < 0 ? 0 : std::pow(x, 1 / 2.6);
}

double tenfold(double x) {
    return std::pow(10.0, std::min(4 * x - 2, 6.0));
}

double jumpy(double x) {
    return x < 0.3337 ? 0 : 1;
}

TEST(CurveTableTest, FollowsAPowerFromTheDarkToTheBright) {
    const auto sut = CurveTable::of(functionOf(power));
    ASSERT_TRUE(sut);
    for (double x = 1e-9; x < 60000; x *= 1.37) {
        EXPECT_NEAR(valueOf(*sut, static_cast<float>(x)), power(x), 4e-6 * std::max(1.0, power(x))) << x;
        EXPECT_EQ(valueOf(*sut, static_cast<float>(-x)), 0.0F) << -x;
    }
    EXPECT_NEAR(valueOf(*sut, 0), 0, 4e-6);
}

TEST(CurveTableTest, FollowsALogarithmsInverseAboveOneToo) {
    const auto sut = CurveTable::of(functionOf(tenfold));
    ASSERT_TRUE(sut);
    for (double x = -1; x < 1.5; x += 0.00317) {
        EXPECT_NEAR(valueOf(*sut, static_cast<float>(x)), tenfold(x), 4e-6 * std::max(1.0, tenfold(x))) << x;
    }
}

TEST(CurveTableTest, RefusesWhatNoTableFollows) {
    EXPECT_FALSE(CurveTable::of(functionOf(jumpy)));
}

TEST(CurveTableTest, TakesRowsOfAnyLength) {
    const auto sut = CurveTable::of(functionOf(power));
    for (std::size_t count = 0; count < 40; ++count) {
        std::vector<float> red(count, 0.18F), green(count, 0.5F), blue(count, 2.0F);
        sut->apply(red.data(), green.data(), blue.data(), count);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(red[i], valueOf(*sut, 0.18F));
            EXPECT_EQ(blue[i], valueOf(*sut, 2.0F));
        }
    }
}

}  // namespace
}  // namespace Corvel
