#pragma once

#include <string>
#include <vector>

namespace Morvane::Testing {

/// What a program that we did not write prints on standard output. Arguments reach it as they are, without a
/// shell in between. Throws std::runtime_error where it does not end with 0.
std::string outputOf(const std::vector<std::string>& arguments);

}  // namespace Morvane::Testing
