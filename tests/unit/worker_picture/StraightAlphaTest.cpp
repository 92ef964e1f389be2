#include "worker/picture/StraightAlpha.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Morvane::Worker {
namespace {

/// What the host hands over for a colour seen through alpha: multiplied in linear light, then curved.
float premultiplied(double stored, double alpha, Curve curve) {
    return static_cast<float>(storedOf(linearOf(stored, curve) * alpha, curve));
}

TEST(StraightAlpha, GivesTheColourBackThatWasMultiplied) {
    for (const Curve curve : {Curve::Srgb, Curve::Linear, Curve::Rec709, Curve::Gamma18, Curve::Gamma22,
                              Curve::Gamma24, Curve::Gamma28, Curve::Cineon, Curve::Pq, Curve::Hlg})
        for (const double alpha : {0.03, 0.25, 0.5, 0.99, 1.0})
            for (const double stored : {0.0, 0.02, 0.18, 0.5, 0.9, 1.0}) {
                const float rgba[] = {premultiplied(stored, alpha, curve), 0, 0, static_cast<float>(alpha)};
                float out[4];
                divideAlphaOut(rgba, out, 1, curve);
                EXPECT_NEAR(out[0], stored, 2e-5) << curveName(curve) << " " << alpha << " " << stored;
                EXPECT_EQ(out[3], rgba[3]);
            }
}

TEST(StraightAlpha, WhereAlphaIsZeroColourIsZero) {
    const float rgba[] = {0.5F, 1.0F, -1.0F, 0.0F, 0.5F, 0.5F, 0.5F, -0.5F, 0.5F, 0.5F, 0.5F, std::nanf("")};
    float out[12];
    divideAlphaOut(rgba, out, 3, Curve::Srgb);
    for (int pixel = 0; pixel < 3; ++pixel)
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_EQ(out[4 * pixel + channel], 0.0F);
}

TEST(StraightAlpha, WhereAlphaIsOneColourIsUntouched) {
    const float rgba[] = {0.1234567F, 5.0F, -3.0F, 1.0F};
    float out[4];
    divideAlphaOut(rgba, out, 1, Curve::Srgb);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(out[i], rgba[i]);
}

/// Film density stores black as 95 of 1023.
TEST(StraightAlpha, WhereAlphaIsZeroFilmIsBlack) {
    const float rgba[] = {0.5F, 0.0F, 1.0F, 0.0F};
    float out[4];
    divideAlphaOut(rgba, out, 1, Curve::Cineon);
    for (int channel = 0; channel < 3; ++channel)
        EXPECT_FLOAT_EQ(out[channel], 95 / 1023.0F);
}

}  // namespace
}  // namespace Morvane::Worker
