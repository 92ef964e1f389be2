#pragma once

#include "worker/codec/CodecTable.h"
#include "worker/codec/Colour.h"
#include "worker/codec/Curve.h"

extern "C" {
#include <libavcodec/codec_par.h>
#include <libavutil/rational.h>
}

#include <string>
#include <utility>
#include <vector>

namespace Morvane::Worker {

/// The codec settings of a movie: the text `key=value:key=value` (libav's escaping: backslash and single
/// quotes) checked against a codec. Every operation that takes a text throws StatusError
/// (NotSupportedByCodec) with a sentence where a key is unknown, has no effect for the codec, or has an
/// impossible value. A key given twice counts once, the later value.
///
/// Common keys: profile, bitdepth, alpha, curve (only with alpha=straight), colour (a preset: bt709, srgb,
/// bt601, p3-d65, bt2020, pq, hlg), primaries, transfer, matrix, range, fields, aspect, threads, timecode,
/// reel, meta.KEY; besides them the codec's own options.
class Settings {
public:
    /// The defaults of `row`: what the empty text means.
    static Settings defaults(const Codec& row);

    /// The settings that `text` means for `row`.
    static Settings parse(const std::string& text, const Codec& row);

    /// The complete, normalised text: every effective value in a fixed order. Parsing it gives these settings
    /// again and the same text. What another knob decides (quality) and what nobody gave (aspect, timecode,
    /// reel, metadata) is not in it.
    std::string text() const;

    /// What a person reads: one line an option.
    std::string summary() const;

    /// The typed property list, as text, of the codec's facts ("codec/bits", "codec/alpha", "codec/intra",
    /// "codec/lossless", "codec/sizes", "codec/quality") and of every option: its value under its own name,
    /// then "KEY/type", "KEY/values" and "KEY/help".
    std::string propertyListText() const;

    /// The settings of a property list such as `propertyListText` gives; facts and descriptions in it are
    /// ignored.
    static Settings fromPropertyList(const std::string& listText, const Codec& row);

    const Codec* codec = nullptr;  ///< the row that these settings were checked against; never null

    std::string profile;  ///< empty where the codec has none; "auto" where depth and quality decide
    int bits = 8;         ///< bits a channel
    AlphaMode alpha = AlphaMode::None;
    Curve curve = Curve::Srgb;  ///< of the pixels that come; only straight alpha takes it off
    ColourDecision colour;
    AVFieldOrder fields = AV_FIELD_PROGRESSIVE;
    AVRational aspect = {0, 1};  ///< pixel aspect; 0/1: the codec's own (square but for DV)
    int threads = 0;             ///< 0: as many as there are cores
    std::string timecode;  ///< provisional start of the time-code track, so that a crashed movie has one
    std::string reel;      ///< provisional reel name, for the same reason
    std::vector<std::pair<std::string, std::string>> metadata;  ///< of the movie; keys without "meta."
    std::vector<std::pair<std::string, std::string>> options;   ///< the codec's own, complete, in table order

    /// The value of the codec's own option `key`; "auto" where the codec has no such option.
    std::string option(const std::string& key) const;
};

}  // namespace Morvane::Worker
