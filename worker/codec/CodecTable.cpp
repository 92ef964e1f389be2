#include "worker/codec/CodecTable.h"

#include "worker/codec/CodecChoices.h"

extern "C" {
#include <libavutil/macros.h>
}

#include <algorithm>
#include <cstring>

namespace Morvane::Worker {

namespace {

using enum Lossless;
using enum ColourModel;
using namespace CodecChoices;

constexpr std::array<const char*, 6> noQuality = {"", "", "", "", "", ""};
constexpr std::array<const char*, 6> jpegQuality = {"qscale=24", "qscale=12", "qscale=7",
                                                    "qscale=4",  "qscale=2",  "qscale=1"};
constexpr std::array<const char*, 6> mpegQuality = {"qscale=24", "qscale=12", "qscale=7",
                                                    "qscale=4",  "qscale=2",  "qscale=1"};
constexpr std::array<const char*, 6> x264Quality = {"crf=34", "crf=28", "crf=23", "crf=18", "crf=12", "qp=0"};
constexpr std::array<const char*, 6> x265Quality = {"crf=36", "crf=30", "crf=25",
                                                    "crf=20", "crf=13", "lossless=1"};
/// Fixed quantisers: the encoder's own rate control takes five times as long for no better a picture. Max of
/// 422 LT, 422 and HQ comes near the profile's nominal data rate for a grainy picture.
constexpr std::array<const char*, 6> proResProxyQuality = {"qscale=48", "qscale=32", "qscale=20",
                                                           "qscale=12", "qscale=6",  "qscale=1"};
constexpr std::array<const char*, 6> proResLtQuality = {"qscale=40", "qscale=28", "qscale=18",
                                                        "qscale=12", "qscale=6",  "qscale=1"};
constexpr std::array<const char*, 6> proResQuality = {"qscale=32", "qscale=22", "qscale=14",
                                                      "qscale=9",  "qscale=4",  "qscale=1"};
constexpr std::array<const char*, 6> proResHqQuality = {"qscale=24", "qscale=16", "qscale=11",
                                                        "qscale=7",  "qscale=3",  "qscale=1"};
constexpr std::array<const char*, 6> proRes4444Quality = {"qscale=24", "qscale=16", "qscale=10",
                                                          "qscale=6",  "qscale=3",  "qscale=1"};
constexpr std::array<const char*, 6> proRes4444XqQuality = {"qscale=16", "qscale=10", "qscale=6",
                                                            "qscale=4",  "qscale=2",  "qscale=1"};

constexpr SizeRule anySize = {};
constexpr SizeRule evenWidth = {.multipleOfWidth = 2};
/// Lower pictures are encoded, but decoders share out the work by four rows and then do none of it.
constexpr SizeRule evenWidthFrom4Rows = {.multipleOfWidth = 2, .minimumWidth = 2, .minimumHeight = 4};
constexpr SizeRule multiplesOf4 = {
    .multipleOfWidth = 4, .multipleOfHeight = 4, .minimumWidth = 4, .minimumHeight = 4};

constexpr SizeRule::Size ntscOnly[] = {{720, 480}};
constexpr SizeRule::Size palOnly[] = {{720, 576}};
// Of a 4:3 picture, as DV streams state it.
constexpr AVRational ntscAspect = {8, 9};
constexpr AVRational palAspect = {16, 15};
constexpr SizeRule::Size h263Only[] = {{128, 96}, {176, 144}, {352, 288}, {704, 576}, {1408, 1152}};
constexpr SizeRule::Size dnxhdOnly[] = {{1920, 1080}, {1280, 720}};

/// The six of the family differ in pictures, profile and type only.
constexpr Codec proRes(const char* type, const char* name, const char* profile,
                       std::array<const char*, 6> quality, bool alpha) {
    return {.type = type,
            .name = name,
            .encoder = "prores_ks",
            .bitstreamFilter = nullptr,
            .pictures = alpha ? std::span<const CodecPicture>(ycbcr444Alpha10)
                              : std::span<const CodecPicture>(ycbcr422Bits10),
            .defaultBits = 10,
            .intraOnly = true,
            .lossless = Never,
            .quality = quality,
            .sizes = evenWidth,
            .sizeSentence = "even widths",
            .colour = Video,
            .fields = true,
            .encoderOptions = "vendor=apl0",
            .profiles = alpha ? std::span<const CodecProfile>(proRes4444Profiles)
                              : std::span<const CodecProfile>(proRes422Profiles),
            .defaultProfile = profile,
            .options = proResOptions};
}

constexpr Codec dv(const char* type, const char* name, std::span<const CodecPicture> pictures,
                   std::span<const SizeRule::Size> sizes, const char* sizeSentence, AVRational aspect) {
    return {.type = type,
            .name = name,
            .encoder = "dvvideo",
            .bitstreamFilter = nullptr,
            .pictures = pictures,
            .defaultBits = 8,
            .intraOnly = true,
            .lossless = Never,
            .quality = noQuality,
            .sizes = {.only = sizes},
            .sizeSentence = sizeSentence,
            .colour = OldVideo,
            .fields = true,
            .aspect = aspect};
}

constexpr Codec uncompressed(const char* type, const char* name, const char* encoder,
                             std::span<const CodecPicture> pictures, int bits, SizeRule sizes,
                             const char* sizeSentence, ColourModel colour) {
    return {.type = type,
            .name = name,
            .encoder = encoder,
            .bitstreamFilter = nullptr,
            .pictures = pictures,
            .defaultBits = bits,
            .intraOnly = true,
            .lossless = Always,
            .quality = noQuality,
            .sizes = sizes,
            .sizeSentence = sizeSentence,
            .colour = colour,
            .fields = true};
}

constexpr Codec hap(const char* type, const char* name, std::span<const CodecPicture> pictures,
                    const char* options) {
    return {.type = type,
            .name = name,
            .encoder = "hap",
            .bitstreamFilter = nullptr,
            .pictures = pictures,
            .defaultBits = 8,
            .intraOnly = true,
            .lossless = Never,
            .quality = noQuality,
            .sizes = multiplesOf4,
            .sizeSentence = "multiples of 4",
            .colour = Rgb,
            .encoderOptions = options,
            .options = hapOptions};
}

const Codec rows[] = {
    {.type = "rle ",
     .name = "Animation",
     .encoder = "qtrle",
     .bitstreamFilter = nullptr,
     .pictures = argb8,
     .defaultBits = 8,
     .intraOnly = true,
     .lossless = Always,
     .quality = noQuality,
     .sizes = anySize,
     .sizeSentence = "any size",
     .colour = Rgb,
     .encoderOptions = "g=1"},
    {.type = "cvid",
     .name = "Cinepak",
     .encoder = "cinepak",
     .bitstreamFilter = nullptr,
     .pictures = rgb8,
     .defaultBits = 8,
     .intraOnly = false,
     .lossless = Never,
     .quality = noQuality,
     .sizes = multiplesOf4,
     .sizeSentence = "multiples of 4",
     .colour = Rgb},
    dv("dvc ", "DV/DVCPRO - NTSC", dv411, ntscOnly, "720 x 480", ntscAspect),
    dv("dvcp", "DV - PAL", dv420, palOnly, "720 x 576", palAspect),
    {.type = "smc ",
     .name = "Graphics",
     .encoder = "smc",
     .bitstreamFilter = nullptr,
     .pictures = palette8,
     .defaultBits = 8,
     .intraOnly = false,
     .lossless = Never,
     .quality = noQuality,
     .sizes = anySize,
     .sizeSentence = "any size",
     .colour = Rgb},
    {.type = "h263",
     .name = "H.263",
     .encoder = "h263",
     .bitstreamFilter = nullptr,
     .pictures = ycbcr420Bits8,
     .defaultBits = 8,
     .intraOnly = false,
     .lossless = Never,
     .quality = mpegQuality,
     .sizes = {.only = h263Only},
     .sizeSentence = "128 x 96, 176 x 144, 352 x 288, 704 x 576 or 1408 x 1152",
     .colour = OldVideo},
    {.type = "avc1",
     .name = "H.264",
     .encoder = "libx264",
     .bitstreamFilter = nullptr,
     .pictures = h264Pictures,
     .defaultBits = 8,
     .intraOnly = false,
     .lossless = AtLosslessQuality,
     .quality = x264Quality,
     .sizes = anySize,
     .sizeSentence = "even widths and heights; any size with chroma=444 or rgb",
     .colour = AnyRange,
     .fields = true,
     .profiles = h264Profiles,
     .defaultProfile = "auto",
     .options = h264Options},
    {.type = "mjpa",
     .name = "Motion JPEG A",
     .encoder = "mjpeg",
     .bitstreamFilter = "mjpegadump",
     .pictures = jpegPictures,
     .defaultBits = 8,
     .intraOnly = true,
     .lossless = Never,
     .quality = jpegQuality,
     .sizes = anySize,
     .sizeSentence = "any size",
     .colour = Jpeg,
     .encoderOptions = "huffman=default",
     .options = motionJpegOptions},
    {.type = "mp4v",
     .name = "MPEG-4 Video",
     .encoder = "mpeg4",
     .bitstreamFilter = nullptr,
     .pictures = ycbcr420Bits8,
     .defaultBits = 8,
     .intraOnly = false,
     .lossless = Never,
     .quality = mpegQuality,
     .sizes = anySize,
     .sizeSentence = "any size",
     .colour = Video,
     .options = mpegOptions},
    uncompressed("raw ", "None", "rawvideo", argb8, 8, anySize, "any size", Rgb),
    {.type = "jpeg",
     .name = "Photo-JPEG",
     .encoder = "mjpeg",
     .bitstreamFilter = nullptr,
     .pictures = jpegPictures,
     .defaultBits = 8,
     .intraOnly = true,
     .lossless = Never,
     .quality = jpegQuality,
     .sizes = anySize,
     .sizeSentence = "any size",
     .colour = Jpeg,
     .options = photoJpegOptions},
    {.type = "png ",
     .name = "PNG",
     .encoder = "png",
     .bitstreamFilter = nullptr,
     .pictures = pngPictures,
     .defaultBits = 16,
     .intraOnly = true,
     .lossless = Always,
     .quality = noQuality,
     .sizes = anySize,
     .sizeSentence = "any size",
     .colour = Rgb,
     .encoderOptions = "compression_level=1:pred=avg",
     .options = pngOptions},
    {.type = "SVQ1",
     .name = "Sorenson Video",
     .encoder = "svq1",
     .bitstreamFilter = nullptr,
     .pictures = ycbcr410Bits8,
     .defaultBits = 8,
     .intraOnly = false,
     .lossless = Never,
     .quality = mpegQuality,
     // Elsewhere the encoder and decoders disagree about the last chroma samples.
     .sizes = {.multipleOfWidth = 4,
               .multipleOfHeight = 4,
               .minimumWidth = 4,
               .minimumHeight = 4,
               .maximum = 4092},
     .sizeSentence = "multiples of 4 up to 4092",
     .colour = OldVideo},
    {.type = "tiff",
     .name = "TIFF",
     .encoder = "tiff",
     .bitstreamFilter = nullptr,
     .pictures = tiffPictures,
     .defaultBits = 16,
     .intraOnly = true,
     .lossless = Always,
     .quality = noQuality,
     .sizes = anySize,
     .sizeSentence = "any size",
     .colour = Rgb,
     .options = tiffOptions},
    proRes("apco", "ProRes 422 Proxy", "proxy", proResProxyQuality, false),
    proRes("apcs", "ProRes 422 LT", "lt", proResLtQuality, false),
    proRes("apcn", "ProRes 422", "standard", proResQuality, false),
    proRes("apch", "ProRes 422 HQ", "hq", proResHqQuality, false),
    proRes("ap4h", "ProRes 4444", "4444", proRes4444Quality, true),
    proRes("ap4x", "ProRes 4444 XQ", "4444xq", proRes4444XqQuality, true),
    uncompressed("2vuy", "Uncompressed 8-bit 4:2:2", "rawvideo", packed422Bits8, 8, anySize, "any size",
                 Video),
    uncompressed("v210", "Uncompressed 10-bit 4:2:2", "v210", ycbcr422Bits10, 10, evenWidthFrom4Rows,
                 "even widths, from 4 rows", Video),
    uncompressed("v308", "Uncompressed 8-bit 4:4:4", "v308", ycbcr444Bits8, 8, evenWidth, "even widths",
                 Video),
    uncompressed("v408", "Uncompressed 8-bit 4:4:4:4", "v408", ycbcr444Alpha8, 8, anySize, "any size", Video),
    uncompressed("v410", "Uncompressed 10-bit 4:4:4", "v410", ycbcr444Bits10, 10, evenWidthFrom4Rows,
                 "even widths, from 4 rows", Video),
    uncompressed("b48r", "Uncompressed 16-bit RGB", "rawvideo", rgb16, 16, anySize, "any size", Rgb),
    uncompressed("b64a", "Uncompressed 16-bit ARGB", "rawvideo", argb16, 16, anySize, "any size", Rgb),
    uncompressed("r210", "Uncompressed 10-bit RGB", "r210", gbr10, 10, anySize, "any size", Rgb),
    dv("dv5n", "DVCPRO50 - NTSC", dv422, ntscOnly, "720 x 480", ntscAspect),
    dv("dv5p", "DVCPRO50 - PAL", dv422, palOnly, "720 x 576", palAspect),
    {.type = "AVdn",
     .name = "DNxHD",
     .encoder = "dnxhd",
     .bitstreamFilter = nullptr,
     .pictures = ycbcr422Bits8,
     .defaultBits = 8,
     .intraOnly = true,
     .lossless = Never,
     .quality = {"b=75M", "b=75M", "b=145M", "b=145M", "b=220M", "b=220M"},
     .sizes = {.only = dnxhdOnly},
     .sizeSentence = "1920 x 1080 or 1280 x 720",
     .colour = Video},
    {.type = "AVdh",
     .name = "DNxHR",
     .encoder = "dnxhd",
     .bitstreamFilter = nullptr,
     .pictures = dnxhrPictures,
     .defaultBits = 0,
     .intraOnly = true,
     .lossless = Never,
     .quality = {"profile=lb", "profile=sq", "profile=hq", "profile=hqx", "profile=444", "profile=444"},
     .sizes = {.minimumWidth = 256, .minimumHeight = 120},
     .sizeSentence = "from 256 x 120",
     .colour = Video,
     .profiles = dnxhrProfiles,
     .defaultProfile = "auto",
     .options = chroma444Options},
    {.type = "CFHD",
     .name = "CineForm",
     .encoder = "cfhd",
     .bitstreamFilter = nullptr,
     .pictures = cineFormPictures,
     .defaultBits = 12,
     .intraOnly = true,
     .lossless = Never,
     .quality = {"quality=12", "quality=9", "quality=6", "quality=4", "quality=2", "quality=0"},
     // At other heights the last rows come back wrong.
     .sizes = {.multipleOfWidth = 16, .multipleOfHeight = 8, .minimumWidth = 48, .minimumHeight = 32},
     .sizeSentence = "multiples of 16 x 8 from 48 x 32, of 32 x 8 with bitdepth=10",
     .colour = Video},
    {.type = "mjp2",
     .name = "JPEG 2000",
     .encoder = "libopenjpeg",
     .bitstreamFilter = nullptr,
     .pictures = jpeg2000Pictures,
     .defaultBits = 16,
     .intraOnly = true,
     .lossless = AtLosslessQuality,
     .quality = {"compression_level=80", "compression_level=40", "compression_level=20",
                 "compression_level=12", "compression_level=6", "compression_level=0"},
     .sizes = {.minimumWidth = 32, .minimumHeight = 32},
     .sizeSentence = "from 32 x 32",
     .colour = Rgb},
    {.type = "hvc1",
     .name = "HEVC",
     .encoder = "libx265",
     .bitstreamFilter = nullptr,
     .pictures = hevcPictures,
     .defaultBits = 8,
     .intraOnly = false,
     .lossless = AtLosslessQuality,
     .quality = x265Quality,
     .sizes = {.minimumWidth = 16, .minimumHeight = 16},
     .sizeSentence = "even widths and heights from 16 x 16; any with chroma=444 or rgb",
     .colour = AnyRange,
     .profiles = hevcProfiles,
     .defaultProfile = "auto",
     .options = hevcOptions},
    hap("Hap1", "Hap", rgbaOpaque8, "format=hap"),
    hap("Hap5", "Hap Alpha", rgba8, "format=hap_alpha"),
    hap("HapY", "Hap Q", rgbaOpaque8, "format=hap_q"),
};

}  // namespace

bool Codec::hasAlpha() const {
    return std::any_of(pictures.begin(), pictures.end(),
                       [](const CodecPicture& picture) { return picture.alpha; });
}

int Codec::highestBits() const {
    return std::max_element(
               pictures.begin(), pictures.end(),
               [](const CodecPicture& one, const CodecPicture& other) { return one.bits < other.bits; })
        ->bits;
}

bool Codec::hasQuality() const {
    return *quality[0] != 0;
}

std::span<const Codec> codecTable() {
    return rows;
}

const Codec* findCodec(std::string_view type) {
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [&](const Codec& codec) { return codec.type == type; });
    return row == std::end(rows) ? nullptr : row;
}

std::string codecEntry(const Codec& codec) {
    return std::string(codec.type) + '\t' + codec.name;
}

std::uint32_t codecTag(const char* type) {
    return MKTAG(static_cast<unsigned char>(type[0]), static_cast<unsigned char>(type[1]),
                 static_cast<unsigned char>(type[2]), static_cast<unsigned char>(type[3]));
}

}  // namespace Morvane::Worker
