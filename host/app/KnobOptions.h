#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "host/render/RenderRequest.h"

namespace Corvel {

/// The saved name of the knob that names the sound.
constexpr const char* audioKnob = "audiofile";

/// Declares an option for each knob of the movie writer, under its saved name and under a friendlier one, and
/// one that reaches any knob of any writer. What is given is appended to `settings`, which must live until
/// the command line is parsed.
void declareKnobOptions(CLI::App& app, std::vector<KnobSetting>& settings);

/// Throws Failure (InputUnreadable) for a file that is named for a knob and isn't there or can't be read.
void checkKnobFiles(const std::vector<KnobSetting>& settings);

}  // namespace Corvel
