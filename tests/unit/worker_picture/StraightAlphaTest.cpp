#include "worker/picture/StraightAlpha.h"

#include <gtest/gtest.h>

#include <cmath>

namespace Morvane::Worker {
namespace {

/// What the host hands over for a colour seen through alpha: multiplied in linear light, then curved.
float premultiplied(double stored, double alpha, AVColorTransferCharacteristic transfer) {
    return static_cast<float>(storedOf(linearOf(stored, transfer) * alpha, transfer));
}

TEST(StraightAlpha, GivesTheColourBackThatWasMultiplied) {
    for (const auto transfer : {AVCOL_TRC_BT709, AVCOL_TRC_IEC61966_2_1, AVCOL_TRC_LINEAR, AVCOL_TRC_GAMMA22,
                                AVCOL_TRC_GAMMA28, AVCOL_TRC_SMPTE2084, AVCOL_TRC_ARIB_STD_B67})
        for (const double alpha : {0.03, 0.25, 0.5, 0.99, 1.0})
            for (const double stored : {0.0, 0.02, 0.18, 0.5, 0.9, 1.0}) {
                const float rgba[] = {premultiplied(stored, alpha, transfer), 0, 0,
                                      static_cast<float>(alpha)};
                float out[4];
                divideAlphaOut(rgba, out, 1, transfer);
                EXPECT_NEAR(out[0], stored, 2e-5) << transfer << " " << alpha << " " << stored;
                EXPECT_EQ(out[3], rgba[3]);
            }
}

TEST(StraightAlpha, IsTheSrgbCurveForTheHostsOwnTag) {
    EXPECT_NEAR(linearOf(0.5, AVCOL_TRC_BT709), 0.21404114, 1e-8);
    EXPECT_NEAR(storedOf(0.21404114, AVCOL_TRC_BT709), 0.5, 1e-8);
    EXPECT_NEAR(linearOf(0.04, AVCOL_TRC_BT709), 0.04 / 12.92, 1e-12);
}

TEST(StraightAlpha, WhereAlphaIsZeroColourIsZero) {
    const float rgba[] = {0.5F, 1.0F, -1.0F, 0.0F, 0.5F, 0.5F, 0.5F, -0.5F, 0.5F, 0.5F, 0.5F, std::nanf("")};
    float out[12];
    divideAlphaOut(rgba, out, 3, AVCOL_TRC_BT709);
    for (int pixel = 0; pixel < 3; ++pixel)
        for (int channel = 0; channel < 3; ++channel)
            EXPECT_EQ(out[4 * pixel + channel], 0.0F);
}

TEST(StraightAlpha, WhereAlphaIsOneColourIsUntouched) {
    const float rgba[] = {0.1234567F, 5.0F, -3.0F, 1.0F};
    float out[4];
    divideAlphaOut(rgba, out, 1, AVCOL_TRC_BT709);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(out[i], rgba[i]);
}

TEST(StraightAlpha, NegativeColoursFollowTheMirrorImage) {
    for (const auto transfer : {AVCOL_TRC_BT709, AVCOL_TRC_SMPTE2084, AVCOL_TRC_ARIB_STD_B67}) {
        EXPECT_EQ(linearOf(-0.3, transfer), -linearOf(0.3, transfer));
        EXPECT_EQ(storedOf(-0.3, transfer), -storedOf(0.3, transfer));
    }
}

}  // namespace
}  // namespace Morvane::Worker
