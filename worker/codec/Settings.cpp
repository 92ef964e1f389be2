#include "worker/codec/Settings.h"

#include "worker/codec/ColourNames.h"
#include "worker/codec/SettingsReader.h"
#include "worker/codec/SettingsText.h"

#include <fmt/format.h>

namespace Morvane::Worker {

namespace {

std::string numberOrAuto(int number) {
    return number == 0 ? "auto" : std::to_string(number);
}

std::string fieldsName(AVFieldOrder order) {
    return order == AV_FIELD_TB ? "tff" : order == AV_FIELD_BT ? "bff" : "progressive";
}

/// Every effective value, in the order of the normalised text.
SettingPairs pairsOf(const Settings& settings) {
    SettingPairs pairs;
    if (!settings.profile.empty())
        pairs.emplace_back("profile", settings.profile);
    pairs.emplace_back("bitdepth", numberOrAuto(settings.bits));
    pairs.emplace_back("alpha", alphaModeName(settings.alpha));
    if (settings.alpha == AlphaMode::Straight)
        pairs.emplace_back("curve", curveName(settings.curve));
    pairs.emplace_back("primaries", ColourNames::nameOf(settings.colour.primaries));
    pairs.emplace_back("transfer", ColourNames::nameOf(settings.colour.transfer));
    pairs.emplace_back("matrix", ColourNames::nameOf(settings.colour.matrix));
    pairs.emplace_back("range", ColourNames::nameOf(settings.colour.range));
    pairs.emplace_back("fields", fieldsName(settings.fields));
    if (settings.aspect.num != 0)
        pairs.emplace_back("aspect", fmt::format("{}/{}", settings.aspect.num, settings.aspect.den));
    pairs.emplace_back("threads", numberOrAuto(settings.threads));
    pairs.insert(pairs.end(), settings.options.begin(), settings.options.end());
    if (!settings.timecode.empty())
        pairs.emplace_back("timecode", settings.timecode);
    if (!settings.reel.empty())
        pairs.emplace_back("reel", settings.reel);
    for (const auto& [key, value] : settings.metadata)
        pairs.emplace_back("meta." + key, value);
    return pairs;
}

}  // namespace

const char* alphaModeName(AlphaMode mode) {
    switch (mode) {
        case AlphaMode::None:
            return "none";
        case AlphaMode::Straight:
            return "straight";
        case AlphaMode::Premultiplied:
            return "premultiplied";
    }
    return "none";
}

Settings Settings::defaults(const Codec& codec) {
    return parse("", codec);
}

Settings Settings::parse(const std::string& text, const Codec& row) {
    return SettingsReader(row, parseSettingPairs(text)).read();
}

std::string Settings::text() const {
    return formatSettingPairs(pairsOf(*this));
}

std::string Settings::summary() const {
    std::string lines = fmt::format("{} ({})\n", codec->name, codec->type);
    for (const auto& [key, value] : pairsOf(*this))
        lines += fmt::format("{}: {}\n", key, value);
    return lines;
}

std::string Settings::option(const std::string& key) const {
    for (const auto& [name, value] : options)
        if (name == key)
            return value;
    return "auto";
}

}  // namespace Morvane::Worker
