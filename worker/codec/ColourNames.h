#pragma once

#include "worker/codec/Colour.h"

#include <optional>
#include <string>

/// Colours by name, as the settings have them: libav's names, some shorter ones ("pq", "p3-d65"), and the
/// numbers of ITU-T H.273. What says nothing about colour ("unknown") and what no conversion here can make
/// has no value.
namespace Morvane::Worker::ColourNames {

std::optional<AVColorPrimaries> primaries(const std::string& name);
std::optional<AVColorTransferCharacteristic> transfer(const std::string& name);
std::optional<AVColorSpace> matrix(const std::string& name);
std::optional<AVColorRange> range(const std::string& name);

/// Primaries, transfer and matrix of a preset: bt709, srgb, bt601, p3-d65, bt2020, pq or hlg.
std::optional<ColourDecision> preset(const std::string& name);

/// All names that the operations above take, "a|b|c", for a person.
std::string primariesNames();
std::string transferNames();
std::string matrixNames();
std::string presetNames();

/// The one name that the normalised text has for it.
std::string nameOf(AVColorPrimaries value);
std::string nameOf(AVColorTransferCharacteristic value);
std::string nameOf(AVColorSpace value);
std::string nameOf(AVColorRange value);

}  // namespace Morvane::Worker::ColourNames
