#pragma once

#include <cstdint>
#include <string>

namespace Morvane::Worker {

/// What the settings dialog shows and lets a person change.
struct DialogState {
    std::int32_t codec = 0;  ///< index into the codec list
    std::int32_t quality = 4;
    std::int32_t keyFrameRate = 1;
    float framesPerSecond = 24;
    std::string settings;
};

/// Lets a person change `state` and answers when they have closed the dialog; a person who cancels changes
/// nothing. Without a display it answers at once, `state` unchanged, with a line on standard error.
void editInDialog(DialogState& state);

}  // namespace Morvane::Worker
