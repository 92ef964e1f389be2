#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "host/render/RenderRequest.h"

namespace Corvel {

/// Declares --frames and --missing, which set `frames` and `missing`; both must live until the command line
/// is parsed. `what` is what the command does with frames, for the help: "render".
void declareFrameOptions(CLI::App& app, const std::string& what, std::vector<int>& frames, Missing& missing);

/// Declares --handles, --step, --reverse and --hold, which set `order`; it must live until the command line
/// is parsed.
void declareOrderOptions(CLI::App& app, FrameOrder& order);

}  // namespace Corvel
