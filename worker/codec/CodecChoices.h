#pragma once

#include "worker/codec/CodecTable.h"

/// What the rows of the codec table choose from: kinds of pictures, profiles and options. Only the table
/// includes it.
namespace Morvane::Worker::CodecChoices {

// Within a list the first picture that fits is taken, so the usual one stands first.
inline constexpr CodecPicture rgb8[] = {{AV_PIX_FMT_RGB24, "rgb", 8}};
inline constexpr CodecPicture argb8[] = {{AV_PIX_FMT_RGB24, "rgb", 8}, {AV_PIX_FMT_ARGB, "rgb", 8, true}};
inline constexpr CodecPicture rgba8[] = {{AV_PIX_FMT_RGBA, "rgb", 8, true}};
/// The encoder wants four channels although the codec keeps three.
inline constexpr CodecPicture rgbaOpaque8[] = {{AV_PIX_FMT_RGBA, "rgb", 8}};
inline constexpr CodecPicture rgb16[] = {{AV_PIX_FMT_RGB48BE, "rgb", 16}};
inline constexpr CodecPicture argb16[] = {{.format = AV_PIX_FMT_RGBA64BE,
                                           .chroma = "rgb",
                                           .bits = 16,
                                           .alpha = true,
                                           .order = SampleOrder::ArgbBigEndian16}};
inline constexpr CodecPicture gbr10[] = {{AV_PIX_FMT_GBRP10, "rgb", 10}};
inline constexpr CodecPicture palette8[] = {
    {.format = AV_PIX_FMT_PAL8, .chroma = "palette", .bits = 8, .order = SampleOrder::Palette}};
inline constexpr CodecPicture packed422Bits8[] = {{AV_PIX_FMT_UYVY422, "422", 8}};
inline constexpr CodecPicture ycbcr410Bits8[] = {{AV_PIX_FMT_YUV410P, "410", 8}};
inline constexpr CodecPicture ycbcr420Bits8[] = {{AV_PIX_FMT_YUV420P, "420", 8}};
inline constexpr CodecPicture ycbcr422Bits8[] = {{AV_PIX_FMT_YUV422P, "422", 8}};
inline constexpr CodecPicture ycbcr422Bits10[] = {{AV_PIX_FMT_YUV422P10, "422", 10}};
inline constexpr CodecPicture ycbcr444Bits8[] = {{AV_PIX_FMT_YUV444P, "444", 8}};
inline constexpr CodecPicture ycbcr444Bits10[] = {{AV_PIX_FMT_YUV444P10, "444", 10}};
inline constexpr CodecPicture ycbcr444Alpha8[] = {{AV_PIX_FMT_YUVA444P, "444", 8, true}};
inline constexpr CodecPicture ycbcr444Alpha10[] = {{AV_PIX_FMT_YUV444P10, "444", 10},
                                                   {AV_PIX_FMT_YUVA444P10, "444", 10, true}};
inline constexpr CodecPicture dv411[] = {{AV_PIX_FMT_YUV411P, "411", 8}};
inline constexpr CodecPicture dv420[] = {{AV_PIX_FMT_YUV420P, "420", 8}};
inline constexpr CodecPicture dv422[] = {{AV_PIX_FMT_YUV422P, "422", 8}};

/// 4:2:2 at an odd size has sampling factors that some readers decode with wrong chroma; 4:2:0 is right in
/// all.
inline constexpr CodecPicture jpegPictures[] = {
    {.format = AV_PIX_FMT_YUVJ422P, .chroma = "422", .bits = 8, .multipleOfWidth = 2, .multipleOfHeight = 2},
    {.format = AV_PIX_FMT_YUVJ420P, .chroma = "420", .bits = 8}};

inline constexpr CodecPicture pngPictures[] = {{AV_PIX_FMT_RGB48BE, "rgb", 16},
                                               {AV_PIX_FMT_RGBA64BE, "rgb", 16, true},
                                               {AV_PIX_FMT_RGB24, "rgb", 8},
                                               {AV_PIX_FMT_RGBA, "rgb", 8, true}};
inline constexpr CodecPicture tiffPictures[] = {{AV_PIX_FMT_RGB48LE, "rgb", 16},
                                                {AV_PIX_FMT_RGBA64LE, "rgb", 16, true},
                                                {AV_PIX_FMT_RGB24, "rgb", 8},
                                                {AV_PIX_FMT_RGBA, "rgb", 8, true}};
inline constexpr CodecPicture jpeg2000Pictures[] = {{AV_PIX_FMT_RGB48LE, "rgb", 16},
                                                    {AV_PIX_FMT_RGBA64LE, "rgb", 16, true},
                                                    {AV_PIX_FMT_RGB24, "rgb", 8},
                                                    {AV_PIX_FMT_RGBA, "rgb", 8, true}};
inline constexpr CodecPicture cineFormPictures[] = {
    {AV_PIX_FMT_GBRP12, "rgb", 12},
    {AV_PIX_FMT_GBRAP12, "rgb", 12, true},
    {.format = AV_PIX_FMT_YUV422P10, .chroma = "422", .bits = 10, .multipleOfWidth = 32}};
inline constexpr CodecPicture dnxhrPictures[] = {{AV_PIX_FMT_YUV422P, "422", 8, false, "lb|sq|hq"},
                                                 {AV_PIX_FMT_YUV422P10, "422", 10, false, "hqx"},
                                                 {AV_PIX_FMT_YUV444P10, "444", 10, false, "444"},
                                                 {AV_PIX_FMT_GBRP10, "rgb", 10, false, "444", true}};

inline constexpr CodecPicture h264Pictures[] = {
    {.format = AV_PIX_FMT_YUV420P,
     .chroma = "420",
     .bits = 8,
     .profiles = "baseline|main|high",
     .multipleOfWidth = 2,
     .multipleOfHeight = 2},
    {.format = AV_PIX_FMT_YUV420P10,
     .chroma = "420",
     .bits = 10,
     .profiles = "high10",
     .multipleOfWidth = 2,
     .multipleOfHeight = 2},
    {.format = AV_PIX_FMT_YUV422P,
     .chroma = "422",
     .bits = 8,
     .profiles = "high422",
     .onRequest = true,
     .multipleOfWidth = 2},
    {.format = AV_PIX_FMT_YUV422P10,
     .chroma = "422",
     .bits = 10,
     .profiles = "high422",
     .onRequest = true,
     .multipleOfWidth = 2},
    {.format = AV_PIX_FMT_YUV444P, .chroma = "444", .bits = 8, .profiles = "high444", .onRequest = true},
    {.format = AV_PIX_FMT_YUV444P10, .chroma = "444", .bits = 10, .profiles = "high444", .onRequest = true},
    {.format = AV_PIX_FMT_RGB24,
     .chroma = "rgb",
     .bits = 8,
     .profiles = "high444",
     .onRequest = true,
     .encoder = "libx264rgb"}};

inline constexpr CodecPicture hevcPictures[] = {
    {.format = AV_PIX_FMT_YUV420P,
     .chroma = "420",
     .bits = 8,
     .profiles = "main",
     .multipleOfWidth = 2,
     .multipleOfHeight = 2},
    {.format = AV_PIX_FMT_YUV420P10,
     .chroma = "420",
     .bits = 10,
     .profiles = "main10",
     .multipleOfWidth = 2,
     .multipleOfHeight = 2},
    {.format = AV_PIX_FMT_YUV420P12,
     .chroma = "420",
     .bits = 12,
     .profiles = "main12",
     .multipleOfWidth = 2,
     .multipleOfHeight = 2},
    {.format = AV_PIX_FMT_YUV422P10,
     .chroma = "422",
     .bits = 10,
     .profiles = "main422-10",
     .onRequest = true,
     .multipleOfWidth = 2},
    {.format = AV_PIX_FMT_YUV422P12,
     .chroma = "422",
     .bits = 12,
     .profiles = "main422-12",
     .onRequest = true,
     .multipleOfWidth = 2},
    {.format = AV_PIX_FMT_YUV444P, .chroma = "444", .bits = 8, .profiles = "main444-8", .onRequest = true},
    {.format = AV_PIX_FMT_YUV444P10,
     .chroma = "444",
     .bits = 10,
     .profiles = "main444-10",
     .onRequest = true},
    {.format = AV_PIX_FMT_YUV444P12,
     .chroma = "444",
     .bits = 12,
     .profiles = "main444-12",
     .onRequest = true},
    {.format = AV_PIX_FMT_GBRP, .chroma = "rgb", .bits = 8, .profiles = "main444-8", .onRequest = true},
    {.format = AV_PIX_FMT_GBRP10, .chroma = "rgb", .bits = 10, .profiles = "main444-10", .onRequest = true},
    {.format = AV_PIX_FMT_GBRP12, .chroma = "rgb", .bits = 12, .profiles = "main444-12", .onRequest = true}};

inline constexpr CodecProfile proRes422Profiles[] = {{"proxy", "profile=0", "apco"},
                                                     {"lt", "profile=1", "apcs"},
                                                     {"standard", "profile=2", "apcn"},
                                                     {"hq", "profile=3", "apch"}};
inline constexpr CodecProfile proRes4444Profiles[] = {{"4444", "profile=4", "ap4h"},
                                                      {"4444xq", "profile=5", "ap4x"}};
inline constexpr CodecProfile dnxhrProfiles[] = {{"lb", "profile=dnxhr_lb", nullptr},
                                                 {"sq", "profile=dnxhr_sq", nullptr},
                                                 {"hq", "profile=dnxhr_hq", nullptr},
                                                 {"hqx", "profile=dnxhr_hqx", nullptr},
                                                 {"444", "profile=dnxhr_444", nullptr}};
inline constexpr CodecProfile h264Profiles[] = {
    {"baseline", "profile=baseline", nullptr}, {"main", "profile=main", nullptr},
    {"high", "profile=high", nullptr},         {"high10", "profile=high10", nullptr},
    {"high422", "profile=high422", nullptr},   {"high444", "profile=high444", nullptr}};
inline constexpr CodecProfile hevcProfiles[] = {{"main", "profile=main", nullptr},
                                                {"main10", "profile=main10", nullptr},
                                                {"main12", "profile=main12", nullptr},
                                                {"main422-10", "profile=main422-10", nullptr},
                                                {"main422-12", "profile=main422-12", nullptr},
                                                {"main444-8", "profile=main444-8", nullptr},
                                                {"main444-10", "profile=main444-10", nullptr},
                                                {"main444-12", "profile=main444-12", nullptr}};

using enum OptionKind;

inline constexpr CodecOption quantiser31 = {
    "quantiser", Integer, "1|31", "auto", "qscale", "The quantiser, 1 best; auto takes it from quality"};
inline constexpr CodecOption crf = {
    "crf", Number, "0|51", "auto", "crf", "Constant rate factor, 0 best; auto takes it from quality"};
inline constexpr CodecOption tenPresets = {
    "preset", Choice,   "ultrafast|superfast|veryfast|faster|fast|medium|slow|slower|veryslow|placebo",
    "medium", "preset", "How much time the encoder spends for a smaller file"};

inline constexpr CodecOption motionJpegOptions[] = {
    {"chroma", Choice, "auto|422|420", "auto", nullptr,
     "Chroma sampling; auto takes 4:2:2 at even sizes, else 4:2:0"},
    quantiser31};
inline constexpr CodecOption photoJpegOptions[] = {
    {"chroma", Choice, "auto|422|420", "auto", nullptr,
     "Chroma sampling; auto takes 4:2:2 at even sizes, else 4:2:0"},
    {"huffman", Choice, "optimal|default", "optimal", "huffman",
     "Code tables made for each picture, or the standard's"},
    quantiser31};
inline constexpr CodecOption mpegOptions[] = {quantiser31};
inline constexpr CodecOption pngOptions[] = {
    {"compression", Integer, "0|9", "auto", "compression_level",
     "Effort of the deflate step; auto is the fast choice"},
    {"prediction", Choice, "auto|none|sub|up|avg|paeth|mixed", "auto", "pred",
     "How a sample is foretold from its neighbours"}};
inline constexpr CodecOption tiffOptions[] = {{"compression", Choice, "packbits|raw|lzw|deflate", "packbits",
                                               "compression_algo", "How strips are compressed"}};
inline constexpr CodecOption proResOptions[] = {
    {"quantiser", Integer, "1|224", "auto", "qscale", "The quantiser, 1 best; auto takes it from quality"}};
inline constexpr CodecOption chroma444Options[] = {
    {"chroma", Choice, "auto|444|rgb", "auto", nullptr, "What profile 444 stores: YCbCr or RGB"}};
inline constexpr CodecOption hapOptions[] = {
    {"compressor", Choice, "snappy|none", "snappy", "compressor", "Second compression of the textures"},
    {"chunks", Integer, "1|64", "1", "chunks", "Parts that a reader can decompress side by side"}};
inline constexpr CodecOption h264Options[] = {
    {"chroma", Choice, "auto|420|422|444|rgb", "auto", nullptr,
     "Chroma sampling; auto is the profile's, 4:2:0 where none is set, RGB for lossless"},
    tenPresets,
    {"tune", Choice, "auto|film|animation|grain|stillimage|fastdecode", "auto", "tune",
     "What the encoder is tuned for"},
    {"level", Choice, "auto|1|1.1|1.2|1.3|2|2.1|2.2|3|3.1|3.2|4|4.1|4.2|5|5.1|5.2|6|6.1|6.2", "auto", "level",
     "The level that the stream states"},
    {"bframes", Integer, "0|5", "auto", "bf", "Most B-pictures in a row"},
    crf};
inline constexpr CodecOption hevcOptions[] = {
    {"chroma", Choice, "auto|420|422|444|rgb", "auto", nullptr,
     "Chroma sampling; auto is the profile's, 4:2:0 where none is set, RGB for lossless"},
    tenPresets,
    {"tune", Choice, "auto|grain|animation|fastdecode", "auto", "tune", "What the encoder is tuned for"},
    crf};

}  // namespace Morvane::Worker::CodecChoices
