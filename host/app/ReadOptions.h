#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "host/images/PictureChoice.h"

namespace Corvel {

/// Declares --part, --layer, --stereo-view and --channels, which set `choice` and, for "rgb" and "rgba",
/// `depth`, the number of the movie's channels; both must live until the command line is parsed.
void declareReadOptions(CLI::App& app, PictureChoice& choice, std::optional<int>& depth);

}  // namespace Corvel
