#include "Kex/Image/MetaData.h"

#include <gtest/gtest.h>

namespace Kex::Image::MetaData {
namespace {

TEST(MetaDataProperty, RendersItselfAsText) {
    EXPECT_EQ(Property("01:00:00:00").text(), "01:00:00:00");
    EXPECT_EQ(Property("").text(), "");
    EXPECT_EQ(Property(-12).text(), "-12");
    EXPECT_EQ(Property(std::int64_t{1} << 40).text(), "1099511627776");
    EXPECT_EQ(Property(23.976).text(), "23.976");
    EXPECT_EQ(Property(0.1).text(), "0.1");
}

TEST(MetaDataBundle, AnswersNothingForAKeyThatIsNotThere) {
    const Bundle sut;

    EXPECT_TRUE(sut.empty());
    EXPECT_EQ(sut.getData("input/timecode"), nullptr);
}

TEST(MetaDataBundle, ReplacesAValue) {
    Bundle sut;
    sut.setData("quicktime/reel", "A001");

    sut.setData("quicktime/reel", "B002");

    ASSERT_NE(sut.getData("quicktime/reel"), nullptr);
    EXPECT_EQ(sut.getData("quicktime/reel")->text(), "B002");
    EXPECT_EQ(std::distance(sut.begin(), sut.end()), 1);
}

}  // namespace
}  // namespace Kex::Image::MetaData
