#pragma once

extern "C" {
#include <libavutil/pixfmt.h>
#include <libavutil/rational.h>
}

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Morvane::Worker {

/// How a picture's samples lie in memory where libav's pixel format alone does not say it.
enum class SampleOrder {
    AsPixelFormat,
    ArgbBigEndian16,  ///< 16-bit A, R, G, B, big-endian, although the pixel format says RGBA
    Palette,          ///< one byte a pixel, an index into the fixed palette of picture/Palette.h
};

/// One kind of picture that a codec can be fed with.
struct CodecPicture {
    AVPixelFormat format;
    const char* chroma;  ///< "rgb", "444", "422", "420", "411", "410" or "palette"
    int bits;            ///< bits a channel
    bool alpha = false;
    const char* profiles =
        "";  ///< the profiles this picture can be in, as "a|b"; empty where it makes no difference
    bool onRequest = false;  ///< only taken where `chroma` or `profile` asks for it, or losslessness needs it
    int multipleOfWidth = 1;        ///< pixels
    int multipleOfHeight = 1;       ///< pixels
    const char* encoder = nullptr;  ///< libav encoder that takes this picture; null: the codec's own
    SampleOrder order = SampleOrder::AsPixelFormat;
};

/// Which sizes a codec takes, whichever of its pictures is chosen.
struct SizeRule {
    int multipleOfWidth = 1;
    int multipleOfHeight = 1;
    int minimumWidth = 1;
    int minimumHeight = 1;
    int maximum = 16384;  ///< largest width and largest height, pixels
    struct Size {
        int width, height;
    };
    std::span<const Size> only = {};  ///< where not empty: the only sizes there are
};

/// Whether decoding gives the picture's samples back bit for bit.
enum class Lossless { Never, AtLosslessQuality, Always };

enum class OptionKind { Choice, Integer, Number };

/// A settings key that only some codecs have.
struct CodecOption {
    const char* key;
    OptionKind kind;
    const char* values;         ///< Choice: "a|b|c"; Integer and Number: "lowest|highest"
    const char* defaultValue;   ///< "auto": left to quality and encoder
    const char* encoderOption;  ///< libav's name of it; null: the plan gives it its meaning
    const char* help;           ///< one sentence
};

/// A profile that the `profile` key names.
struct CodecProfile {
    const char* name;
    const char* encoderOptions;  ///< libav options as "key=value:key=value"
    const char* type;  ///< the four-character type that the movie then states; null: the codec's own
};

/// Which matrix, range and tags a codec's pictures can have.
enum class ColourModel {
    Rgb,       ///< full range; the matrix is only a tag
    Video,     ///< YCbCr whose matrix is free and whose range is video range
    AnyRange,  ///< YCbCr whose bitstream states matrix and range
    Jpeg,      ///< BT.601 matrix and full range, always
    OldVideo,  ///< BT.601 matrix and video range, always: the bitstream cannot say anything else
};

/// One codec that the worker offers. Everything that distinguishes codecs is here; adding one is a row of
/// this table and its figures in the tests. The index of a row is what a host stores: rows are never
/// reordered.
struct Codec {
    const char* type;             ///< exactly four characters
    const char* name;             ///< as a person knows it
    const char* encoder;          ///< libav encoder
    const char* bitstreamFilter;  ///< libav bitstream filter that the packets pass through; null: none
    std::span<const CodecPicture> pictures;  ///< the first of those that fit the settings is taken
    int defaultBits;                         ///< 0: profile and quality decide
    bool intraOnly;  ///< every packet is a picture of its own and contexts can work side by side
    Lossless lossless;
    /// The encoder options of each quality, 0 to 5, as libav option text; besides libav's names `qscale` (the
    /// quantiser) and `profile` (one of the codec's). Empty texts: quality makes no difference.
    std::array<const char*, 6> quality;
    SizeRule sizes;
    const char* sizeSentence;  ///< "even widths": what `sizes` and the default picture come to, for a person
    ColourModel colour;
    bool fields = false;              ///< takes interlaced pictures (`fields`)
    const char* encoderOptions = "";  ///< always set, as libav option text
    std::span<const CodecProfile> profiles = {};
    const char* defaultProfile = "";  ///< "auto": what depth and quality need; empty: the codec has none
    std::span<const CodecOption> options = {};
    AVRational aspect = {1, 1};  ///< pixel aspect where nobody asks for one

    bool hasAlpha() const;
    int highestBits() const;
    bool hasQuality() const;
};

/// All codecs, in the fixed order of the codec list: the classic ones first.
std::span<const Codec> codecTable();

/// The codec of `type` (exactly four characters), or null.
const Codec* findCodec(std::string_view type);

/// The codec list's entry: type, TAB, name ("mjpa\tMotion JPEG A").
std::string codecEntry(const Codec& codec);

/// The four-character code as libav keeps it, the first character in the lowest byte. `type` has four
/// characters.
std::uint32_t codecTag(const char* type);

}  // namespace Morvane::Worker
