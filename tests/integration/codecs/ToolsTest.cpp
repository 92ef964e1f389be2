#include "tests/integration/codecs/CodecTrial.h"
#include "tests/integration/codecs/Tool.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <tuple>

namespace Morvane::Worker::Trial {
namespace {

using testing::HasSubstr;

Encoded small(const char* type, const std::string& settings, bool alpha, int quality = 4) {
    const Codec& codec = *findCodec(type);
    EncodingRequest request;
    request.settings = Settings::parse(settings, codec);
    request.width = codec.sizes.only.empty() ? 256 : codec.sizes.only[0].width;
    request.height = codec.sizes.only.empty() ? 144 : codec.sizes.only[0].height;
    request.hasAlpha = alpha;
    request.quality = quality;
    std::vector<Pixels> pictures;
    for (int frame = 0; frame < 2; ++frame)
        pictures.push_back(naturalPicture(request.width, request.height, frame, alpha));
    return encode(planEncoding(request), pictures);
}

class FfmpegTool : public testing::TestWithParam<std::string> {};

/// The tool, reading the movie alone, must see what libavcodec sees of the packets: description, type and
/// extradata are enough.
TEST_P(FfmpegTool, DecodesTheMovieToTheSamePictures) {
    const TestFolder folder;
    const Encoded encoded = small(GetParam().c_str(), "", true);
    writeMovie(encoded, folder.file("a.mov"));

    const auto frames = decode(encoded);
    const auto format = static_cast<AVPixelFormat>(frames.at(0)->format);
    const bool palette = format == AV_PIX_FMT_PAL8;
    const std::string read = outputOf("ffmpeg -v error -i '" + folder.file("a.mov") +
                                      "' -fps_mode passthrough -f rawvideo -pix_fmt " +
                                      (palette ? "rgb24" : av_get_pix_fmt_name(format)) + " -");

    std::string expected;
    for (const auto& frame : frames) {
        if (palette) {
            const Components rgb = components(*frame);
            for (std::size_t i = 0; i < rgb[0].size(); ++i)
                for (const auto& plane : rgb)
                    expected.push_back(static_cast<char>(plane[i]));
        } else {
            expected += packedBytes(*frame);
        }
    }
    ASSERT_EQ(read.size(), expected.size());
    EXPECT_TRUE(read == expected);
}

TEST_P(FfmpegTool, ReportsTypeSizeAndColours) {
    const TestFolder folder;
    const Encoded encoded = small(GetParam().c_str(), "", false);
    writeMovie(encoded, folder.file("a.mov"));
    const std::string report = outputOf("ffprobe -v error -show_streams '" + folder.file("a.mov") + "'");
    // The tool writes four-character types with their blanks.
    EXPECT_THAT(report, HasSubstr("codec_tag_string=" + GetParam()));
    EXPECT_THAT(report, HasSubstr("width=" + std::to_string(encoded.plan.width)));
    EXPECT_THAT(report, HasSubstr("color_primaries=bt709"));
    EXPECT_THAT(report, HasSubstr("color_transfer=bt709"));
    EXPECT_THAT(report, HasSubstr("nb_frames=2"));
}

std::vector<std::string> types() {
    std::vector<std::string> all;
    for (const Codec& codec : codecTable())
        all.emplace_back(codec.type);
    return all;
}

INSTANTIATE_TEST_SUITE_P(Codecs, FfmpegTool, testing::ValuesIn(types()), [](const auto& type) {
    std::string name = type.param;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

struct Bars {
    const char* type;
    const char* settings;
};

class StatedMatrix : public testing::TestWithParam<Bars> {};

/// Whatever matrix and range a movie states, a program that believes the statement must get the colours.
TEST_P(StatedMatrix, GivesTheColoursBackInTheTool) {
    const TestFolder folder;
    EncodingRequest request;
    request.settings = Settings::parse(GetParam().settings, *findCodec(GetParam().type));
    request.width = 256;
    request.height = 144;
    request.quality = 4;
    const Pixels bars = colourBars(request.width, request.height);
    const Encoded encoded = encode(planEncoding(request), {bars});
    writeMovie(encoded, folder.file("a.mov"));
    const std::string report = outputOf("ffprobe -v error -show_entries stream=color_space,color_range '" +
                                        folder.file("a.mov") + "'");
    const bool full = encoded.plan.colour.range == AVCOL_RANGE_JPEG;
    const std::string matrix = av_color_space_name(encoded.plan.colour.matrix);
    EXPECT_THAT(report,
                HasSubstr("color_space=" + (GetParam().type == std::string("mjpa") ? "bt470bg" : matrix)));

    const std::string rgb =
        outputOf("ffmpeg -v error -i '" + folder.file("a.mov") +
                 "' -vf zscale=matrix=gbr:range=full,format=gbrp -f rawvideo -pix_fmt rgb24 -");

    ASSERT_EQ(rgb.size(), 3U * 256 * 144);
    for (int bar = 0; bar < 8; ++bar)
        for (int channel = 0; channel < 3; ++channel) {
            const int pixel = 72 * 256 + 32 * bar + 16;
            EXPECT_NEAR(static_cast<std::uint8_t>(rgb[3 * pixel + channel]) / 255.0,
                        bars[4 * pixel + channel], 0.025)
                << full << " bar " << bar << " channel " << channel;
        }
}

INSTANTIATE_TEST_SUITE_P(Movies, StatedMatrix,
                         testing::Values(Bars{"mjpa", ""}, Bars{"v210", ""}, Bars{"v210", "colour=bt601"},
                                         Bars{"v210", "colour=bt2020"}, Bars{"apch", ""},
                                         Bars{"apch", "colour=bt601"}, Bars{"apch", "colour=pq"},
                                         Bars{"ap4h", "colour=hlg"}, Bars{"avc1", ""},
                                         Bars{"avc1", "range=pc"}, Bars{"avc1", "colour=bt601"},
                                         Bars{"avc1", "profile=high422:colour=pq"},
                                         Bars{"hvc1", "colour=hlg"}, Bars{"hvc1", "bitdepth=10:range=pc"},
                                         Bars{"mp4v", ""}, Bars{"2vuy", "colour=bt601"}, Bars{"AVdh", ""},
                                         Bars{"CFHD", "bitdepth=10"}));

class ColourPreset : public testing::TestWithParam<std::tuple<const char*, const char*>> {};

/// No preset may shift what is seen: two programs that are not ours get the bars' colours back. Neither
/// converts between primaries or transfers here, so only matrix and range can go wrong. (Of uncompressed
/// pictures GStreamer guesses the matrix from their height, whatever the movie says.)
TEST_P(ColourPreset, GivesTheColoursBackInEveryReader) {
    const auto& [type, preset] = GetParam();
    const TestFolder folder;
    EncodingRequest request;
    request.settings = Settings::parse(std::string("colour=") + preset, *findCodec(type));
    request.width = 256;
    request.height = 144;
    const Pixels bars = colourBars(request.width, request.height);
    writeMovie(encode(planEncoding(request), {bars}), folder.file("a.mov"));

    const std::string byFfmpeg =
        outputOf("ffmpeg -v error -i '" + folder.file("a.mov") +
                 "' -vf zscale=matrix=gbr:range=full,format=gbrp -f rawvideo -pix_fmt rgb24 -");
    outputOf("gst-launch-1.0 -q filesrc location='" + folder.file("a.mov") +
             "' ! decodebin ! videoconvert ! video/x-raw,format=RGB ! filesink location='" +
             folder.file("a.rgb") + "'");
    const std::string byGstreamer = outputOf("cat '" + folder.file("a.rgb") + "'");

    for (const auto& [reader, rgb] : {std::pair("ffmpeg", byFfmpeg), std::pair("GStreamer", byGstreamer)}) {
        ASSERT_EQ(rgb.size(), 3U * 256 * 144);
        for (int bar = 0; bar < 8; ++bar)
            for (int channel = 0; channel < 3; ++channel) {
                const int pixel = 72 * 256 + 32 * bar + 16;
                EXPECT_NEAR(static_cast<std::uint8_t>(rgb[3 * pixel + channel]) / 255.0,
                            bars[4 * pixel + channel], 0.025)
                    << reader << " bar " << bar << " channel " << channel;
            }
    }
}

INSTANTIATE_TEST_SUITE_P(Movies, ColourPreset,
                         testing::Combine(testing::Values("apch", "ap4h", "avc1"),
                                          testing::Values("bt709", "srgb", "bt601", "p3-d65", "bt2020", "pq",
                                                          "hlg")),
                         [](const auto& preset) {
                             std::string name =
                                 std::string(std::get<0>(preset.param)) + "_" + std::get<1>(preset.param);
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

TEST(FieldOrder, IsStatedInTheMovie) {
    const TestFolder folder;
    for (const auto& [setting, stated] : {std::pair("fields=tff", "tb"), std::pair("fields=bff", "bt")})
        for (const char* type : {"apch", "v210", "2vuy"}) {
            writeMovie(small(type, setting, false), folder.file("a.mov"));
            EXPECT_THAT(
                outputOf("ffprobe -v error -show_entries stream=field_order '" + folder.file("a.mov") + "'"),
                HasSubstr(std::string("field_order=") + stated))
                << type;
        }
}

/// Streams that state it themselves must say the same.
TEST(FieldOrder, IsStatedInTheStream) {
    for (const auto& [setting, topFirst] : {std::pair("fields=tff", 1), std::pair("fields=bff", 0)})
        for (const char* type : {"apch", "avc1"})
            for (const auto& frame : decode(small(type, setting, false))) {
                EXPECT_TRUE(frame->interlaced_frame) << type;
                EXPECT_EQ(frame->top_field_first, topFirst) << type;
            }
}

}  // namespace
}  // namespace Morvane::Worker::Trial
