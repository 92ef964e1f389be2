#pragma once

#include <CLI/CLI.hpp>

#include "host/burnin/BurnInRequest.h"

namespace Corvel {

/// Declares --slate, --burnin, --burnin-text and --field, which set `request`; it must live until the command
/// line is parsed.
void declareBurnInOptions(CLI::App& app, BurnInRequest& request);

}  // namespace Corvel
