#include "host/images/StereoName.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

TEST(StereoName, PutsTheViewInPlaceOfItsMarks) {
    EXPECT_EQ(withView("/shots/%V/a_%v.%04d.exr", "right"), "/shots/right/a_r.%04d.exr");
    EXPECT_EQ(withView("a_%V.####.exr", "left"), "a_left.####.exr");
    EXPECT_EQ(withView("a%", "left"), "a%");
}

TEST(StereoName, LeavesDoubledPercentSignsAlone) {
    EXPECT_FALSE(hasViewMark("100%%V.%04d.exr"));
    EXPECT_TRUE(hasViewMark("100%%%V.%04d.exr"));
    EXPECT_FALSE(hasViewMark("a.%04d.exr"));
    EXPECT_FALSE(hasViewMark(""));
}

TEST(StereoName, IsTheLeftOneUnlessAnotherIsChosen) {
    EXPECT_EQ(pathOfView("/nowhere/%V.exr", {}), "/nowhere/left.exr");
    EXPECT_EQ(pathOfView("/nowhere/%V.exr", {.view = "right"}), "/nowhere/right.exr");
    EXPECT_EQ(pathOfView("/nowhere/a.exr", {.view = "right"}), "/nowhere/a.exr");
}

}  // namespace
}  // namespace Corvel
