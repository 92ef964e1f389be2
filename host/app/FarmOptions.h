#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "host/farm/Farm.h"
#include "host/render/RenderRequest.h"

namespace Corvel {

/// Declares the options of `corvel render` that spread a render over processes and machines.
void declareFarmOptions(CLI::App& app, FarmRequest& farm);

/// Renders `request`, as it was parsed from `app`, in chunks. Every option but those of frames, output and
/// progress, which are each chunk's own, and those of the farm goes on to the chunks as it was given. Throws
/// as render does.
Exit renderInChunks(const CLI::App& app, const RenderRequest& request, const FarmRequest& farm,
                    Reporter& reporter);

}  // namespace Corvel
