#include "worker/codec/EncodingPlan.h"

#include "worker/Status.h"

#include <gmock/gmock.h>

#include <map>

namespace Morvane::Worker {
namespace {

using testing::HasSubstr;

EncodingRequest requestFor(const char* type, const std::string& settings = "") {
    EncodingRequest request;
    request.settings = Settings::parse(settings, *findCodec(type));
    request.width = 256;
    request.height = 144;
    return request;
}

std::string optionOf(const EncodingPlan& plan, const std::string& key) {
    for (const auto& [name, value] : plan.options)
        if (name == key)
            return value;
    return "(none)";
}

std::pair<Status, std::string> refusal(const EncodingRequest& request) {
    try {
        planEncoding(request);
    } catch (const StatusError& error) {
        return {error.status, error.what()};
    }
    return {Status::Success, ""};
}

TEST(EncodingPlan, TypeFollowsTheProfile) {
    EXPECT_EQ(planEncoding(requestFor("apcn")).tag, codecTag("apcn"));
    EXPECT_EQ(planEncoding(requestFor("apcn", "profile=hq")).tag, codecTag("apch"));
    EXPECT_EQ(planEncoding(requestFor("mjpa")).tag, codecTag("mjpa"));
}

TEST(EncodingPlan, PictureWithAlphaOnlyForFramesWithAlpha) {
    EncodingRequest request = requestFor("ap4h");
    EXPECT_EQ(planEncoding(request).picture->format, AV_PIX_FMT_YUV444P10);
    request.hasAlpha = true;
    EXPECT_EQ(planEncoding(request).picture->format, AV_PIX_FMT_YUVA444P10);
    EXPECT_EQ(planEncoding(request).alpha, AlphaMode::Premultiplied);
    request.settings = Settings::parse("alpha=none", *findCodec("ap4h"));
    EXPECT_EQ(planEncoding(request).picture->format, AV_PIX_FMT_YUV444P10);
}

TEST(EncodingPlan, CodecThatOnlyHasPicturesWithAlphaGetsAnOpaqueOne) {
    const EncodingPlan plan = planEncoding(requestFor("b64a"));
    EXPECT_TRUE(plan.picture->alpha);
    EXPECT_EQ(plan.alpha, AlphaMode::None);
}

TEST(EncodingPlan, DepthOfTheSampleDescriptionSaysWhetherThereIsAlpha) {
    EncodingRequest request = requestFor("png ");
    EXPECT_EQ(sampleDescriptionDepth(planEncoding(request)), 24);
    request.hasAlpha = true;
    EXPECT_EQ(sampleDescriptionDepth(planEncoding(request)), 32);
}

TEST(EncodingPlan, LosslessH264IsRgb) {
    EncodingRequest request = requestFor("avc1");
    request.quality = 5;
    const EncodingPlan plan = planEncoding(request);
    EXPECT_EQ(plan.encoder, "libx264rgb");
    EXPECT_EQ(plan.picture->format, AV_PIX_FMT_RGB24);
    EXPECT_EQ(plan.colour.matrix, AVCOL_SPC_RGB);
    EXPECT_EQ(plan.colour.range, AVCOL_RANGE_JPEG);
    EXPECT_EQ(optionOf(plan, "qp"), "0");
}

TEST(EncodingPlan, OwnQuantiserGoesOverQuality) {
    EXPECT_EQ(optionOf(planEncoding(requestFor("mjpa")), "qscale"), "2");
    EXPECT_EQ(optionOf(planEncoding(requestFor("mjpa", "quantiser=9")), "qscale"), "9");
    EncodingRequest request = requestFor("avc1", "crf=30");
    request.quality = 5;
    const EncodingPlan plan = planEncoding(request);
    EXPECT_EQ(optionOf(plan, "crf"), "30");
    EXPECT_EQ(optionOf(plan, "qp"), "(none)");
    EXPECT_EQ(plan.picture->format, AV_PIX_FMT_YUV420P);
}

TEST(EncodingPlan, QualityOfDnxhrIsItsProfile) {
    EncodingRequest request = requestFor("AVdh");
    const char* profiles[] = {"dnxhr_lb", "dnxhr_sq", "dnxhr_hq", "dnxhr_hqx", "dnxhr_444", "dnxhr_444"};
    for (request.quality = 0; request.quality < 6; ++request.quality)
        EXPECT_EQ(optionOf(planEncoding(request), "profile"), profiles[request.quality]);
}

TEST(EncodingPlan, DepthLimitsTheProfilesOfQuality) {
    EncodingRequest request = requestFor("AVdh", "bitdepth=8");
    request.quality = 5;
    EXPECT_EQ(optionOf(planEncoding(request), "profile"), "dnxhr_hq");
    request = requestFor("AVdh", "bitdepth=10");
    request.quality = 0;
    EXPECT_EQ(optionOf(planEncoding(request), "profile"), "dnxhr_hqx");
}

TEST(EncodingPlan, JpegAtOddSizesHasChromaThatEveryReaderUnderstands) {
    EncodingRequest request = requestFor("jpeg");
    EXPECT_EQ(planEncoding(request).picture->format, AV_PIX_FMT_YUVJ422P);
    request.width = 255;
    EXPECT_EQ(planEncoding(request).picture->format, AV_PIX_FMT_YUVJ420P);
}

TEST(EncodingPlan, RefusedSizeNamesTheRuleAndTwoCodecsThatCan) {
    EncodingRequest request = requestFor("apch");
    request.width = 101;
    const auto [status, sentence] = refusal(request);
    EXPECT_EQ(status, Status::NotSupportedByCodec);
    EXPECT_THAT(sentence, HasSubstr("ProRes 422 HQ cannot store 101 x 144 (it takes even widths)"));
    EXPECT_THAT(sentence, HasSubstr("Animation and PNG"));
}

TEST(EncodingPlan, SizeRulesOfEveryKind) {
    const struct {
        const char* type;
        const char* settings;
        int width, height;
        bool taken;
    } cases[] = {{"dvc ", "", 720, 480, true},
                 {"dvc ", "", 720, 576, false},
                 {"avc1", "", 255, 144, false},
                 {"avc1", "", 256, 143, false},
                 {"avc1", "chroma=444", 255, 143, true},
                 {"avc1", "chroma=422", 256, 143, true},
                 {"CFHD", "", 256, 144, true},
                 {"CFHD", "", 264, 144, false},
                 {"CFHD", "", 256, 148, false},
                 {"CFHD", "bitdepth=10", 240, 144, false},
                 {"SVQ1", "", 66, 48, false},
                 {"v210", "", 64, 3, false},
                 {"Hap1", "", 256, 146, false},
                 {"AVdh", "", 254, 144, false},
                 {"mjp2", "", 31, 144, false},
                 {"rle ", "", 1, 1, true},
                 {"rle ", "", 16384, 16384, true},
                 {"rle ", "", 16385, 1, false},
                 {"h263", "", 256, 144, false}};
    for (const auto& one : cases) {
        EncodingRequest request = requestFor(one.type, one.settings);
        request.width = one.width;
        request.height = one.height;
        EXPECT_EQ(refusal(request).first == Status::Success, one.taken)
            << one.type << " " << one.width << " x " << one.height;
    }
}

TEST(EncodingPlan, FieldsMustHaveWholeChromaSamples) {
    EncodingRequest request = requestFor("avc1", "fields=tff");
    request.height = 142;
    EXPECT_THAT(refusal(request).second,
                HasSubstr("interlaced pictures of 142 rows; it takes multiples of 4"));
    request.settings = Settings::parse("fields=tff", *findCodec("apch"));
    EXPECT_EQ(refusal(request).first, Status::Success);
    request.height = 143;
    EXPECT_EQ(refusal(request).first, Status::NotSupportedByCodec);
}

TEST(EncodingPlan, WhatIsNoQualitySizeOrRateIsABadArgument) {
    const auto statusWith = [](void (*change)(EncodingRequest&)) {
        EncodingRequest request = requestFor("rle ");
        change(request);
        return refusal(request).first;
    };
    EXPECT_EQ(statusWith([](EncodingRequest& request) { request.quality = 6; }), Status::BadArgument);
    EXPECT_EQ(statusWith([](EncodingRequest& request) { request.quality = -1; }), Status::BadArgument);
    EXPECT_EQ(statusWith([](EncodingRequest& request) { request.width = 0; }), Status::BadArgument);
    EXPECT_EQ(statusWith([](EncodingRequest& request) { request.height = -1; }), Status::BadArgument);
    EXPECT_EQ(statusWith([](EncodingRequest& request) { request.rate = {0, 1}; }), Status::BadArgument);
    EXPECT_EQ(statusWith([](EncodingRequest& request) { request.keyFrameRate = -1; }), Status::BadArgument);
}

TEST(EncodingPlan, AspectIsSquareButForDv) {
    EXPECT_EQ(planEncoding(requestFor("apch")).aspect.num, 1);
    EncodingRequest request = requestFor("dvcp");
    request.width = 720;
    request.height = 576;
    EXPECT_EQ(planEncoding(request).aspect.num, 16);
    EXPECT_EQ(planEncoding(request).aspect.den, 15);
    request.settings = Settings::parse("aspect=1/1", *findCodec("dvcp"));
    EXPECT_EQ(planEncoding(request).aspect.den, 1);
}

TEST(EncodingPlan, ThreadsAreAllCoresUnlessSet) {
    EXPECT_GE(planEncoding(requestFor("apch")).threads, 1);
    EXPECT_EQ(planEncoding(requestFor("apch", "threads=5")).threads, 5);
}

/// Whoever relies on a movie that is being written may count on every frame that lies further back.
TEST(EncodingPlan, LookAheadStaysWithin48FramesWhateverPresetAndThreads) {
    for (const char* type : {"avc1", "hvc1"})
        for (const char* preset : {"medium", "slow", "slower", "veryslow", "placebo"})
            for (const char* threads : {"1", "2", "8", "64"}) {
                const EncodingPlan plan =
                    planEncoding(requestFor(type, std::string("preset=") + preset + ":threads=" + threads));
                const std::string all = optionOf(plan, "rc-lookahead") + optionOf(plan, "x265-params");
                const std::size_t digits = all.find("rc-lookahead=");
                const std::string number = digits == std::string::npos ? all : all.substr(digits + 13);
                EXPECT_GT(std::stoi(number), 0) << type << preset << threads;
                EXPECT_LE(std::stoi(number), 40) << type << preset << threads;
            }
}

TEST(EncodingPlan, LookAheadHasAThreadACoreButNoMoreThanFour) {
    const auto threadsOf = [](const std::string& settings) {
        return optionOf(planEncoding(requestFor("avc1", settings)), "x264-params");
    };
    EXPECT_EQ(threadsOf("threads=1"), "lookahead-threads=1");
    EXPECT_EQ(threadsOf("threads=2"), "lookahead-threads=2");
    EXPECT_EQ(threadsOf("threads=16"), "lookahead-threads=4");
    EXPECT_EQ(threadsOf("threads=2:preset=fast"), "(none)");
}

}  // namespace
}  // namespace Morvane::Worker
