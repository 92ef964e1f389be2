#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quicktime/QuickTimeVideoOutputInterface.h"

namespace Corvel {

class Reporter;

/// A video output of this machine and what it can show.
struct OutputDeviceEntry {
    std::string name;
    Morvane::QuickTime::VideoOutputHandle handle = nullptr;
    std::vector<Morvane::QuickTime::VideoOutputMode> modes;

    /// The handle as people and programs see it: a small number above 0.
    std::uintptr_t number() const { return reinterpret_cast<std::uintptr_t>(handle); }
};

/// Asks the helper behind `output` for its devices and the modes of each. Blocks until it has answered.
std::vector<OutputDeviceEntry> listOutputDevices(Morvane::QuickTime::QuickTimeVideoOutputInterface& output);

/// Starts a helper, asks it, and stops it. Throws Failure (HelperFailed).
std::vector<OutputDeviceEntry> askForOutputDevices(Reporter& reporter);

/// For people: each device with its number and name, below it a line for each size with the rates of that
/// size.
std::string deviceTable(const std::vector<OutputDeviceEntry>& devices);

/// For programs: an array of {name, handle, modes: [{width, height, rate, name}]}, rates in frames a second.
std::string deviceJson(const std::vector<OutputDeviceEntry>& devices);

}  // namespace Corvel
