#include "worker/codec/Curve.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

constexpr Curve all[] = {Curve::Srgb,    Curve::Linear,  Curve::Rec709, Curve::Gamma18, Curve::Gamma22,
                         Curve::Gamma24, Curve::Gamma28, Curve::Cineon, Curve::Pq,      Curve::Hlg};

/// Figures of the formulas' own documents.
TEST(Curve, StoredValuesOfMiddleGreyAndWhite) {
    EXPECT_NEAR(storedOf(0.21404114, Curve::Srgb), 0.5, 1e-8);
    EXPECT_NEAR(storedOf(0.002, Curve::Srgb), 0.002 * 12.92, 1e-12);
    EXPECT_NEAR(storedOf(0.18, Curve::Rec709), 0.4090, 1e-4);
    EXPECT_NEAR(storedOf(0.01, Curve::Rec709), 0.045, 1e-12);
    EXPECT_NEAR(storedOf(0, Curve::Cineon), 95 / 1023.0, 1e-12);
    EXPECT_NEAR(storedOf(0.18, Curve::Gamma24), 0.4894, 1e-4);
    EXPECT_NEAR(storedOf(0.01, Curve::Pq), 0.5081, 1e-4);
    EXPECT_NEAR(storedOf(1.0 / 12, Curve::Hlg), 0.5, 1e-8);
    for (const Curve curve : all)
        EXPECT_NEAR(storedOf(1, curve), curve == Curve::Cineon ? 685 / 1023.0 : 1, 1e-6) << curveName(curve);
}

TEST(Curve, ThereAndBackIsTheSameValue) {
    for (const Curve curve : all)
        for (const double linear : {-0.7, -0.01, 0.0, 0.0005, 0.018, 0.18, 0.5, 1.0})
            EXPECT_NEAR(linearOf(storedOf(linear, curve), curve), linear, 1e-6) << curveName(curve);
}

TEST(Curve, ValuesBelowBlackFollowTheMirrorImage) {
    for (const Curve curve : all) {
        // PQ itself does not begin at 0 to the last digit.
        const double black = storedOf(0, curve);
        EXPECT_NEAR(storedOf(-0.3, curve) - black, black - storedOf(0.3, curve), 1e-5) << curveName(curve);
    }
}

TEST(Curve, EveryOneHasANameOfItsOwn) {
    for (const Curve curve : all)
        EXPECT_EQ(curveNamed(curveName(curve)), curve);
    EXPECT_EQ(curveNamed("gamma"), std::nullopt);
    EXPECT_EQ(curveNames(), "srgb|linear|rec709|gamma1.8|gamma2.2|gamma2.4|gamma2.8|cineon|pq|hlg");
}

}  // namespace
}  // namespace Morvane::Worker
