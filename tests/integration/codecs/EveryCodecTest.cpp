#include "tests/integration/codecs/CodecTrial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace Morvane::Worker::Trial {
namespace {

/// The classic codecs of few bits cannot come near a photograph; all others reach 40 dB at Max.
double requiredAtMax(const Codec& codec) {
    static const std::map<std::string, double> weak = {{"cvid", 36}, {"smc ", 28}, {"SVQ1", 39.5}};
    const auto found = weak.find(codec.type);
    return found == weak.end() ? 40 : found->second;
}

std::vector<std::string> types() {
    std::vector<std::string> all;
    for (const Codec& codec : codecTable())
        all.emplace_back(codec.type);
    return all;
}

struct Size {
    int width, height;
};

Size sizeFor(const Codec& codec) {
    if (codec.sizes.only.empty())
        return {256, 144};
    const auto smallest =
        std::min_element(codec.sizes.only.begin(), codec.sizes.only.end(),
                         [](const auto& one, const auto& other) { return one.width < other.width; });
    return {smallest->width, smallest->height};
}

EncodingRequest requestFor(const Codec& codec, const std::string& settings = "") {
    EncodingRequest request;
    request.settings = Settings::parse(settings, codec);
    request.width = sizeFor(codec).width;
    request.height = sizeFor(codec).height;
    return request;
}

std::vector<Pixels> picturesFor(const EncodingRequest& request, int count) {
    std::vector<Pixels> pictures;
    for (int frame = 0; frame < count; ++frame)
        pictures.push_back(naturalPicture(request.width, request.height, frame, request.hasAlpha));
    return pictures;
}

class EveryCodec : public testing::TestWithParam<std::string> {
protected:
    const Codec& codec = *findCodec(GetParam());
};

/// Which samples a codec keeps that stores alpha first.
Components inDecodersOrder(const EncodingPlan& plan, const AVFrame& frame) {
    Components all = components(frame);
    if (plan.picture->order == SampleOrder::ArgbBigEndian16)
        std::rotate(all.begin(), all.begin() + 1, all.end());
    return all;
}

void expectExact(const Encoded& encoded, const std::vector<Pixels>& pictures) {
    const auto frames = decode(encoded);
    ASSERT_EQ(frames.size(), pictures.size());
    for (std::size_t i = 0; i < frames.size(); ++i)
        EXPECT_EQ(components(*frames[i]),
                  inDecodersOrder(encoded.plan, *converted(encoded.plan, pictures[i])))
            << encoded.plan.codec->name << " frame " << i;
}

double meanPsnr(const Encoded& encoded, const std::vector<Pixels>& pictures) {
    const auto frames = decode(encoded);
    EXPECT_EQ(frames.size(), pictures.size());
    double sum = 0;
    for (std::size_t i = 0; i < frames.size(); ++i)
        sum += psnr(pictures[i], rgbOf(*frames[i], encoded.plan.colour));
    return sum / static_cast<double>(frames.size());
}

TEST_P(EveryCodec, LosslessGivesTheSamplesBackBitForBit) {
    if (codec.lossless == Lossless::Never)
        GTEST_SKIP() << "never lossless";
    for (const bool alpha : {false, codec.hasAlpha()}) {
        for (const int bits : {8, 10, 12, 16}) {
            if (std::none_of(codec.pictures.begin(), codec.pictures.end(),
                             [&](const CodecPicture& picture) { return picture.bits == bits; }))
                continue;
            EncodingRequest request = requestFor(codec, "bitdepth=" + std::to_string(bits));
            request.hasAlpha = alpha;
            request.quality = 5;
            const auto pictures = picturesFor(request, 3);
            expectExact(encode(planEncoding(request), pictures), pictures);
        }
    }
}

TEST_P(EveryCodec, EachQualityIsNoWorseThanTheOneBelow) {
    EncodingRequest request = requestFor(codec);
    const auto pictures = picturesFor(request, 3);
    double below = 0;
    for (request.quality = 0; request.quality < 6; ++request.quality) {
        if (!codec.hasQuality() && request.quality != 4)
            continue;
        const double reached = meanPsnr(encode(planEncoding(request), pictures), pictures);
        EXPECT_GE(reached, below - 0.001) << "quality " << request.quality;
        EXPECT_GE(reached, request.quality == 4 ? requiredAtMax(codec) : 0);
        below = reached;
    }
}

/// But for formats that only have a few data rates, every step up to Max can be seen.
TEST_P(EveryCodec, EachQualityUpToMaxIsVisiblyBetter) {
    if (!codec.hasQuality() || GetParam() == "AVdn")
        GTEST_SKIP() << "quality makes no difference, or not at each step";
    EncodingRequest request = requestFor(codec);
    const auto pictures = picturesFor(request, 2);
    double below = 0;
    for (request.quality = 0; request.quality < 5; ++request.quality) {
        const double reached = meanPsnr(encode(planEncoding(request), pictures), pictures);
        EXPECT_GE(reached, below + 0.5) << "quality " << request.quality;
        below = reached;
    }
}

TEST_P(EveryCodec, ColourBarsKeepTheirColours) {
    const EncodingRequest request = requestFor(codec);
    const Pixels bars = colourBars(request.width, request.height);
    const Encoded encoded = encode(planEncoding(request), {bars});
    const auto frames = decode(encoded);
    ASSERT_EQ(frames.size(), 1U);
    const Pixels decoded = rgbOf(*frames[0], encoded.plan.colour);
    for (int bar = 0; bar < 8; ++bar) {
        const std::size_t middle = 4 * (static_cast<std::size_t>(request.height / 2) * request.width +
                                        (2 * bar + 1) * request.width / 16);
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(decoded[middle + channel], bars[middle + channel],
                        GetParam() == "smc " ? 0.06 : 0.025)
                << "bar " << bar << " channel " << channel;
    }
}

TEST_P(EveryCodec, AlphaIsKept) {
    if (!codec.hasAlpha())
        GTEST_SKIP() << "has no alpha";
    EncodingRequest request = requestFor(codec);
    request.hasAlpha = true;
    const auto pictures = picturesFor(request, 1);
    const Encoded encoded = encode(planEncoding(request), pictures);
    EXPECT_EQ(encoded.parameters->bits_per_coded_sample, 32);
    const auto frames = decode(encoded);
    ASSERT_EQ(frames.size(), 1U);
    const Pixels decoded = rgbOf(*frames[0], encoded.plan.colour);
    // Exact to the depth of the picture or, of two of them, of the decoder; Hap's and CineForm's alpha is
    // lossy.
    const bool lossy = GetParam() == "Hap5" || GetParam() == "CFHD" || GetParam() == "mjp2";
    const double allowed = lossy ? 0.04 : 1.01 / (1 << encoded.plan.picture->bits);
    for (std::size_t i = 3; i < decoded.size(); i += 4)
        ASSERT_NEAR(decoded[i], pictures[0][i], allowed);
}

/// Of a picture whose frames have no alpha every pixel must be opaque, not nearly so.
TEST_P(EveryCodec, FramesWithoutAlphaAreOpaque) {
    EncodingRequest request = requestFor(codec);
    const auto pictures = picturesFor(request, 1);
    const Encoded encoded = encode(planEncoding(request), pictures);
    for (const auto& frame : decode(encoded)) {
        const Pixels decoded = rgbOf(*frame, encoded.plan.colour);
        for (std::size_t i = 3; i < decoded.size(); i += 4)
            ASSERT_EQ(decoded[i], 1.0F);
    }
}

TEST_P(EveryCodec, BitstreamSaysTheSameColoursAsTheTrack) {
    const EncodingRequest request = requestFor(codec);
    const Encoded encoded = encode(planEncoding(request), picturesFor(request, 1));
    const auto frames = decode(encoded);
    ASSERT_EQ(frames.size(), 1U);
    EXPECT_EQ(frames[0]->color_primaries, encoded.plan.colour.primaries);
    EXPECT_EQ(frames[0]->color_trc, encoded.plan.colour.transfer);
    EXPECT_EQ(frames[0]->color_range, encoded.plan.colour.range);
    // JPEG's own name for the matrix is BT.470 BG's, which is the same one.
    const AVColorSpace matrix =
        frames[0]->colorspace == AVCOL_SPC_BT470BG ? AVCOL_SPC_SMPTE170M : frames[0]->colorspace;
    EXPECT_EQ(matrix, encoded.plan.colour.matrix);
}

INSTANTIATE_TEST_SUITE_P(Codecs, EveryCodec, testing::ValuesIn(types()), [](const auto& type) {
    std::string name = type.param;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

/// Codecs that take any size do so for the smallest and for odd ones.
class AnySize : public testing::TestWithParam<const char*> {};

TEST_P(AnySize, OddAndSmallPicturesComeBack) {
    const Codec& codec = *findCodec(GetParam());
    for (const Size size : {Size{1, 1}, Size{2, 1}, Size{1, 3}, Size{33, 17}, Size{35, 66}}) {
        EncodingRequest request = requestFor(codec);
        request.width = size.width;
        request.height = size.height;
        request.quality = 5;
        const auto pictures = picturesFor(request, 2);
        const Encoded encoded = encode(planEncoding(request), pictures);
        if (codec.lossless == Lossless::Always)
            expectExact(encoded, pictures);
        else
            EXPECT_GE(meanPsnr(encoded, pictures), 32) << size.width << " x " << size.height;
    }
}

INSTANTIATE_TEST_SUITE_P(Codecs, AnySize,
                         testing::Values("rle ", "mjpa", "mp4v", "raw ", "jpeg", "png ", "tiff", "2vuy",
                                         "v408", "b48r", "b64a", "r210"));

/// Codecs with a rule take what it allows, down to the smallest.
TEST(SizeRules, SmallestAllowedSizesComeBack) {
    for (const Codec& codec : codecTable()) {
        if (!codec.sizes.only.empty())
            continue;
        const auto smallest = [](int minimum, int multiple) {
            return (minimum + multiple - 1) / multiple * multiple;
        };
        EncodingRequest request = requestFor(codec);
        const CodecPicture& picture = codec.pictures[0];
        request.width = smallest(codec.sizes.minimumWidth,
                                 std::max(codec.sizes.multipleOfWidth, picture.multipleOfWidth));
        request.height = smallest(codec.sizes.minimumHeight,
                                  std::max(codec.sizes.multipleOfHeight, picture.multipleOfHeight));
        const auto pictures = picturesFor(request, 1);
        Encoded encoded;
        ASSERT_NO_THROW(encoded = encode(planEncoding(request), pictures))
            << codec.name << " " << request.width << " x " << request.height;
        EXPECT_EQ(decode(encoded).size(), 1U) << codec.name;
    }
}

}  // namespace
}  // namespace Morvane::Worker::Trial
