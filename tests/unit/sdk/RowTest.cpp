#include "Kex/Image/Row.h"

#include <gtest/gtest.h>

#include <vector>

namespace Kex::Image {
namespace {

TEST(Row, ReadsAsZeroUntilItIsFilled) {
    const Row sut(-2, 3);

    ASSERT_EQ(sut.width(), 5);
    for (const Channel z : {Chan_Black, Chan_Red, Chan_Alpha}) {
        for (int column = 0; column < sut.width(); ++column) {
            EXPECT_EQ(sut[z][column], 0.0F);
        }
    }
}

TEST(Row, KeepsWhatIsWrittenIntoItsOwnStorage) {
    Row sut(0, 2);

    float* const green = sut.writable(Chan_Green);
    green[0] = 0.25F;
    green[1] = -3.0F;

    EXPECT_EQ(sut[Chan_Green], green);
    EXPECT_EQ(sut[Chan_Green][1], -3.0F);
    EXPECT_EQ(sut[Chan_Red][1], 0.0F);
}

TEST(Row, RefersToSamplesWithoutCopyingThem) {
    const float plane[] = {1, 2, 3};
    Row sut(0, 3);

    sut.refer(Chan_Blue, plane);

    EXPECT_EQ(sut[Chan_Blue], plane);
}

TEST(Row, GoesBackFromReferredSamplesToItsOwnStorage) {
    const float plane[] = {1, 2};
    Row sut(0, 2);
    float* const own = sut.writable(Chan_Red);
    sut.refer(Chan_Red, plane);

    sut.fill(Chan_Red, 7);

    EXPECT_EQ(sut[Chan_Red], own);
    EXPECT_EQ(own[1], 7.0F);
    EXPECT_EQ(plane[1], 2.0F);
}

TEST(Row, LooksCodesUpWhenTheirFloatsAreWanted) {
    const CodeTable table({0.0F, 0.5F, 2.0F});
    const CodeTable::Code plane[] = {2, 0, 1};
    Row sut(0, 3);

    sut.refer(Chan_Blue, plane, table);

    EXPECT_EQ(sut.samples(Chan_Blue).codes(), plane);
    EXPECT_EQ(sut.samples(Chan_Blue).table(), &table);
    const float* const floats = sut[Chan_Blue];
    EXPECT_EQ(std::vector<float>(floats, floats + 3), (std::vector<float>{2.0F, 0.0F, 0.5F}));
    EXPECT_EQ(sut[Chan_Blue], floats) << "looked up again";
    EXPECT_EQ(sut.samples(Chan_Blue).floats(), floats);
}

TEST(Row, ForgetsCodesWhenItIsFilledOtherwise) {
    const CodeTable table({0.0F, 0.5F});
    const CodeTable::Code plane[] = {1, 1};
    Row sut(0, 2);
    sut.refer(Chan_Red, plane, table);

    sut.fill(Chan_Red, 7);

    EXPECT_EQ(sut.samples(Chan_Red).table(), nullptr);
    EXPECT_EQ(sut.samples(Chan_Red).codes(), nullptr);
    EXPECT_EQ(sut[Chan_Red][1], 7.0F);
    const CodeTable::Code other[] = {0, 1};
    sut.refer(Chan_Red, other, table);
    EXPECT_EQ(sut[Chan_Red][1], 0.5F);
}

TEST(Row, IsEmptyWhenItsEndsAreTheWrongWayRound) {
    const Row sut(4, 2);

    EXPECT_EQ(sut.width(), 0);
}

}  // namespace
}  // namespace Kex::Image
