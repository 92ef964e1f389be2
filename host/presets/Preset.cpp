#include "host/presets/Preset.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/render/Failure.h"

namespace Corvel {
namespace {

using Json = nlohmann::ordered_json;

// Settings belong to a codec, so these two go together.
constexpr const char* codecKnob = "codec";
constexpr const char* settingsKnob = "settings";

[[noreturn]] void refuse(const std::string& origin, const std::string& reason) {
    throw Failure(Exit::Usage, fmt::format("{} is no preset: {}", origin, reason));
}

std::string valueText(const Json& value, const std::string& knob, const std::string& origin) {
    if (value.is_string()) {
        return value.get<std::string>();
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "on" : "off";
    }
    if (value.is_number()) {
        return value.dump();
    }
    refuse(origin, fmt::format("the value of {} is no text, number, true or false", knob));
}

bool holds(const std::vector<KnobSetting>& settings, const std::string& knob) {
    return std::any_of(settings.begin(), settings.end(),
                       [&](const KnobSetting& setting) { return setting.knob == knob; });
}

}  // namespace

Preset readPreset(const std::string& json, const std::string& origin) {
    const Json document = Json::parse(json, nullptr, false);
    if (!document.is_object()) {
        refuse(origin, "it is no JSON object");
    }
    const auto knobs = document.find("knobs");
    if (knobs == document.end() || !knobs->is_object()) {
        refuse(origin, "it has no object \"knobs\"");
    }
    Preset preset;
    if (const auto text = document.find("description"); text != document.end() && text->is_string()) {
        preset.description = text->get<std::string>();
    }
    for (const auto& [knob, value] : knobs->items()) {
        preset.knobs.push_back({knob, valueText(value, knob, origin)});
    }
    return preset;
}

std::string presetJson(const Preset& preset) {
    Json knobs = Json::object();
    for (const KnobSetting& setting : preset.knobs) {
        knobs[setting.knob] = setting.text;
    }
    const Json document = {{"description", preset.description}, {"knobs", knobs}};
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

std::vector<KnobSetting> onTopOf(const Preset& preset, const std::vector<KnobSetting>& own) {
    const bool otherCodec = holds(own, codecKnob);
    std::vector<KnobSetting> settings;
    for (const KnobSetting& setting : preset.knobs) {
        const bool orphan = setting.knob == settingsKnob && otherCodec;
        if (!orphan && !holds(own, setting.knob)) {
            settings.push_back(setting);
        }
    }
    settings.insert(settings.end(), own.begin(), own.end());
    return settings;
}

}  // namespace Corvel
