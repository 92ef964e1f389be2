#include "worker/picture/PicturePool.h"

#include <gtest/gtest.h>

#include <set>

namespace Morvane::Worker {
namespace {

EncodingPlan planFor(const char* type, const std::string& settings, int width, int height) {
    EncodingRequest request;
    request.settings = Settings::parse(settings, *findCodec(type));
    request.width = width;
    request.height = height;
    return planEncoding(request);
}

TEST(PicturePool, MemoryIsUsedAgain) {
    PicturePool sut(planFor("apch", "", 256, 144));
    std::set<const void*> seen;
    for (int i = 0; i < 20; ++i)
        seen.insert(sut.take()->data[0]);
    EXPECT_EQ(seen.size(), 1U);
}

TEST(PicturePool, PicturesInUseAreApart) {
    PicturePool sut(planFor("apch", "", 256, 144));
    const FramePointer one = sut.take();
    const FramePointer other = sut.take();
    EXPECT_NE(one->data[0], other->data[0]);
}

TEST(PicturePool, PicturesOutliveThePool) {
    FramePointer frame;
    {
        PicturePool sut(planFor("rle ", "", 33, 7));
        frame = sut.take();
    }
    frame->data[0][0] = 1;
    EXPECT_EQ(frame->width, 33);
}

TEST(PicturePool, PicturesCarryTheOneColourDecision) {
    PicturePool sut(planFor("apch", "colour=pq:fields=tff:aspect=2/1", 256, 144));
    const FramePointer frame = sut.take();
    EXPECT_EQ(frame->color_primaries, AVCOL_PRI_BT2020);
    EXPECT_EQ(frame->color_trc, AVCOL_TRC_SMPTE2084);
    EXPECT_EQ(frame->colorspace, AVCOL_SPC_BT2020_NCL);
    EXPECT_EQ(frame->color_range, AVCOL_RANGE_MPEG);
    EXPECT_TRUE(frame->interlaced_frame);
    EXPECT_TRUE(frame->top_field_first);
    EXPECT_EQ(frame->sample_aspect_ratio.num, 2);
}

}  // namespace
}  // namespace Morvane::Worker
