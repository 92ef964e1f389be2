#pragma once

#include <string>
#include <vector>

#include "host/render/RenderRequest.h"

namespace Corvel {

/// Knob values under a name that a person chose.
struct Preset {
    std::string name;
    std::string description;         ///< one line; may be empty
    std::vector<KnobSetting> knobs;  ///< in the order of the file
    bool shipped = false;            ///< comes with the application and can't be deleted
};

/// The preset that a JSON document holds: {"description": TEXT, "knobs": {NAME: VALUE, …}}, where a value is
/// a text, a number, true or false. `origin` names the document in messages. Throws Failure (Usage).
Preset readPreset(const std::string& json, const std::string& origin);

/// The document that `readPreset` reads back.
std::string presetJson(const Preset& preset);

/// The settings of a preset with a person's own on top: of a knob that both have, only the person's is left,
/// and codec settings are dropped with the codec that they were made for.
std::vector<KnobSetting> onTopOf(const Preset& preset, const std::vector<KnobSetting>& own);

}  // namespace Corvel
