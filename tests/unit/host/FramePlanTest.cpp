#include "host/render/FramePlan.h"

#include <gtest/gtest.h>

#include "host/render/Failure.h"
#include "tests/unit/host/FakeSource.h"

namespace Corvel {
namespace {

using Plan = std::vector<PlannedFrame>;

std::string refusal(const FrameSource& source, const std::vector<int>& wanted, Missing missing) {
    try {
        planFrames(source, wanted, missing);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code, Exit::InputUnreadable);
        return failure.what();
    }
    return "";
}

TEST(FramePlan, TakesAllFramesFromFirstToLast) {
    EXPECT_EQ(planFrames(FakeSource({3, 4, 5}), {}, Missing::Error), (Plan{{3, 3, 3}, {4, 4, 4}, {5, 5, 5}}));
}

TEST(FramePlan, TakesTheFramesThatAreWanted) {
    EXPECT_EQ(planFrames(FakeSource({1, 2, 3, 4}), {2, 4}, Missing::Error), (Plan{{2, 2, 2}, {4, 4, 4}}));
}

TEST(FramePlan, NamesAllGaps) {
    const std::string text = refusal(FakeSource({1, 2, 5, 9}), {}, Missing::Error);
    EXPECT_NE(text.find("frames 3-4,6-8 are missing"), std::string::npos) << text;
    const std::string one = refusal(FakeSource({1, 3}), {1, 2, 3}, Missing::Error);
    EXPECT_NE(one.find("frame 2 is missing"), std::string::npos) << one;
}

TEST(FramePlan, FillsGapsWithBlack) {
    EXPECT_EQ(planFrames(FakeSource({1, 3}), {}, Missing::Black),
              (Plan{{1, 1, 1}, {2, std::nullopt, 2}, {3, 3, 3}}));
}

TEST(FramePlan, HoldsTheFrameBeforeAGap) {
    EXPECT_EQ(planFrames(FakeSource({1, 4}), {}, Missing::Hold),
              (Plan{{1, 1, 1}, {2, 1, 2}, {3, 1, 3}, {4, 4, 4}}));
}

TEST(FramePlan, HoldsAlsoAFrameThatIsNotRendered) {
    EXPECT_EQ(planFrames(FakeSource({1, 5}), {4, 5}, Missing::Hold), (Plan{{4, 1, 4}, {5, 5, 5}}));
}

TEST(FramePlan, HoldsTheFirstFrameWhereThereIsNoneBefore) {
    EXPECT_EQ(planFrames(FakeSource({3}), {1, 2, 3}, Missing::Hold), (Plan{{1, 3, 1}, {2, 3, 2}, {3, 3, 3}}));
}

TEST(FramePlan, ShowsTheLastFrameFirst) {
    const FrameOrder reversed{.reverse = true};
    EXPECT_EQ(planFrames(FakeSource({5, 6, 7}), {}, Missing::Error, reversed),
              (Plan{{5, 7, 7}, {6, 6, 6}, {7, 5, 5}}));
}

TEST(FramePlan, HandlesAreMissingWhereTheInputHasNoSuchFrames) {
    const FrameOrder handles{.before = 1, .after = 1};
    EXPECT_EQ(planFrames(FakeSource({1, 2, 3, 4}), {2, 3}, Missing::Error, handles).size(), 4u);
    EXPECT_THROW(planFrames(FakeSource({2, 3}), {2, 3}, Missing::Error, handles), Failure);
    EXPECT_EQ(planFrames(FakeSource({2, 3}), {2, 3}, Missing::Black, handles),
              (Plan{{1, std::nullopt, 1}, {2, 2, 2}, {3, 3, 3}, {4, std::nullopt, 4}}));
}

TEST(FramePlan, AGapIsHeldFromTheFrameBeforeItAlsoWhenReversed) {
    EXPECT_EQ(planFrames(FakeSource({1, 3}), {}, Missing::Hold, {.reverse = true}),
              (Plan{{1, 3, 3}, {2, 1, 2}, {3, 1, 1}}));
}

TEST(FramePlan, RefusesARangeOfWhichNothingIsThere) {
    EXPECT_NE(refusal(FakeSource({1, 2}), {10, 11}, Missing::Black), "");
    EXPECT_NE(refusal(FakeSource({1, 2}), {10, 11}, Missing::Hold), "");
}

}  // namespace
}  // namespace Corvel
