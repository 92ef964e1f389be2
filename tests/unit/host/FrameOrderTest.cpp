#include "host/render/FrameOrder.h"

#include <gtest/gtest.h>

#include <limits>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

using Frames = std::vector<int>;
using Ordered = std::vector<OrderedFrame>;

Exit refusal(const Frames& frames, const FrameOrder& order) {
    try {
        shownFrames(frames, order);
    } catch (const Failure& failure) {
        return failure.code;
    }
    return Exit::Done;
}

TEST(FrameOrder, LeavesFramesAloneByDefault) {
    EXPECT_EQ(shownFrames({3, 7, 8}, {}), (Frames{3, 7, 8}));
    EXPECT_EQ(inOrder({3, 7, 8}, {}), (Ordered{{3, 3}, {7, 7}, {8, 8}}));
}

TEST(FrameOrder, AddsHandlesAtBothEnds) {
    EXPECT_EQ(shownFrames({10, 11}, {.before = 2, .after = 1}), (Frames{8, 9, 10, 11, 12}));
    EXPECT_EQ(shownFrames({0}, {.before = 1, .after = 0}), (Frames{-1, 0}));
}

TEST(FrameOrder, CutsNegativeHandlesOff) {
    EXPECT_EQ(shownFrames({1, 2, 3, 4, 5}, {.before = -2, .after = -1}), (Frames{3, 4}));
    EXPECT_EQ(shownFrames({1, 2, 9}, {.before = -2, .after = 1}), (Frames{9, 10}));
}

TEST(FrameOrder, RefusesHandlesThatLeaveNothing) {
    EXPECT_EQ(refusal({1, 2, 3}, {.before = -2, .after = -2}), Exit::Usage);
    EXPECT_EQ(refusal({std::numeric_limits<int>::min()}, {.before = 1}), Exit::Usage);
    EXPECT_EQ(refusal({std::numeric_limits<int>::max()}, {.after = 1}), Exit::Usage);
}

TEST(FrameOrder, StepsFromTheFirstFrameThatHandlesLeave) {
    EXPECT_EQ(shownFrames({1, 2, 3, 4, 5, 6}, {.step = 2}), (Frames{1, 3, 5}));
    EXPECT_EQ(shownFrames({2, 3, 4, 5}, {.before = 1, .step = 2}), (Frames{1, 3, 5}));
    EXPECT_EQ(shownFrames({-3, -2, -1, 0}, {.step = 3}), (Frames{-3, 0}));
}

TEST(FrameOrder, ReversesWhatIsShownAndNotTheNumbersOfTheMovie) {
    EXPECT_EQ(inOrder({1, 3, 5}, {.reverse = true}), (Ordered{{1, 5}, {3, 3}, {5, 1}}));
}

TEST(FrameOrder, CountsHeldFramesOnFromTheFirst) {
    EXPECT_EQ(inOrder({7, 9}, {.hold = 2}), (Ordered{{7, 7}, {8, 7}, {9, 9}, {10, 9}}));
    EXPECT_EQ(inOrder({7, 8}, {.reverse = true, .hold = 2}), (Ordered{{7, 8}, {8, 8}, {9, 7}, {10, 7}}));
}

TEST(FrameOrder, RefusesMoreFramesThanAnybodyMeans) {
    EXPECT_EQ(refusal(Frames(2000), {.hold = 10'000}), Exit::Usage);
    EXPECT_EQ(refusal({1}, {.before = 6'000'000, .after = 6'000'000}), Exit::Usage);
}

}  // namespace
}  // namespace Corvel
