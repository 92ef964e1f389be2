#include "host/geometry/GeometrySteps.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "host/images/ImageReader.h"

namespace Corvel {
namespace {

Picture filled(int width, int height, int channels, float value) {
    Picture picture;
    picture.reset(width, height, channels);
    std::fill_n(picture.row(0, 0), picture.planeStride() * static_cast<std::size_t>(channels), value);
    return picture;
}

const PictureHeader header;
const FrameUnderWay frame{7, 0, header};

TEST(GeometrySteps, GiveThePictureTheSizeOfTheMovie) {
    const auto sut =
        makePlacementStep(placementOf({8, 4, 1}, {0, 0, 8, 4}, {6, 6, 1}, Fit::Inside), Filter::Box);
    for (int time = 0; time < 3; ++time) {
        Picture picture = filled(8, 4, 3, 1);
        sut->apply(frame, picture);
        EXPECT_EQ(picture.width(), 6);
        EXPECT_EQ(picture.height(), 6);
        EXPECT_EQ(picture.row(0, 0)[3], 0);
        EXPECT_EQ(picture.row(0, 3)[3], 1);
    }
}

TEST(GeometrySteps, RefuseAFrameOfAnotherSizeByItsNumber) {
    const auto sut =
        makePlacementStep(placementOf({8, 4, 1}, {0, 0, 8, 4}, {6, 6, 1}, Fit::Inside), Filter::Box);
    Picture picture = filled(8, 5, 3, 1);
    try {
        sut->apply(frame, picture);
        FAIL();
    } catch (const UnreadableImage& error) {
        EXPECT_NE(std::string(error.what()).find("frame 7 has 8 x 5 pixels"), std::string::npos)
            << error.what();
    }
}

TEST(GeometrySteps, AMaskIsBlackAndOpaque) {
    Picture picture = filled(4, 4, 4, 0.5F);
    makeMaskStep({0, 1, 4, 2}, 1)->apply(frame, picture);
    EXPECT_EQ(picture.row(0, 0)[0], 0);
    EXPECT_EQ(picture.row(3, 3)[3], 1);
    EXPECT_EQ(picture.row(0, 1)[0], 0.5F);
    EXPECT_EQ(picture.row(3, 2)[3], 0.5F);
}

TEST(GeometrySteps, AMaskAtTheSidesMayLetSomeLightThrough) {
    Picture picture = filled(4, 2, 3, 1);
    makeMaskStep({1, 0, 2, 2}, 0.75)->apply(frame, picture);
    EXPECT_FLOAT_EQ(picture.row(1, 1)[0], 0.25F);
    EXPECT_FLOAT_EQ(picture.row(1, 1)[1], 1);
    EXPECT_FLOAT_EQ(picture.row(1, 1)[3], 0.25F);
}

}  // namespace
}  // namespace Corvel
