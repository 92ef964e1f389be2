#pragma once

#include <CLI/CLI.hpp>
#include <set>
#include <string>
#include <vector>

namespace Corvel {

/// The options that stood on the parsed command line `app`, as words that say the same to another program
/// with these options: "--name=value", in the order in which they are declared. Operands are left out, and so
/// are the options that have one of the names in `without` ("--output").
std::vector<std::string> givenOptions(const CLI::App& app, const std::set<std::string>& without = {});

}  // namespace Corvel
