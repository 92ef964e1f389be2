#pragma once

#include <string>
#include <vector>

#include "host/play/OutputDeviceList.h"

namespace Corvel {

/// A device and the name to open it by, which for a network device gives the address.
struct ChosenDevice {
    const OutputDeviceEntry* entry;
    std::string name;
};

/// The device that a person means: by its number, by its name or an unambiguous beginning of it (letter case
/// ignored), or "Network HOST:PORT" for another address than the listed one. Throws Failure (Usage), which
/// names what there is. The result refers to `devices`.
ChosenDevice chooseDevice(const std::vector<OutputDeviceEntry>& devices, const std::string& text);

/// The mode that a person means: by its name ("1920 x 1080, 25"), or as WIDTHxHEIGHT@RATE, blanks ignored. A
/// rate is met within 0.005, so that 23.98 is 23.976. The rate may be left out where the size has only one.
/// Throws Failure (Usage), which names the rates of that size or else the sizes.
const Morvane::QuickTime::VideoOutputMode& chooseMode(const OutputDeviceEntry& device,
                                                      const std::string& text);

}  // namespace Corvel
