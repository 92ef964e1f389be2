#pragma once

#include <CLI/CLI.hpp>
#include <memory>

namespace Corvel {

/// How help is laid out: lines no wider than 100 characters, and switches that can be turned off as
/// "--[no-]name".
std::shared_ptr<CLI::Formatter> makeHelpFormatter();

}  // namespace Corvel
