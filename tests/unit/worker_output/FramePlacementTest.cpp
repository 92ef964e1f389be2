#include "worker/output/FramePlacement.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

void expectPlace(const FramePlacement& place, int left, int top, int width, int height) {
    EXPECT_EQ(place.left, left);
    EXPECT_EQ(place.top, top);
    EXPECT_EQ(place.width, width);
    EXPECT_EQ(place.height, height);
}

TEST(FramePlacement, AFrameOfTheAreasSizeFillsIt) {
    expectPlace(FramePlacement::inside(1920, 1080, 1920, 1080), 0, 0, 1920, 1080);
}

TEST(FramePlacement, AWideFrameGetsBarsAboveAndBelow) {
    expectPlace(FramePlacement::inside(1920, 1080, 1280, 1024), 0, 152, 1280, 720);
}

TEST(FramePlacement, ANarrowFrameGetsBarsLeftAndRight) {
    expectPlace(FramePlacement::inside(640, 480, 1920, 1080), 240, 0, 1440, 1080);
}

TEST(FramePlacement, NothingIsEverNarrowerThanAPixel) {
    expectPlace(FramePlacement::inside(4096, 1, 10, 10), 0, 4, 10, 1);
    expectPlace(FramePlacement::inside(1, 4096, 10, 10), 4, 0, 1, 10);
}

}  // namespace
}  // namespace Morvane::Worker
