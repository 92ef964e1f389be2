#pragma once

#include <string>
#include <vector>

#include "host/render/RenderRequest.h"

namespace Corvel {

/// Throws Failure (InputUnreadable), with the reason, for an audio file among `settings` that holds no sound
/// that can be decoded. Without this a render would learn it from the helper when all frames are done, since
/// sound is only added then.
///
/// `movieTool` is the program beside the helper, which reads sound with the helper's own code; where it
/// cannot be started nothing is checked. Blocks until it has looked at the beginning of the file.
void checkSounds(const std::vector<KnobSetting>& settings, const std::string& movieTool);

}  // namespace Corvel
