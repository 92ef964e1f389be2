#include "worker/encode/EncoderContext.h"

#include "tests/unit/worker_encode/Plans.h"
#include "worker/Status.h"
#include "worker/picture/PictureConverter.h"
#include "worker/picture/PicturePool.h"

#include <gmock/gmock.h>

namespace Morvane::Worker {
namespace {

TEST(EncoderContext, UnknownEncoderOptionIsRefused) {
    EncodingPlan plan = planFor("rle ");
    plan.options.emplace_back("sharpness", "3");
    try {
        EncoderContext{plan};
        ADD_FAILURE();
    } catch (const StatusError& error) {
        EXPECT_EQ(error.status, Status::NotSupportedByCodec);
        EXPECT_THAT(error.what(), testing::HasSubstr("qtrle has no option sharpness"));
    }
}

TEST(EncoderContext, RefusalOfTheLibraryIsAStatus) {
    EncodingPlan plan = planFor("apch");
    plan.options.emplace_back("mbs_per_slice", "99");
    EXPECT_THROW(EncoderContext{plan}, StatusError);
    plan.encoder = "no such encoder";
    EXPECT_THROW(EncoderContext{plan}, StatusError);
}

TEST(EncoderContext, ParametersDescribeTheTrack) {
    const ParametersPointer parameters =
        EncoderContext(planFor("apcn", "profile=hq:colour=pq:fields=tff:aspect=2/1")).parameters();
    EXPECT_EQ(parameters->codec_tag, codecTag("apch"));
    EXPECT_EQ(parameters->width, 64);
    EXPECT_EQ(parameters->height, 48);
    EXPECT_EQ(parameters->color_primaries, AVCOL_PRI_BT2020);
    EXPECT_EQ(parameters->color_trc, AVCOL_TRC_SMPTE2084);
    EXPECT_EQ(parameters->color_space, AVCOL_SPC_BT2020_NCL);
    EXPECT_EQ(parameters->field_order, AV_FIELD_TB);
    EXPECT_EQ(parameters->sample_aspect_ratio.num, 2);
    EXPECT_EQ(parameters->bits_per_coded_sample, 24);
}

/// MPEG-4 counts at most 65535 ticks a second; 120000/1001 is beyond it.
TEST(EncoderContext, EveryRateOpensInEveryCodec) {
    for (const Codec& codec : codecTable())
        for (const AVRational rate : {AVRational{120000, 1001}, AVRational{1, 1000}, AVRational{1000, 1}}) {
            EncodingRequest request;
            request.settings = Settings::defaults(codec);
            request.width = codec.sizes.only.empty() ? 256 : codec.sizes.only[0].width;
            request.height = codec.sizes.only.empty() ? 144 : codec.sizes.only[0].height;
            request.rate = rate;
            EXPECT_NO_THROW(EncoderContext(planEncoding(request)))
                << codec.name << " " << rate.num << "/" << rate.den;
        }
}

class LookAhead : public testing::TestWithParam<std::tuple<const char*, const char*, int>> {};

TEST_P(LookAhead, FirstPacketComesWithin44Frames) {
    const auto [type, preset, threads] = GetParam();
    const EncodingPlan plan =
        planFor(type, std::string("preset=") + preset + ":threads=" + std::to_string(threads));
    EncoderContext sut(plan);
    PicturePool pool(plan);
    PictureConverter converter(plan);
    int sent = 0;
    for (PacketPointer packet; !packet && sent < 100; ++sent) {
        const FramePointer frame = pool.take();
        converter.convert(pixelsOf(sent).data(), *frame);
        frame->pts = sent;
        sut.send(frame.get());
        packet = sut.receive();
    }
    EXPECT_LE(sent, 44);
}

INSTANTIATE_TEST_SUITE_P(OwnBFrames, LookAhead,
                         testing::Combine(testing::Values("avc1"), testing::Values("slower:bframes=5"),
                                          testing::Values(2, 12)));

INSTANTIATE_TEST_SUITE_P(Presets, LookAhead,
                         testing::Combine(testing::Values("avc1", "hvc1"),
                                          testing::Values("ultrafast", "medium", "slower", "veryslow",
                                                          "placebo"),
                                          testing::Values(1, 2, 12)));

}  // namespace
}  // namespace Morvane::Worker
