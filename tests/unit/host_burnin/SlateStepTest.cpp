#include "host/burnin/SlateStep.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/burnin/FieldNames.h"

namespace Corvel {
namespace {

const PictureHeader header;
const Kex::Image::LUT* const srgb = Kex::Image::LUT::getLut(6);

Picture red(int width, int height, int channels) {
    Picture picture;
    picture.reset(width, height, channels);
    picture.clear();
    std::fill_n(picture.row(0, 0), picture.planeStride(), 1.0F);
    return picture;
}

BurnInContext contextWith(const Kex::Image::LUT* curve) {
    return {{curve, 1},
            1,
            [](const FrameUnderWay&, const std::string& field, const std::string&) {
                if (isTimeField(field) || isNumberField(field)) {
                    return FieldValue(std::int64_t{1001});
                }
                return FieldValue("some text");
            },
            std::make_shared<FontFaults>()};
}

Picture slated(int width, int height, int channels = 3, const Kex::Image::LUT* curve = nullptr) {
    Picture picture = red(width, height, channels);
    makeSlateStep(loadSlate("default", fieldNames()), contextWith(curve))->apply({1, 0, header}, picture);
    return picture;
}

TEST(SlateStep, ReplacesTheFirstPictureAlone) {
    const auto sut = makeSlateStep(loadSlate("default", fieldNames()), contextWith(nullptr));
    Picture second = red(320, 180, 3);
    sut->apply({1002, 1, header}, second);
    EXPECT_EQ(std::count(second.row(0, 0), second.row(0, 0) + second.planeStride(), 1.0F), 320 * 180);
    const Picture first = slated(320, 180);
    EXPECT_NEAR(first.row(0, 0)[0], 0.09F, 1e-6F) << "the background";
}

TEST(SlateStep, HasThePictureOnIt) {
    const Picture sut = slated(640, 360);
    EXPECT_EQ(sut.row(0, 60)[500], 1);
    EXPECT_EQ(sut.row(1, 60)[500], 0);
}

TEST(SlateStep, HasBarsAndSteps) {
    const Picture sut = slated(640, 360);
    EXPECT_EQ(sut.row(0, 360 - 22 - 30)[30], 0.75F);
    EXPECT_EQ(sut.row(2, 360 - 22 - 30)[640 - 30], 0.75F);
    EXPECT_EQ(sut.row(0, 360 - 25)[30], 0);
    EXPECT_EQ(sut.row(0, 360 - 25)[640 - 30], 1);
}

TEST(SlateStep, IsOpaqueAndLinearWhereACurveFollows) {
    const Picture sut = slated(640, 360, 4, srgb);
    EXPECT_EQ(*std::min_element(sut.row(3, 0), sut.row(3, 0) + sut.planeStride()), 1.0F);
    EXPECT_NEAR(sut.row(0, 0)[0], srgb->toLinear(0.09), 1e-4);
    EXPECT_NEAR(sut.row(0, 60)[500], 1, 1e-5);
}

TEST(SlateStep, CanBeDrawnAtAnySize) {
    for (const auto& [width, height] : {std::pair{1, 1}, {16, 9}, {100, 1000}, {1000, 100}}) {
        const Picture sut = slated(width, height);
        EXPECT_EQ(sut.width(), width);
        EXPECT_EQ(sut.height(), height);
    }
}

TEST(SlateStep, ATemplateWithAnUnknownFieldIsRefused) {
    EXPECT_THROW(loadSlate("nothing", fieldNames()), BadTemplate);
    EXPECT_THROW(loadSlate("default", {"show"}), BadTemplate);
}

}  // namespace
}  // namespace Corvel
