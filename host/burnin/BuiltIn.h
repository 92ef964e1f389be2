#pragma once

#include <map>
#include <string>

namespace Corvel {

/// The templates that come with the application, by name, as the JSON that a person would write.
const std::map<std::string, const char*>& builtInBurnIns();
const std::map<std::string, const char*>& builtInSlates();

}  // namespace Corvel
