#include <gtest/gtest.h>

#include "Kex/Image/Version.h"
#include "Kex/Image/Writer.h"

namespace Kex::Image {
namespace {

void fill(Writer::Description& record, const char* formats) {
    record.buildStamp = KEX_IMAGE_BUILD_STAMP;
    record.formats = formats;
    record.label = formats;
    record.ctor2(Writer::Description::add);
}

TEST(WriterDescription, IsFoundByEachOfItsExtensionsInAnyCase) {
    Writer::Description sut;
    fill(sut, "abc  xyz");

    EXPECT_EQ(Writer::Description::find("abc"), &sut);
    EXPECT_EQ(Writer::Description::find("XYZ"), &sut);
    EXPECT_EQ(Writer::Description::find("ab"), nullptr);
    EXPECT_EQ(Writer::Description::find(""), nullptr);
}

TEST(WriterDescription, TakesItselfOutWhenItIsDestroyed) {
    Writer::Description first;
    fill(first, "abc");
    {
        Writer::Description second;
        fill(second, "abc");
        ASSERT_EQ(Writer::Description::find("abc"), &second);
    }

    EXPECT_EQ(Writer::Description::find("abc"), &first);
}

TEST(WriterDescription, IsRefusedWithoutABuildStamp) {
    Writer::Description sut;
    sut.formats = "abc";
    testing::internal::CaptureStderr();

    sut.ctor2(Writer::Description::add);

    EXPECT_NE(testing::internal::GetCapturedStderr().find("build stamp"), std::string::npos);
    EXPECT_EQ(Writer::Description::find("abc"), nullptr);
}

TEST(WriterDescription, StampsDayAndSdkVersion) {
    EXPECT_STREQ(KEX_IMAGE_BUILD_STAMP, __DATE__ " for " KEX_IMAGE_VERSION);
}

}  // namespace
}  // namespace Kex::Image
