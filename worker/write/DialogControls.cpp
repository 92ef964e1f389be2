#include "worker/write/DialogControls.h"

#include <fmt/format.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <sstream>

#include "worker/codec/ColourNames.h"
#include "worker/codec/SettingDescription.h"
#include "worker/codec/SettingsText.h"

namespace Morvane::Worker {

namespace {

using Group = DialogControl::Group;
using Kind = DialogControl::Kind;

/// How a person calls a key, and where they look for it. A key that is not here stands under its own name
/// among the advanced ones.
struct Place {
    const char* key;
    const char* label;
    Group group;
    const char* unit;
};

constexpr Place places[] = {
    {"profile", "Profile", Group::Codec, ""},
    {"chroma", "Chroma sampling", Group::Codec, ""},
    {"bitdepth", "Bit depth", Group::Codec, "bits a channel"},
    {"alpha", "Alpha", Group::Codec, ""},
    {"crf", "Rate factor", Group::Quality, ""},
    {"quantiser", "Quantiser", Group::Quality, ""},
    {"preset", "Effort", Group::Quality, ""},
    {"tune", "Tuned for", Group::Quality, ""},
    {"compression", "Compression", Group::Quality, ""},
    {"bframes", "B-pictures", Group::Quality, "in a row"},
    {"primaries", "Primaries", Group::Colour, ""},
    {"transfer", "Transfer", Group::Colour, ""},
    {"matrix", "Matrix", Group::Colour, ""},
    {"range", "Range", Group::Colour, ""},
    {"fields", "Fields", Group::Advanced, ""},
    {"aspect", "Pixel aspect", Group::Advanced, "width : height"},
    {"threads", "Threads", Group::Advanced, "threads"},
    {"level", "Level", Group::Advanced, ""},
    {"prediction", "Prediction", Group::Advanced, ""},
    {"huffman", "Huffman tables", Group::Advanced, ""},
    {"compressor", "Second compressor", Group::Advanced, ""},
    {"chunks", "Chunks", Group::Advanced, ""},
};

/// Provisional entries of the time-code track, which the host makes and nobody types.
bool isHosts(const std::string& key) {
    return key == "timecode" || key == "reel";
}

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, '|');)
        parts.push_back(part);
    return parts;
}

double numberOf(const std::string& text) {
    double value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// "1|31", "auto|1..256": the two numbers at the end.
void readRange(const std::string& values, DialogControl& control) {
    const std::size_t start = values.find_first_of("0123456789");
    const std::size_t middle = values.find_first_of("|.", start);
    const std::size_t last = values.find_first_of("0123456789", middle);
    control.lowest = numberOf(values.substr(start, middle - start));
    control.highest = numberOf(values.substr(last));
    control.automatic = values.compare(0, 5, "auto|") == 0 || control.defaultValue == "auto";
}

/// A sentence of libav's about the encoder's option behind a key.
std::string encoderHelp(const Codec& codec, const std::string& key) {
    const auto option = std::find_if(codec.options.begin(), codec.options.end(),
                                     [&](const CodecOption& one) { return key == one.key; });
    const AVCodec* encoder = avcodec_find_encoder_by_name(codec.encoder);
    if (option == codec.options.end() || !option->encoderOption || !encoder || !encoder->priv_class)
        return {};
    const AVClass* description = encoder->priv_class;
    const AVOption* found =
        av_opt_find(&description, option->encoderOption, nullptr, 0, AV_OPT_SEARCH_FAKE_OBJ);
    if (!found || !found->help || !*found->help)
        return {};
    return fmt::format("\n{}, {}: {}", codec.encoder, found->name, found->help);
}

DialogControl controlOf(const SettingDescription& setting, const std::string& defaultValue,
                        const Codec& codec) {
    DialogControl control;
    const auto* place = std::find_if(std::begin(places), std::end(places),
                                     [&](const Place& one) { return setting.key == one.key; });
    const bool known = place != std::end(places);
    control.key = setting.key;
    control.label = known ? place->label : setting.key;
    control.group = known ? place->group : Group::Advanced;
    control.unit = known ? place->unit : "";
    control.help = setting.help + "." + encoderHelp(codec, setting.key);
    control.defaultValue = defaultValue;
    // The depths that there are stand in a list although they are numbers.
    if (setting.type == "choice" || setting.key == "bitdepth") {
        control.kind = Kind::Choice;
        control.choices = split(setting.values);
    } else if (setting.type == "integer" || setting.type == "number") {
        control.kind = setting.type == "integer" ? Kind::Integer : Kind::Number;
        readRange(setting.values, control);
    }
    return control;
}

bool hasOneValue(const DialogControl& control) {
    return control.kind == Kind::Choice && control.choices.size() < 2;
}

std::string factsOf(const Codec& codec) {
    return fmt::format("“{}”, up to {} bits a channel, {}, {}; {}", codec.type, codec.highestBits(),
                       codec.hasAlpha() ? "with alpha" : "no alpha",
                       codec.lossless == Lossless::Always              ? "always lossless"
                       : codec.lossless == Lossless::AtLosslessQuality ? "lossless if wanted"
                                                                       : "lossy",
                       codec.sizeSentence);
}

std::string qualityName(int quality) {
    static constexpr const char* names[] = {"Min", "Low", "Normal", "High", "Max", "Lossless"};
    return quality >= 0 && quality < 6 ? names[quality] : std::to_string(quality);
}

std::string chromaInWords(const CodecPicture& picture) {
    const std::string chroma = picture.chroma;
    if (chroma == "rgb")
        return "RGB";
    if (chroma == "palette")
        return "a palette of 256 colours";
    return fmt::format("YCbCr {}:{}:{}", chroma[0], chroma[1], chroma[2]);
}

std::string alphaInWords(const EncodingPlan& plan) {
    if (plan.alpha != AlphaMode::None)
        return fmt::format("{} alpha", alphaModeName(plan.alpha));
    return plan.picture->alpha ? "opaque alpha" : "no alpha";
}

std::string keyFramesInWords(const EncodingPlan& plan) {
    if (plan.codec->intraOnly || plan.keyFrameRate == 1)
        return "Every frame stands alone.";
    if (plan.keyFrameRate == 0)
        return "The codec places the key frames.";
    return fmt::format("A key frame at least every {} frames.", plan.keyFrameRate);
}

}  // namespace

DialogCodec dialogCodec(const Codec& codec) {
    DialogCodec described;
    described.facts = factsOf(codec);
    if (codec.hasQuality())
        described.qualities.assign(codec.quality.begin(), codec.quality.end());
    described.keyFrames = !codec.intraOnly;
    const Settings defaults = Settings::defaults(codec);
    const SettingPairs pairs = parseSettingPairs(defaults.text());
    for (const SettingDescription& setting : describeSettings(defaults)) {
        if (isHosts(setting.key))
            continue;
        const auto found = std::find_if(pairs.begin(), pairs.end(),
                                        [&](const auto& pair) { return pair.first == setting.key; });
        DialogControl control = controlOf(setting, found == pairs.end() ? "" : found->second, codec);
        if (!hasOneValue(control))
            described.controls.push_back(std::move(control));
    }
    return described;
}

std::string planInWords(const EncodingPlan& plan, int quality) {
    const double rate = av_q2d(plan.rate);
    const bool square = plan.aspect.num == plan.aspect.den;
    return fmt::format(
        "{}: {}, {} bits a channel, {}.\n{} × {} pixels{} at {:.6g} frames a second{}. {}{}\n"
        "Colours: primaries {}, transfer {}, matrix {}, {} range.",
        plan.codec->name, chromaInWords(*plan.picture), plan.picture->bits, alphaInWords(plan), plan.width,
        plan.height, square ? "" : fmt::format(" of {}:{}", plan.aspect.num, plan.aspect.den), rate,
        plan.fields == AV_FIELD_PROGRESSIVE ? "" : ", interlaced", keyFramesInWords(plan),
        plan.codec->hasQuality() ? " Quality " + qualityName(quality) + "." : "",
        ColourNames::nameOf(plan.colour.primaries), ColourNames::nameOf(plan.colour.transfer),
        ColourNames::nameOf(plan.colour.matrix), plan.colour.range == AVCOL_RANGE_JPEG ? "full" : "video");
}

}  // namespace Morvane::Worker
