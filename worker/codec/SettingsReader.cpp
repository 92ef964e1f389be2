#include "worker/codec/SettingsReader.h"

#include "worker/Status.h"
#include "worker/codec/ColourNames.h"
#include "worker/codec/PictureChoice.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>

namespace Morvane::Worker {

namespace {

constexpr int mostThreads = 256;
constexpr int largestAspectTerm = 32767;
constexpr double lowestAspect = 0.01;
constexpr double highestAspect = 100;

[[noreturn]] void refuse(const std::string& sentence) {
    throw StatusError(Status::NotSupportedByCodec, sentence);
}

[[noreturn]] void refuseValue(const std::string& key, const std::string& value, const std::string& possible) {
    refuse(fmt::format("{}={} is not possible; it is one of {}", key, value, possible));
}

/// The whole of `text` as a number, or nothing.
template <typename Number>
std::optional<Number> number(const std::string& text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

std::string checkedChoice(const CodecOption& option, const std::string& value) {
    if (!listHolds(option.values, value))
        refuseValue(option.key, value, option.values);
    return value;
}

template <typename Number>
std::string checkedNumber(const CodecOption& option, const std::string& value) {
    const std::string limits = option.values;
    const auto bar = limits.find('|');
    const auto lowest = number<Number>(limits.substr(0, bar));
    const auto highest = number<Number>(limits.substr(bar + 1));
    const auto given = number<Number>(value);
    if (value == "auto" && value == option.defaultValue)
        return value;
    // Written so that what is not a number is refused too.
    if (!given || !(*given >= *lowest && *given <= *highest))
        refuse(fmt::format("{}={} is not possible; it is a number from {} to {}", option.key, value, *lowest,
                           *highest));
    return fmt::format("{}", *given);
}

std::string checkedOption(const CodecOption& option, const std::string& value) {
    switch (option.kind) {
        case OptionKind::Choice:
            return checkedChoice(option, value);
        case OptionKind::Integer:
            return checkedNumber<int>(option, value);
        case OptionKind::Number:
            return checkedNumber<double>(option, value);
    }
    return value;
}

std::string profileNames(const Codec& codec) {
    std::string names = std::string_view(codec.defaultProfile) == "auto" ? "auto" : "";
    for (const CodecProfile& profile : codec.profiles)
        names += (names.empty() ? "" : "|") + std::string(profile.name);
    return names;
}

std::vector<std::string> codecsWithOption(const std::string& key) {
    std::vector<std::string> names;
    for (const Codec& codec : codecTable())
        if (std::any_of(codec.options.begin(), codec.options.end(),
                        [&](const CodecOption& option) { return key == option.key; }))
            names.emplace_back(codec.name);
    return names;
}

/// Whether `text` reads HH:MM:SS:FF (";" before the frames for drop-frame), which is all that is checked
/// here.
bool looksLikeTimecode(const std::string& text) {
    int group = 0;
    int digits = 0;
    for (const char character : text) {
        if (character >= '0' && character <= '9') {
            if (++digits > 3)
                return false;
        } else if (digits > 0 && (character == ':' || (character == ';' && group == 2))) {
            ++group;
            digits = 0;
        } else {
            return false;
        }
    }
    return group == 3 && digits > 0;
}

/// "59/54", "59:54" or "1.5".
std::optional<AVRational> ratioOf(const std::string& text) {
    const std::size_t middle = text.find_first_of("/:");
    if (middle == std::string::npos) {
        const auto value = number<double>(text);
        if (!value || !(*value >= lowestAspect && *value <= highestAspect))
            return std::nullopt;
        return av_d2q(*value, largestAspectTerm);
    }
    const auto width = number<int>(text.substr(0, middle));
    const auto height = number<int>(text.substr(middle + 1));
    if (!width || !height || std::min(*width, *height) < 1 || std::max(*width, *height) > largestAspectTerm)
        return std::nullopt;
    return AVRational{*width, *height};
}

/// The curve of pixels that nobody names: what the transfer says where that is certain, else the host's own,
/// the sRGB curve, which it tags as BT.709.
Curve usualCurve(AVColorTransferCharacteristic transfer) {
    switch (transfer) {
        case AVCOL_TRC_LINEAR:
            return Curve::Linear;
        case AVCOL_TRC_GAMMA22:
            return Curve::Gamma22;
        case AVCOL_TRC_GAMMA28:
            return Curve::Gamma28;
        case AVCOL_TRC_SMPTE2084:
            return Curve::Pq;
        case AVCOL_TRC_ARIB_STD_B67:
            return Curve::Hlg;
        default:
            return Curve::Srgb;
    }
}

}  // namespace

SettingsReader::SettingsReader(const Codec& row, const SettingPairs& pairs)
    : codec(row), given(pairs.begin(), pairs.end()) {
    settings.codec = &codec;
}

Settings SettingsReader::read() {
    readOptions();
    readProfile();
    readBits();
    readAlpha();
    readColour();
    readCurve();
    readFields();
    readAspect();
    readThreads();
    readTimecode();
    readMetadata();
    refuseTheRest();
    return settings;
}

const std::string* SettingsReader::take(const std::string& key) {
    auto node = given.extract(key);
    return node ? &taken.insert(std::move(node)).position->second : nullptr;
}

const CodecPicture& SettingsReader::picture() const {
    const std::string chroma = settings.option("chroma");
    const CodecPicture* found =
        choosePicture(codec, {.profile = settings.profile, .chroma = chroma, .bits = settings.bits});
    if (!found)
        refuse(fmt::format("{} has no picture with{}{}{}", codec.name,
                           settings.profile.empty() ? "" : fmt::format(" profile={}", settings.profile),
                           chroma == "auto" ? "" : fmt::format(" chroma={}", chroma),
                           settings.bits == 0 ? "" : fmt::format(" bitdepth={}", settings.bits)));
    return *found;
}

void SettingsReader::readOptions() {
    for (const CodecOption& option : codec.options) {
        const std::string* value = take(option.key);
        settings.options.emplace_back(option.key,
                                      value ? checkedOption(option, *value) : option.defaultValue);
    }
}

void SettingsReader::readProfile() {
    settings.profile = codec.defaultProfile;
    const std::string* value = take("profile");
    if (!value)
        return;
    if (codec.profiles.empty())
        refuse(fmt::format("profile has no effect for {}", codec.name));
    if (!listHolds(profileNames(codec).c_str(), *value))
        refuseValue("profile", *value, profileNames(codec));
    settings.profile = *value;
}

void SettingsReader::readBits() {
    std::set<int> depths;
    for (const CodecPicture& one : codec.pictures)
        depths.insert(one.bits);
    const std::string* value = take("bitdepth");
    if (value && !(*value == "auto" && codec.defaultBits == 0)) {
        const auto bits = number<int>(*value);
        if (!bits || depths.count(*bits) == 0)
            refuse(fmt::format("bitdepth={} is not possible for {}; it has {}", *value, codec.name,
                               fmt::join(depths, ", ")));
        settings.bits = *bits;
        picture();
        return;
    }
    // A profile or a chroma sampling alone can need another depth than the usual one.
    const PictureWish wish = {
        .profile = settings.profile, .chroma = settings.option("chroma"), .bits = codec.defaultBits};
    settings.bits = codec.defaultBits;
    if (!choosePicture(codec, wish)) {
        settings.bits = 0;
        settings.bits = picture().bits;
    }
}

void SettingsReader::readAlpha() {
    const bool possible = choosePicture(codec, {.profile = settings.profile,
                                                .chroma = settings.option("chroma"),
                                                .bits = settings.bits,
                                                .alpha = true}) != nullptr;
    settings.alpha = possible ? AlphaMode::Premultiplied : AlphaMode::None;
    const std::string* value = take("alpha");
    if (!value)
        return;
    for (const AlphaMode mode : {AlphaMode::None, AlphaMode::Straight, AlphaMode::Premultiplied}) {
        if (*value != alphaModeName(mode))
            continue;
        if (mode != AlphaMode::None && !possible)
            refuse(codec.hasAlpha()
                       ? fmt::format("{} has no alpha with bitdepth={}", codec.name, settings.bits)
                       : fmt::format("{} has no alpha; alpha can only be none", codec.name));
        settings.alpha = mode;
        return;
    }
    refuseValue("alpha", *value, "none|straight|premultiplied");
}

void SettingsReader::readColour() {
    const CodecPicture& chosen = picture();
    const bool rgb = std::string_view(chosen.chroma) == "rgb" || codec.colour == ColourModel::Rgb;
    settings.colour.matrix = codec.colour == ColourModel::Jpeg || codec.colour == ColourModel::OldVideo
                                 ? AVCOL_SPC_SMPTE170M
                                 : AVCOL_SPC_BT709;
    readPreset();
    if (const std::string* value = take("primaries")) {
        const auto primaries = ColourNames::primaries(*value);
        if (!primaries)
            refuseValue("primaries", *value, ColourNames::primariesNames());
        settings.colour.primaries = *primaries;
    }
    if (const std::string* value = take("transfer")) {
        const auto transfer = ColourNames::transfer(*value);
        if (!transfer)
            refuseValue("transfer", *value, ColourNames::transferNames());
        settings.colour.transfer = *transfer;
    }
    readMatrix(rgb);
    readRange(rgb);
}

void SettingsReader::readCurve() {
    const std::string* value = take("curve");
    if (!value) {
        settings.curve = usualCurve(settings.colour.transfer);
        return;
    }
    if (settings.alpha != AlphaMode::Straight)
        refuse(fmt::format("curve={} has no effect without alpha=straight", *value));
    const auto curve = curveNamed(*value);
    if (!curve)
        refuseValue("curve", *value, curveNames());
    settings.curve = *curve;
}

void SettingsReader::readPreset() {
    const std::string* value = take("colour");
    if (!value)
        return;
    const auto preset = ColourNames::preset(*value);
    if (!preset)
        refuseValue("colour", *value, ColourNames::presetNames());
    settings.colour.primaries = preset->primaries;
    settings.colour.transfer = preset->transfer;
    // Where the format itself fixes the matrix, a preset changes the other two.
    if (codec.colour != ColourModel::Jpeg && codec.colour != ColourModel::OldVideo)
        settings.colour.matrix = preset->matrix;
}

void SettingsReader::readMatrix(bool rgb) {
    const bool fixed = codec.colour == ColourModel::Jpeg || codec.colour == ColourModel::OldVideo;
    const bool statesRgb = rgb && codec.colour == ColourModel::AnyRange;
    if (statesRgb)
        settings.colour.matrix = AVCOL_SPC_RGB;
    const std::string* value = take("matrix");
    if (!value)
        return;
    const auto matrix = ColourNames::matrix(*value);
    if (!matrix)
        refuseValue("matrix", *value, ColourNames::matrixNames());
    if ((fixed || statesRgb) && *matrix != settings.colour.matrix)
        refuse(fmt::format("matrix={} is not possible: {} always has {}{}", *value, codec.name,
                           ColourNames::nameOf(settings.colour.matrix), statesRgb ? " with chroma=rgb" : ""));
    if (!rgb && *matrix == AVCOL_SPC_RGB)
        refuse(fmt::format("matrix={} is not possible: the pictures of {} are YCbCr", *value, codec.name));
    settings.colour.matrix = *matrix;
}

void SettingsReader::readRange(bool rgb) {
    const bool full = rgb || codec.colour == ColourModel::Jpeg;
    settings.colour.range = full ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    const std::string* value = take("range");
    if (!value)
        return;
    const auto range = ColourNames::range(*value);
    if (!range)
        refuseValue("range", *value, "tv|pc");
    if (*range != settings.colour.range && (rgb || codec.colour != ColourModel::AnyRange))
        refuse(fmt::format("range={} is not possible: {} can only state {}", *value, codec.name,
                           ColourNames::nameOf(settings.colour.range)));
    settings.colour.range = *range;
}

void SettingsReader::readFields() {
    const std::string* value = take("fields");
    if (!value || *value == "progressive")
        return;
    if (*value != "tff" && *value != "bff")
        refuseValue("fields", *value, "progressive|tff|bff");
    if (!codec.fields)
        refuse(fmt::format("fields={} has no effect for {}: it only has progressive pictures", *value,
                           codec.name));
    // Both fields lie interleaved in one picture: QuickTime's 9 and 14, which libav calls TB and BT.
    settings.fields = *value == "tff" ? AV_FIELD_TB : AV_FIELD_BT;
}

void SettingsReader::readAspect() {
    const std::string* value = take("aspect");
    if (!value)
        return;
    const std::optional<AVRational> ratio = ratioOf(*value);
    if (!ratio)
        refuse(fmt::format("aspect={} is no pixel aspect; it is a ratio such as 1/1 or 59/54", *value));
    settings.aspect = *ratio;
}

void SettingsReader::readThreads() {
    const std::string* value = take("threads");
    if (!value || *value == "auto")
        return;
    const auto threads = number<int>(*value);
    if (!threads || *threads < 1 || *threads > mostThreads)
        refuse(fmt::format("threads={} is not possible; it is auto or a number from 1 to {}", *value,
                           mostThreads));
    settings.threads = *threads;
}

void SettingsReader::readTimecode() {
    if (const std::string* value = take("timecode")) {
        if (!looksLikeTimecode(*value))
            refuse(fmt::format("timecode={} is no time code; it reads 01:00:00:00", *value));
        settings.timecode = *value;
    }
    if (const std::string* value = take("reel"))
        settings.reel = *value;
}

void SettingsReader::readMetadata() {
    const std::string prefix = "meta.";
    for (auto entry = given.lower_bound(prefix);
         entry != given.end() && entry->first.compare(0, prefix.size(), prefix) == 0;) {
        if (entry->first.size() == prefix.size())
            refuse("meta. lacks the name of the metadata after the point");
        settings.metadata.emplace_back(entry->first.substr(prefix.size()), entry->second);
        entry = given.erase(entry);
    }
}

void SettingsReader::refuseTheRest() const {
    if (given.empty())
        return;
    const std::string& key = given.begin()->first;
    const std::vector<std::string> others = codecsWithOption(key);
    if (!others.empty())
        refuse(fmt::format("{} has no effect for {}; it belongs to {}", key, codec.name,
                           fmt::join(others, ", ")));
    std::vector<std::string> keys = {"profile",   "bitdepth", "alpha",    "curve", "colour",
                                     "primaries", "transfer", "matrix",   "range", "fields",
                                     "aspect",    "threads",  "timecode", "reel",  "meta.KEY"};
    for (const CodecOption& option : codec.options)
        keys.emplace_back(option.key);
    refuse(fmt::format("there is no setting \"{}\"; {} has {}", key, codec.name, fmt::join(keys, ", ")));
}

}  // namespace Morvane::Worker
