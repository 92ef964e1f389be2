#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

#include "Kex/Image/Write.h"
#include "Kex/Image/Writer.h"
#include "tests/unit/sdk/TestNode.h"

namespace Kex::Image {
namespace {

using Testing::TestApplication;

class ConvertingWriter : public Writer {
public:
    using Writer::to_float;
    using Writer::Writer;
    void execute() override {}
};

class ToFloat : public testing::Test {
protected:
    ToFloat() { node->setLut(LUT::getLut(6)); }

    TestApplication application;
    // Held by pointers, since their destructors may throw and a fixture's must not.
    const std::unique_ptr<Write> node = std::make_unique<Write>(application, "a.mov");
    const std::unique_ptr<ConvertingWriter> sut = std::make_unique<ConvertingWriter>(node.get());
    const std::vector<float> from = {-0.5F, 0.0F, 0.18F, 1.0F, 4.0F};
};

TEST_F(ToFloat, AppliesTheCurveToColoursWithoutClamping) {
    std::vector<float> to(from.size());

    for (int z = 0; z < 3; ++z) {
        sut->to_float(z, to.data(), from.data(), nullptr, 5);

        for (std::size_t i = 0; i < from.size(); ++i) {
            EXPECT_NEAR(to[i], LUT::getLut(6)->toStored(static_cast<double>(from[i])), 1e-6);
        }
    }
}

TEST_F(ToFloat, PassesAlphaWithoutACurve) {
    std::vector<float> to(from.size());

    sut->to_float(3, to.data(), from.data(), from.data(), 5);

    EXPECT_EQ(to, from);
}

TEST_F(ToFloat, PassesColoursUnchangedWhereThereIsNoCurve) {
    node->setLut(nullptr);
    std::vector<float> to(from.size());

    sut->to_float(0, to.data(), from.data(), nullptr, 5);

    EXPECT_EQ(to, from);
}

TEST_F(ToFloat, InterleavesFourChannels) {
    const std::vector<float> red = {0.5F, 0.25F};
    std::vector<float> pixels(8, -1);

    for (int z = 0; z < 4; ++z) {
        sut->to_float(z, pixels.data() + z, red.data(), nullptr, 2, 4);
    }

    const auto half = static_cast<float>(LUT::getLut(6)->toStored(0.5));
    EXPECT_NEAR(pixels[0], half, 1e-6);
    EXPECT_NEAR(pixels[2], half, 1e-6);
    EXPECT_EQ(pixels[3], 0.5F);
    EXPECT_EQ(pixels[7], 0.25F);
}

TEST_F(ToFloat, UnpremultipliesAroundTheCurveWhenAlphaIsGiven) {
    const std::vector<float> colour = {0.25F, 0.25F, 0.25F};
    const std::vector<float> alpha = {0.5F, 0.0F, -1.0F};
    std::vector<float> to(3);

    sut->to_float(0, to.data(), colour.data(), alpha.data(), 3);

    const LUT& curve = *LUT::getLut(6);
    EXPECT_NEAR(to[0], curve.toStored(0.5) * 0.5, 1e-6);
    EXPECT_NEAR(to[1], curve.toStored(0.25), 1e-6);
    EXPECT_NEAR(to[2], curve.toStored(0.25), 1e-6);
}

}  // namespace
}  // namespace Kex::Image
