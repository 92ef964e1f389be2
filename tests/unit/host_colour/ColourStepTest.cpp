#include "host/colour/ColourStep.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Corvel {
namespace {

// Squares colours and lifts black.
class Squares : public ColourTransform {
public:
    void apply(float* red, float* green, float* blue, std::size_t count, std::vector<float>&) const override {
        for (float* row : {red, green, blue}) {
            for (std::size_t i = 0; i < count; ++i) {
                row[i] = row[i] * row[i] + lift;
            }
        }
    }
    float lift = 0;
};

class ColourStepTest : public testing::Test {
protected:
    void fill(float colour, float alpha) {
        picture.reset(1, 1, 4);
        for (int channel = 0; channel < 3; ++channel) {
            *picture.row(channel, 0) = colour;
        }
        *picture.row(3, 0) = alpha;
        makeColourStep(transform)->apply({1, 0, header}, picture);
    }
    float colour() { return *picture.row(1, 0); }

    const std::shared_ptr<Squares> transform = std::make_shared<Squares>();
    PictureHeader header;
    Picture picture;
};

TEST_F(ColourStepTest, DividesAlphaOutAndMultipliesItInAgain) {
    fill(0.25F, 0.5F);
    EXPECT_FLOAT_EQ(colour(), 0.125F);
    EXPECT_EQ(*picture.row(3, 0), 0.5F);
}

TEST_F(ColourStepTest, KeepsNothingNothingWhereTheTransformLiftsBlack) {
    transform->lift = 0.07F;
    fill(0, 0);
    EXPECT_EQ(colour(), 0.0F);
}

TEST_F(ColourStepTest, TransformsGlowWithoutAlphaAsItIs) {
    fill(0.5F, 0);
    EXPECT_FLOAT_EQ(colour(), 0.25F);
}

TEST_F(ColourStepTest, ComesOutFinite) {
    transform->lift = std::numeric_limits<float>::infinity();
    fill(0.5F, 1);
    EXPECT_EQ(colour(), 65504.0F);
    transform->lift = std::numeric_limits<float>::quiet_NaN();
    fill(0.5F, 1);
    EXPECT_EQ(colour(), 0.0F);
}

TEST_F(ColourStepTest, LeavesAPictureWithoutAlphaWithoutIt) {
    picture.reset(2, 1, 3);
    picture.clear();
    *picture.row(0, 0) = 3;
    makeColourStep(transform)->apply({1, 0, header}, picture);
    EXPECT_EQ(picture.channels(), 3);
    EXPECT_EQ(*picture.row(0, 0), 9.0F);
}

}  // namespace
}  // namespace Corvel
