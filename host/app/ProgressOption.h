#pragma once

#include <optional>
#include <string>

#include "host/app/Command.h"

namespace Corvel {

/// Declares --progress in `group` of the help.
void declareProgressOption(CLI::App& app, std::optional<ProgressStyle>& progress, const std::string& group);

/// Has the session's reporter show progress as wanted, else as fits where standard error leads to.
void useProgress(Session& session, const std::optional<ProgressStyle>& progress);

}  // namespace Corvel
