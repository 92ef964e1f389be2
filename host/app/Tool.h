#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// Where `program` of the bundle's Resources lies: one that works on what the host itself does not touch,
/// such as movie files.
std::string toolPath(const std::string& program);

/// Has that program take this process's place, and so its exit code is the command's. Throws Failure
/// (HelperFailed) when it cannot be started.
[[noreturn]] void becomeTool(const std::string& program, const std::vector<std::string>& arguments);

}  // namespace Corvel
