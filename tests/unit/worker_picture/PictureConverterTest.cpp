#include "worker/picture/PictureConverter.h"

#include "worker/picture/PicturePool.h"
#include "worker/picture/StraightAlpha.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace Morvane::Worker {
namespace {

struct Trial {
    const char* type;
    std::string settings;
    int width = 64;
    int height = 48;
    bool alpha = false;
    int quality = 4;
    int threads = 2;
};

EncodingPlan planOf(const Trial& trial) {
    EncodingRequest request;
    const std::string threads = "threads=" + std::to_string(trial.threads);
    request.settings = Settings::parse(trial.settings.empty() ? threads : trial.settings + ":" + threads,
                                       *findCodec(trial.type));
    request.width = trial.width;
    request.height = trial.height;
    request.quality = trial.quality;
    request.hasAlpha = trial.alpha;
    return planEncoding(request);
}

std::vector<float> randomPixels(int width, int height) {
    std::mt19937 random(5);
    std::uniform_real_distribution<float> nominal(0.0F, 1.0F);
    std::vector<float> pixels(static_cast<std::size_t>(width) * height * 4);
    for (float& value : pixels)
        value = nominal(random);
    return pixels;
}

FramePointer converted(const EncodingPlan& plan, const std::vector<float>& pixels) {
    PicturePool pool(plan);
    FramePointer frame = pool.take();
    PictureConverter(plan).convert(pixels.data(), *frame);
    return frame;
}

/// Sample of component `c` (R, G, B, alpha or Y, Cb, Cr, alpha) at its own column and row.
int sample(const AVFrame& frame, int c, int x, int y) {
    std::uint16_t value = 0;
    av_read_image_line(&value, const_cast<const std::uint8_t**>(frame.data), frame.linesize,
                       av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format)), x, y, c, 1, 0);
    return value;
}

int rounded(double value, double highest) {
    return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * highest));
}

void PrintTo(const Trial& trial, std::ostream* stream) {
    *stream << trial.type << " " << trial.settings << " " << trial.width << " x " << trial.height;
}

class RgbPictures : public testing::TestWithParam<Trial> {};

TEST_P(RgbPictures, EverySampleIsTheFloatRoundedToItsDepth) {
    const EncodingPlan plan = planOf(GetParam());
    const auto pixels = randomPixels(plan.width, plan.height);

    const FramePointer frame = converted(plan, pixels);

    const bool argb = plan.picture->order == SampleOrder::ArgbBigEndian16;
    const double highest = (1 << plan.picture->bits) - 1;
    for (int y = 0; y < plan.height; ++y)
        for (int x = 0; x < plan.width; ++x)
            for (int c = 0; c < (plan.picture->alpha ? 4 : 3); ++c) {
                const float value = pixels[4 * (static_cast<std::size_t>(y) * plan.width + x) + c];
                const int expected =
                    c == 3 && !GetParam().alpha ? static_cast<int>(highest) : rounded(value, highest);
                ASSERT_EQ(sample(*frame, argb ? (c + 1) % 4 : c, x, y), expected)
                    << c << " " << x << " " << y;
            }
}

INSTANTIATE_TEST_SUITE_P(
    EveryLayout, RgbPictures,
    testing::Values(Trial{"rle ", ""}, Trial{"rle ", "", 33, 7, true}, Trial{"png ", "bitdepth=8"},
                    Trial{"png ", "bitdepth=8", 33, 7, true}, Trial{"png ", ""},
                    Trial{"png ", "", 33, 7, true}, Trial{"tiff", ""}, Trial{"tiff", "", 33, 7, true},
                    Trial{"b64a", "", 33, 7, true}, Trial{"b64a", ""}, Trial{"r210", "", 33, 7},
                    Trial{"CFHD", "", 64, 40}, Trial{"CFHD", "", 64, 40, true},
                    Trial{"avc1", "", 33, 7, false, 5}, Trial{"hvc1", "", 33, 17, false, 5},
                    Trial{"Hap1", ""}, Trial{"Hap5", "", 64, 48, true}));

/// How much of red and blue the light of a matrix holds (ITU-T H.273).
std::pair<double, double> lightOf(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_SMPTE170M:
            return {0.299, 0.114};
        case AVCOL_SPC_BT2020_NCL:
            return {0.2627, 0.0593};
        default:
            return {0.2126, 0.0722};
    }
}

/// Y, Cb, Cr of a pixel by the formulas of H.273, as samples with their fraction.
std::array<double, 3> ycbcr(const float* pixel, const EncodingPlan& plan) {
    const auto [red, blue] = lightOf(plan.colour.matrix);
    const double light = red * pixel[0] + (1 - red - blue) * pixel[1] + blue * pixel[2];
    const double cb = (pixel[2] - light) / (2 * (1 - blue));
    const double cr = (pixel[0] - light) / (2 * (1 - red));
    const double unit = (1 << plan.picture->bits) / 256.0;
    if (plan.colour.range == AVCOL_RANGE_JPEG)
        return {light * (256 * unit - 1), cb * (256 * unit - 1) + 128 * unit,
                cr * (256 * unit - 1) + 128 * unit};
    return {(16 + 219 * light) * unit, (128 + 224 * cb) * unit, (128 + 224 * cr) * unit};
}

class YcbcrPictures : public testing::TestWithParam<Trial> {};

TEST_P(YcbcrPictures, SamplesFollowTheMatrixThatIsTagged) {
    const EncodingPlan plan = planOf(GetParam());
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(plan.picture->format);
    // Blocks of one colour, so that the chroma filter's neighbours are the same; their middles are looked at.
    constexpr int block = 24;
    std::vector<float> pixels(static_cast<std::size_t>(plan.width) * plan.height * 4);
    const auto colours = randomPixels(plan.width, plan.height);
    const auto colourAt = [&](int x, int y) { return &colours[4 * (y / block * 64 + x / block)]; };
    for (int y = 0; y < plan.height; ++y)
        for (int x = 0; x < plan.width; ++x)
            std::copy_n(colourAt(x, y), 4, &pixels[4 * (static_cast<std::size_t>(y) * plan.width + x)]);

    const FramePointer frame = converted(plan, pixels);

    for (int y = block / 2; y < plan.height; y += block)
        for (int x = block / 2; x < plan.width; x += block) {
            const auto expected = ycbcr(colourAt(x, y), plan);
            EXPECT_NEAR(sample(*frame, 0, x, y), expected[0], 0.501);
            EXPECT_NEAR(sample(*frame, 1, x >> format.log2_chroma_w, y >> format.log2_chroma_h), expected[1],
                        0.501);
            EXPECT_NEAR(sample(*frame, 2, x >> format.log2_chroma_w, y >> format.log2_chroma_h), expected[2],
                        0.501);
        }
}

INSTANTIATE_TEST_SUITE_P(
    EveryLayout, YcbcrPictures,
    testing::Values(Trial{"mjpa", ""}, Trial{"mjpa", "", 63, 47}, Trial{"2vuy", ""},
                    Trial{"2vuy", "", 63, 47}, Trial{"v210", "", 66, 50}, Trial{"v308", ""},
                    Trial{"v408", "", 63, 47, true}, Trial{"v410", ""}, Trial{"v410", "colour=bt601"},
                    Trial{"v410", "colour=pq"}, Trial{"v410", "matrix=smpte170m", 64, 130},
                    Trial{"apch", "colour=bt2020"}, Trial{"ap4h", "", 64, 48, true}, Trial{"avc1", ""},
                    Trial{"avc1", "range=pc"}, Trial{"avc1", "fields=tff"},
                    Trial{"avc1", "profile=high422:bitdepth=10"}, Trial{"hvc1", "bitdepth=12"},
                    Trial{"mp4v", "", 63, 47}, Trial{"SVQ1", "", 60, 44}, Trial{"dvc ", "", 720, 480},
                    Trial{"dvcp", "", 720, 576}));

TEST(PictureConverter, AlphaIsAPlaneOfItsOwnAndExact) {
    const EncodingPlan plan = planOf({"ap4h", "", 66, 50, true});
    const auto pixels = randomPixels(plan.width, plan.height);
    const FramePointer frame = converted(plan, pixels);
    for (int y = 0; y < plan.height; ++y)
        for (int x = 0; x < plan.width; ++x)
            ASSERT_EQ(sample(*frame, 3, x, y), rounded(pixels[4 * (y * plan.width + x) + 3], 1023));
}

TEST(PictureConverter, OpaqueWhereTheFramesHaveNoAlpha) {
    const EncodingPlan plan = planOf({"v408", "", 66, 50, false});
    const FramePointer frame = converted(plan, randomPixels(plan.width, plan.height));
    for (int y = 0; y < plan.height; ++y)
        for (int x = 0; x < plan.width; ++x)
            ASSERT_EQ(sample(*frame, 3, x, y), 255);
}

TEST(PictureConverter, DroppedAlphaLeavesColoursUntouched) {
    const auto pixels = randomPixels(64, 48);
    const FramePointer with = converted(planOf({"png ", "alpha=premultiplied", 64, 48, true}), pixels);
    const FramePointer without = converted(planOf({"png ", "alpha=none", 64, 48, true}), pixels);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x)
            for (int c = 0; c < 3; ++c)
                ASSERT_EQ(sample(*with, c, x, y), sample(*without, c, x, y));
}

TEST(PictureConverter, StraightAlphaIsDividedBeforeRounding) {
    const auto pixels = randomPixels(64, 48);
    for (const char* type : {"png ", "ap4h"}) {
        const EncodingPlan straight = planOf({type, "alpha=straight", 64, 48, true});
        std::vector<float> divided = pixels;
        divideAlphaOut(divided.data(), divided.data(), divided.size() / 4, Curve::Srgb);
        const FramePointer one = converted(straight, pixels);
        const FramePointer other = converted(planOf({type, "", 64, 48, true}), divided);
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x)
                for (int c = 0; c < 4; ++c)
                    ASSERT_EQ(sample(*one, c, x, y), sample(*other, c, x, y)) << type;
    }
}

/// Whatever the tags say, the curve that is named is the one that is taken off.
TEST(PictureConverter, StraightAlphaIsDividedInTheLightOfTheNamedCurve) {
    const auto pixels = randomPixels(64, 48);
    std::vector<float> divided = pixels;
    divideAlphaOut(divided.data(), divided.data(), divided.size() / 4, Curve::Cineon);
    const FramePointer one =
        converted(planOf({"png ", "alpha=straight:colour=pq:curve=cineon", 64, 48, true}), pixels);
    const FramePointer other = converted(planOf({"png ", "", 64, 48, true}), divided);
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x)
            for (int c = 0; c < 4; ++c)
                ASSERT_EQ(sample(*one, c, x, y), sample(*other, c, x, y));
}

/// Strips and threads must not show.
TEST(PictureConverter, AnyNumberOfThreadsGivesTheSamePicture) {
    for (const char* type : {"rle ", "png ", "apch", "v410", "v408", "2vuy", "avc1", "smc "}) {
        const Trial trial = {type, "", 66, 202, true, 4, 1};
        const auto pixels = randomPixels(trial.width, trial.height);
        const FramePointer alone = converted(planOf(trial), pixels);
        Trial shared = trial;
        shared.threads = 3;
        const FramePointer together = converted(planOf(shared), pixels);
        for (int c = 0; c < av_pix_fmt_count_planes(static_cast<AVPixelFormat>(alone->format)); ++c) {
            const auto& format = *av_pix_fmt_desc_get(static_cast<AVPixelFormat>(alone->format));
            const int bytes =
                av_image_get_linesize(static_cast<AVPixelFormat>(alone->format), trial.width, c);
            const int rows =
                c == 1 || c == 2 ? AV_CEIL_RSHIFT(trial.height, format.log2_chroma_h) : trial.height;
            for (int y = 0; y < rows; ++y)
                ASSERT_TRUE(std::equal(alone->data[c] + y * alone->linesize[c],
                                       alone->data[c] + y * alone->linesize[c] + bytes,
                                       together->data[c] + y * together->linesize[c]))
                    << type << " plane " << c << " row " << y;
        }
    }
}

TEST(PictureConverter, ValuesOutsideAreLimitedAtTheTargetsRangeOnly) {
    const EncodingPlan plan = planOf({"v410", "", 64, 48});
    auto pixels = randomPixels(64, 48);
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        pixels[i] = pixels[i + 1] = pixels[i + 2] = 1.05F;
    FramePointer frame = converted(plan, pixels);
    // Video range has head-room: 5 % above white is not white.
    EXPECT_EQ(sample(*frame, 0, 5, 5), std::lround(64 + 876 * 1.05));
    for (float& value : pixels)
        value = std::numeric_limits<float>::infinity();
    frame = converted(plan, pixels);
    EXPECT_GE(sample(*frame, 0, 5, 5), 1019);
    for (float& value : pixels)
        value = -std::numeric_limits<float>::infinity();
    frame = converted(plan, pixels);
    EXPECT_LE(sample(*frame, 0, 5, 5), 4);
}

// Limiting luma alone would leave the chroma of a colour that nobody sees: a white highlight would turn
// yellow.
TEST(PictureConverter, TooBrightColoursKeepTheHueThatIsSeen) {
    const EncodingPlan plan = planOf({"jpeg", "", 64, 48});
    auto pixels = randomPixels(64, 48);
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        pixels[i] = 1.8F;
        pixels[i + 1] = 1.5F;
        pixels[i + 2] = 1.0F;
    }

    const FramePointer frame = converted(plan, pixels);

    EXPECT_EQ(sample(*frame, 0, 20, 20), 255);
    EXPECT_EQ(sample(*frame, 1, 10, 20), 128);
    EXPECT_EQ(sample(*frame, 2, 10, 20), 128);
}

TEST(PictureConverter, WhatIsNoNumberIsBlack) {
    for (const char* type : {"v410", "rle ", "avc1", "smc "}) {
        const EncodingPlan plan = planOf({type, ""});
        const std::vector<float> nothing(64 * 48 * 4, std::nanf(""));
        const std::vector<float> black(64 * 48 * 4, 0.0F);
        const FramePointer one = converted(plan, nothing);
        const FramePointer other = converted(plan, black);
        for (int y = 0; y < 48; ++y)
            for (int x = 0; x < 64; ++x)
                ASSERT_EQ(sample(*one, 0, x, y), sample(*other, 0, x, y)) << type;
    }
}

TEST(PictureConverter, OneByOnePicture) {
    for (const char* type : {"rle ", "png ", "mjpa", "2vuy", "v408"}) {
        const EncodingPlan plan = planOf({type, "", 1, 1, true});
        const FramePointer frame = converted(plan, {1.0F, 1.0F, 1.0F, 1.0F});
        EXPECT_GE(sample(*frame, 0, 0, 0), 235) << type;
    }
}

/// Between two rows of one field lies a row of the other, whose colour must not bleed in.
TEST(PictureConverter, ChromaOfInterlacedPicturesStaysWithinItsField) {
    std::vector<float> pixels;
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 64; ++x)
            for (const float value : {y % 2 ? 0.0F : 1.0F, 0.0F, y % 2 ? 1.0F : 0.0F, 1.0F})
                pixels.push_back(value);
    const FramePointer frame = converted(planOf({"avc1", "fields=tff"}), pixels);
    EXPECT_EQ(sample(*frame, 2, 10, 10), 240);  // the red field's Cr
    EXPECT_EQ(sample(*frame, 1, 10, 11), 240);  // the blue field's Cb
}

}  // namespace
}  // namespace Morvane::Worker
