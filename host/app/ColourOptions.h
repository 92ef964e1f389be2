#pragma once

#include <CLI/CLI.hpp>

#include "host/colour/ColourRequest.h"

namespace Corvel {

/// Declares the options of colour management, which set `request`; it must live until the command line is
/// parsed.
void declareColourOptions(CLI::App& app, ColourRequest& request);

}  // namespace Corvel
