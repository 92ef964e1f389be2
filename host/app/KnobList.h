#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "Kex/Image/Knob.h"

namespace Corvel {

/// A knob as `corvel knobs --json` prints it: name, label, kind, storage, entries, min, max, flags, tooltip,
/// value. Kind and storage are the numbers that the plug-in gave, flags their sum, what the knob doesn't have
/// is null. The value of an enumeration is its index, of a checkbox a boolean, of a button null.
nlohmann::ordered_json knobJson(const Kex::Image::Knob& knob);

/// A knob in a few lines for a person: name, label, value, what it takes, what it does.
std::string knobText(const Kex::Image::Knob& knob);

}  // namespace Corvel
