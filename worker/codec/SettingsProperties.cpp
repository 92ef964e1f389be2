#include "worker/Status.h"
#include "worker/codec/ColourNames.h"
#include "worker/codec/QualityText.h"
#include "worker/codec/SettingDescription.h"
#include "worker/codec/Settings.h"
#include "worker/codec/SettingsText.h"

#include "property/PropertyList.h"

#include <fmt/format.h>
#include <boost/token_functions.hpp>

#include <charconv>
#include <set>

namespace Morvane::Worker {

namespace {

const std::string factPrefix = "codec/";
const std::string metadataPrefix = "meta.";

void addText(Property::PropertyList& list, const std::string& name, const std::string& text) {
    auto property = std::make_unique<Property::String>(name, 1);
    property->values[0] = text;
    list.push_back(std::move(property));
}

void addNumber(Property::PropertyList& list, const std::string& name, int number) {
    auto property = std::make_unique<Property::Int>(name, 1);
    property->values[0] = number;
    list.push_back(std::move(property));
}

/// Only whole numbers survive a property list as numbers; everything else travels as text.
void addValue(Property::PropertyList& list, const std::string& name, const std::string& value) {
    int number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error == std::errc() && end == value.data() + value.size() && value == std::to_string(number))
        addNumber(list, name, number);
    else
        addText(list, name, value);
}

void addFacts(Property::PropertyList& list, const Codec& codec) {
    addNumber(list, factPrefix + "bits", codec.highestBits());
    addNumber(list, factPrefix + "alpha", codec.hasAlpha());
    addNumber(list, factPrefix + "intra", codec.intraOnly);
    addNumber(list, factPrefix + "lossless", codec.lossless != Lossless::Never);
    addText(list, factPrefix + "sizes", codec.sizeSentence);
    addText(list, factPrefix + "quality", describeQualities(codec));
}

std::string joined(const std::set<int>& numbers) {
    std::string text;
    for (const int number : numbers)
        text += (text.empty() ? "" : "|") + std::to_string(number);
    return text;
}

std::string depths(const Codec& codec) {
    std::set<int> bits;
    for (const CodecPicture& picture : codec.pictures)
        bits.insert(picture.bits);
    return (codec.defaultBits == 0 ? "auto|" : "") + joined(bits);
}

std::vector<SettingDescription> commonKeys(const Settings& settings) {
    const Codec& codec = *settings.codec;
    const bool fixedMatrix = codec.colour == ColourModel::Jpeg || codec.colour == ColourModel::OldVideo;
    return {{"bitdepth", "integer", depths(codec), "Bits a channel"},
            {"alpha", "choice", codec.hasAlpha() ? "none|straight|premultiplied" : "none",
             "What becomes of the alpha channel"},
            {"curve", "choice", settings.alpha == AlphaMode::Straight ? curveNames() : "",
             "The curve that the pixels went through, for alpha=straight"},
            {"primaries", "choice", ColourNames::primariesNames(), "The colours of the primaries, as a tag"},
            {"transfer", "choice", ColourNames::transferNames(), "The transfer curve, as a tag"},
            {"matrix", "choice", fixedMatrix ? "smpte170m" : ColourNames::matrixNames(),
             "The matrix of YCbCr, used and tagged"},
            {"range", "choice",
             codec.colour == ColourModel::AnyRange ? "tv|pc" : ColourNames::nameOf(settings.colour.range),
             "Video range or full range"},
            {"fields", "choice", codec.fields ? "progressive|tff|bff" : "progressive",
             "Order of the fields of interlaced pictures"},
            {"aspect", "ratio", "", "Pixel aspect; empty: the codec's own"},
            {"threads", "integer", "auto|1..256", "Threads that convert and encode"},
            {"timecode", "text", "", "Provisional start of the time-code track, for a movie that is cut off"},
            {"reel", "text", "", "Provisional reel name of the time-code track"}};
}

const char* kindName(OptionKind kind) {
    return kind == OptionKind::Choice ? "choice" : kind == OptionKind::Integer ? "integer" : "number";
}

/// Whether the property tells about the codec or about an option instead of setting one.
bool isDescription(const std::string& name) {
    if (name.compare(0, factPrefix.size(), factPrefix) == 0)
        return true;
    if (name.compare(0, metadataPrefix.size(), metadataPrefix) == 0)
        return false;
    for (const std::string suffix : {"/type", "/values", "/help"})
        if (name.size() > suffix.size() &&
            name.compare(name.size() - suffix.size(), suffix.size(), suffix) == 0)
            return true;
    return false;
}

}  // namespace

std::vector<SettingDescription> describeSettings(const Settings& settings) {
    std::vector<SettingDescription> keys;
    if (!settings.profile.empty()) {
        std::string names = std::string_view(settings.codec->defaultProfile) == "auto" ? "auto" : "";
        for (const CodecProfile& profile : settings.codec->profiles)
            names += (names.empty() ? "" : "|") + std::string(profile.name);
        keys.push_back({"profile", "choice", names, "The profile that the stream states"});
    }
    const auto common = commonKeys(settings);
    keys.insert(keys.end(), common.begin(), common.end());
    for (const CodecOption& option : settings.codec->options)
        keys.push_back({option.key, kindName(option.kind), option.values, option.help});
    return keys;
}

std::string Settings::propertyListText() const {
    Property::PropertyList list;
    addFacts(list, *codec);
    SettingPairs pairs = parseSettingPairs(text());
    for (const SettingDescription& description : describeSettings(*this)) {
        std::string value;
        for (const auto& [key, given] : pairs)
            if (key == description.key)
                value = given;
        addValue(list, description.key, value);
        addText(list, description.key + "/type", description.type);
        addText(list, description.key + "/values", description.values);
        addText(list, description.key + "/help", description.help);
    }
    for (const auto& [key, value] : metadata)
        addText(list, metadataPrefix + key, value);
    return Property::writePropertyList(list);
}

Settings Settings::fromPropertyList(const std::string& listText, const Codec& row) {
    Property::PropertyList list;
    try {
        Property::readPropertyList(listText, list);
    } catch (const boost::escaped_list_error& error) {
        throw StatusError(Status::NotSupportedByCodec,
                          fmt::format("the property list cannot be read: {}", error.what()));
    }
    SettingPairs pairs;
    for (const auto& property : list) {
        const std::string value = property->toString();
        if (!isDescription(property->name) && !value.empty())
            pairs.emplace_back(property->name, value);
    }
    return parse(formatSettingPairs(pairs), row);
}

}  // namespace Morvane::Worker
