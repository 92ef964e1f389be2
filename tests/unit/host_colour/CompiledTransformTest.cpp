#include "host/colour_library/CompiledTransform.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

namespace Corvel {
namespace {

namespace OCIO = OCIO_NAMESPACE;

// Pixels of every hue and of levels from dark to above white; encoded values stay within a camera's.
std::vector<std::array<float, 3>> grid(bool encoded) {
    std::vector<std::array<float, 3>> colours;
    const std::array<float, 8> levels{-0.01F, 0.0F, 0.002F, 0.02F, 0.18F, 0.5F, 1.0F, encoded ? 0.8F : 12.0F};
    for (const float red : levels) {
        for (const float green : levels) {
            for (const float blue : levels) {
                colours.push_back({red, green, blue});
            }
        }
    }
    return colours;
}

// The largest difference from the library's own processor, relative above 1.
double differenceFrom(const OCIO::ConstProcessorRcPtr& processor, bool encoded) {
    const auto sut = compileTransform(processor);
    const auto library = processor->getDefaultCPUProcessor();
    std::vector<float> scratch;
    double largest = 0;
    for (const std::array<float, 3>& colour : grid(encoded)) {
        std::array<float, 3> own = colour, wanted = colour;
        sut->apply(&own[0], &own[1], &own[2], 1, scratch);
        library->applyRGB(wanted.data());
        for (std::size_t i = 0; i < 3; ++i) {
            largest =
                std::max(largest, std::abs(own[i] - wanted[i]) / std::max(1.0, std::abs(double{wanted[i]})));
        }
    }
    return largest;
}

class ShippedConfig : public testing::Test {
protected:
    void expectAlike(const char* space, const char* display, const char* view) {
        const bool encoded = std::string(config->getColorSpace(space)->getEncoding()) != "scene-linear";
        const auto processor = config->getProcessor(space, display, view, OCIO::TRANSFORM_DIR_FORWARD);
        EXPECT_LT(differenceFrom(processor, encoded), 0.25 / 1023)
            << space << " to " << display << " / " << view;
    }

    const OCIO::ConstConfigRcPtr config = OCIO::Config::CreateFromFile(SHIPPED_CONFIG);
};

TEST_F(ShippedConfig, AgreesWithTheLibraryFromEverySpace) {
    const int count = config->getNumColorSpaces(OCIO::SEARCH_REFERENCE_SPACE_SCENE, OCIO::COLORSPACE_ALL);
    ASSERT_GT(count, 20);
    for (int i = 0; i < count; ++i) {
        expectAlike(
            config->getColorSpaceNameByIndex(OCIO::SEARCH_REFERENCE_SPACE_SCENE, OCIO::COLORSPACE_ALL, i),
            "Rec.1886 Rec.709 - Display", "Filmic");
    }
}

TEST_F(ShippedConfig, AgreesWithTheLibraryForEveryView) {
    ASSERT_EQ(config->getNumDisplays(), 6);
    for (int i = 0; i < config->getNumDisplays(); ++i) {
        for (const char* view : {"Filmic", "Un-tone-mapped", "Raw"}) {
            expectAlike("ACEScg", config->getDisplay(i), view);
        }
    }
}

TEST(CompiledTransformTest, LeavesWhatItCannotTableToTheLibrary) {
    const auto group = OCIO::GroupTransform::Create();
    const auto saturation = OCIO::CDLTransform::Create();
    saturation->setSat(0.3);
    const auto cube = OCIO::Lut3DTransform::Create(3);
    cube->setValue(1, 1, 1, 0.7F, 0.2F, 0.4F);
    group->appendTransform(saturation);
    group->appendTransform(cube);
    EXPECT_LT(differenceFrom(OCIO::Config::CreateRaw()->getProcessor(group), true), 1e-6);
}

TEST(CompiledTransformTest, KeepsTheOrderOfMatricesWithOffsets) {
    const auto group = OCIO::GroupTransform::Create();
    const auto matrix = OCIO::MatrixTransform::Create();
    const std::array<double, 16> cells{0.5, 0.25, 0, 0, 0, 1, 0, 0, 0.1, 0, 0.9, 0, 0, 0, 0, 1};
    const std::array<double, 4> offset{0.1, -0.2, 0.3, 0};
    matrix->setMatrix(cells.data());
    matrix->setOffset(offset.data());
    group->appendTransform(matrix);
    const auto power = OCIO::ExponentTransform::Create();
    const double exponents[4] = {1.2, 2.2, 0.4, 1};
    power->setValue(exponents);
    group->appendTransform(power);
    group->appendTransform(matrix);
    EXPECT_LT(differenceFrom(OCIO::Config::CreateRaw()->getProcessor(group), false), 2e-5);
}

}  // namespace
}  // namespace Corvel
