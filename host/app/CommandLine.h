#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <vector>

#include "host/app/Command.h"

namespace Corvel {

/// Puts every command with its options on the command line `app`: names, help, footers, layout. `commands`
/// must live as long as `app` is used. Both the program and what describes it (manual page, completions) call
/// this, so that they can't differ.
void declareCommandLine(CLI::App& app, const std::vector<std::unique_ptr<Command>>& commands);

}  // namespace Corvel
