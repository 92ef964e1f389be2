#include "Kex/Image/Op.h"

#include <gtest/gtest.h>

#include "Kex/Image/ChannelSet.h"
#include "tests/unit/sdk/TestNode.h"

namespace Kex::Image {
namespace {

using Testing::TestApplication;
using Testing::TestPicture;

TEST(Op, FormatsErrorsAndIsFailedUntilThatIsCleared) {
    TestApplication application;
    Op sut(application);

    sut.error("frame %d of %s\n", 12, "a.mov");

    EXPECT_EQ(application.errors, std::vector<std::string>{"frame 12 of a.mov\n"});
    EXPECT_TRUE(sut.failed());
    sut.clearFailure();
    EXPECT_FALSE(sut.failed());
}

TEST(Op, IsNotFailedByAWarning) {
    TestApplication application;
    Op sut(application);

    sut.warning("%s", std::string(5000, 'x').c_str());

    EXPECT_EQ(application.warnings, std::vector<std::string>{std::string(5000, 'x')});
    EXPECT_FALSE(sut.failed());
}

TEST(Op, HasNoInputWhereNothingIsConnected) {
    TestApplication application;
    TestPicture picture(application, [](int, int, Channel) { return 0.0F; });
    Op sut(application);

    sut.setInput(1, &picture);

    EXPECT_EQ(sut.input(-1), nullptr);
    EXPECT_EQ(sut.input(0), nullptr);
    EXPECT_EQ(sut.input(1), &picture);
    EXPECT_EQ(sut.input(2), nullptr);
}

TEST(Op, PassesOnTheMetadataOfItsFirstInput) {
    TestApplication application;
    TestPicture picture(application, [](int, int, Channel) { return 0.0F; });
    picture.metadata.setData("quicktime/reel", "A001");
    Op sut(application);
    EXPECT_TRUE(sut.fetchMetaData("").empty());

    sut.setInput(0, &picture);

    EXPECT_NE(sut.fetchMetaData("").getData("quicktime/reel"), nullptr);
}

TEST(Op, AsksTheApplicationWhetherToGiveUp) {
    TestApplication application;
    application.questionsBeforeAbort = 1;
    const Op sut(application);

    EXPECT_FALSE(sut.aborted());
    EXPECT_TRUE(sut.aborted());
}

TEST(ChannelSet, HoldsTheChannelsOfItsMask) {
    const ChannelSet rgba(15U);

    EXPECT_EQ(rgba, ChannelSet(Mask_RGBA));
    EXPECT_FALSE(rgba.contains(Chan_Black));
    EXPECT_TRUE(rgba.contains(Chan_Alpha));
    EXPECT_FALSE(ChannelSet(Mask_RGB).contains(Chan_Alpha));
    EXPECT_TRUE(ChannelSet().empty());
}

}  // namespace
}  // namespace Kex::Image
