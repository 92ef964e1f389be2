#include "host/geometry/Placement.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Corvel {
namespace {

Placement placed(const Raster& from, const Raster& to, Fit fit) {
    return placementOf(from, {0, 0, from.width, from.height}, to, fit);
}

TEST(Placement, InsideLeavesBarsAboveAndBelow) {
    const Placement sut = placed({2048, 858, 1}, {1920, 1080, 1}, Fit::Inside);
    EXPECT_EQ(sut.across, (Span{0, 2048, 0, 1920}));
    EXPECT_EQ(sut.down, (Span{0, 858, 138, 804}));
}

TEST(Placement, InsideLeavesBarsBeside) {
    const Placement sut = placed({640, 480, 1}, {1920, 1080, 1}, Fit::Inside);
    EXPECT_EQ(sut.across, (Span{0, 640, 240, 1440}));
    EXPECT_EQ(sut.down, (Span{0, 480, 0, 1080}));
}

TEST(Placement, FillCutsOffBothSidesAlike) {
    const Placement sut = placed({640, 480, 1}, {1920, 1080, 1}, Fit::Fill);
    EXPECT_EQ(sut.across, (Span{0, 640, 0, 1920}));
    EXPECT_EQ(sut.down, (Span{60, 360, 0, 1080}));
}

TEST(Placement, StretchTakesAllOfIt) {
    const Placement sut = placed({640, 480, 1}, {1920, 1080, 1}, Fit::Stretch);
    EXPECT_EQ(sut.across, (Span{0, 640, 0, 1920}));
    EXPECT_EQ(sut.down, (Span{0, 480, 0, 1080}));
}

TEST(Placement, CropKeepsPixelsAndCentres) {
    const Placement larger = placed({1000, 500, 1}, {600, 601, 1}, Fit::Crop);
    EXPECT_EQ(larger.across, (Span{200, 600, 0, 600}));
    EXPECT_EQ(larger.down, (Span{0, 500, 50, 500}));
    EXPECT_TRUE(larger.across.isCopy());
}

TEST(Placement, WithoutAFitLowerLeftCornersMeet) {
    const Placement smaller = placed({100, 50, 1}, {200, 80, 1}, Fit::LowerLeft);
    EXPECT_EQ(smaller.across, (Span{0, 100, 0, 100}));
    EXPECT_EQ(smaller.down, (Span{0, 50, 30, 50}));
    const Placement larger = placed({100, 50, 1}, {80, 30, 1}, Fit::LowerLeft);
    EXPECT_EQ(larger.down, (Span{20, 30, 0, 30})) << "the rows at the top are cut off";
}

TEST(Placement, PixelsAreAsWideAsTheyAreSeen) {
    // 2:1 anamorphic, 1828 x 1556 pixels seen as 3656 x 1556.
    const Placement sut = placed({1828, 1556, 2}, {1828, 778, 1}, Fit::Inside);
    EXPECT_EQ(sut.across.count, 1828);
    EXPECT_EQ(sut.down.count, 778);
    const Placement wide = placed({720, 576, 16.0 / 11}, {1024, 576, 1}, Fit::Fill);
    EXPECT_NEAR(wide.across.length, 704, 1e-6) << "1047 pixels wide, of which 1024 are seen";
}

TEST(Placement, OfVeryFlatPicturesARowRemains) {
    EXPECT_EQ(placed({5000, 1, 1}, {100, 100, 1}, Fit::Inside).down.count, 1);
}

TEST(Placement, CropsFromTheMiddleOrFromACorner) {
    EXPECT_EQ(croppedWindow({100, 50, {}}, 300, 100), (Window{100, 25, 100, 50}));
    EXPECT_EQ(croppedWindow({100, 50, CropRequest::Corner{7, 9}}, 300, 100), (Window{7, 9, 100, 50}));
}

TEST(Placement, RefusesACropBeyondThePicture) {
    EXPECT_THROW(croppedWindow({301, 50, {}}, 300, 100), std::invalid_argument);
    EXPECT_THROW(croppedWindow({100, 50, CropRequest::Corner{250, 0}}, 300, 100), std::invalid_argument);
}

TEST(Placement, AMaskTakesTheSameFromBothSides) {
    EXPECT_EQ(seenThrough({2.39, 1}, {1920, 1080, 1}), (Window{0, 138, 1920, 804}));
    EXPECT_EQ(seenThrough({4.0 / 3, 1}, {1920, 1080, 1}), (Window{240, 0, 1440, 1080}));
    EXPECT_EQ(seenThrough({2.4, 1}, {1000, 1000, 2}), (Window{0, 83, 1000, 834}));
    EXPECT_EQ(seenThrough({16.0 / 9, 1}, {1920, 1080, 1}), (Window{0, 0, 1920, 1080}));
}

}  // namespace
}  // namespace Corvel
