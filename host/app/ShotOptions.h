#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "host/render/RenderRequest.h"

namespace Corvel {

/// Declares which pictures of the input's files are read and what is done to them on their way into a movie:
/// curves, geometry, colours, burn-ins. The options set `request`, which must live until the command line is
/// parsed.
void declarePictureOptions(CLI::App& app, RenderRequest& request);

/// Declares everything that says what the frames of a movie are: which frames, the Write node's knobs,
/// pictures as above, time code and metadata. `what` is what the command does with
/// frames, for the help: "render". The options set `request` and `preset`, which must live until the command
/// line is parsed.
void declareShotOptions(CLI::App& app, const std::string& what, RenderRequest& request, std::string& preset);

/// Puts the knobs that were given on top of those of the preset (none where it is empty) and looks after the
/// files that they name. Throws Failure.
void settleKnobs(RenderRequest& request, const std::string& preset);

}  // namespace Corvel
