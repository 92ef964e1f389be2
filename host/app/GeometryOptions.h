#pragma once

#include <CLI/CLI.hpp>
#include <optional>

#include "host/render/RenderRequest.h"

namespace Corvel {

/// Declares --format, --fit, --filter, --crop and --mask, which set `format` and `geometry`; both must live
/// until the command line is parsed.
void declareGeometryOptions(CLI::App& app, std::optional<FormatRequest>& format, GeometryRequest& geometry);

}  // namespace Corvel
