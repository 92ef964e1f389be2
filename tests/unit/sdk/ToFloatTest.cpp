#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>
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

TEST_F(ToFloat, LooksUpWhatCodesBecome) {
    // More than any vector has, and not a whole number of vectors.
    std::vector<float> linear;
    for (int code = 0; code < 1021; ++code) {
        linear.push_back(static_cast<float>(code - 20) / 500.0F);
    }
    const CodeTable table(linear);
    std::vector<CodeTable::Code> codes(linear.size());
    std::iota(codes.rbegin(), codes.rend(), CodeTable::Code{0});
    const std::vector<float> light(linear.rbegin(), linear.rend());
    const int width = static_cast<int>(codes.size());
    Row row(0, width);
    for (const Channel z : {Chan_Red, Chan_Green, Chan_Blue, Chan_Alpha}) {
        row.refer(z, codes.data(), table);
    }

    for (const int curve : {0, 1, 5, 6, 6}) {
        node->setLut(LUT::getLut(curve));
        std::vector<float> expected(codes.size() * 4);
        std::vector<float> pixels(expected.size());
        for (int z = 0; z < 4; ++z) {
            sut->to_float(z, expected.data() + z, light.data(), nullptr, width, 4);
            sut->to_float(z, pixels.data() + z, row.samples(static_cast<Channel>(z + 1)), nullptr, width, 4);
        }
        EXPECT_EQ(pixels, expected) << "curve " << curve;
    }
}

TEST_F(ToFloat, UnpremultipliesCodesAsFloats) {
    const CodeTable table({0.0F, 0.25F});
    const CodeTable::Code codes[] = {1, 0, 1};
    const std::vector<float> alpha = {0.5F, 0.5F, 0.0F};
    Row row(0, 3);
    row.refer(Chan_Green, codes, table);
    std::vector<float> expected(3);
    sut->to_float(1, expected.data(), row[Chan_Green], alpha.data(), 3);
    row.refer(Chan_Green, codes, table);
    std::vector<float> to(3);

    sut->to_float(1, to.data(), row.samples(Chan_Green), alpha.data(), 3);

    EXPECT_EQ(to, expected);
    EXPECT_NEAR(to[0], 0.5 * LUT::getLut(6)->toStored(0.5), 1e-6);
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
