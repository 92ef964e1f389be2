#pragma once

#include <string>

#include "timecode/FrameRate.h"

namespace Corvel {

/// The time code at which a movie starts. All functions are pure.

/// What is wrong with a time code at that rate, as a sentence; empty when nothing is. It reads HH:MM:SS:FF,
/// with ";" in front of the frames (or everywhere) for drop-frame; hours to 23, minutes and seconds to 59,
/// frames below the rate.
std::string timecodeFault(const std::string& text, Morvane::Timecode::FrameRate rate);

/// Whether the text is written as drop-frame.
bool isDropFrame(const std::string& text);

/// The time code `frames` earlier, written as non-drop: HH:MM:SS:FF. Goes round at midnight. REQUIRES: no
/// fault.
std::string timecodeBefore(const std::string& text, Morvane::Timecode::FrameRate rate, int frames);

}  // namespace Corvel
