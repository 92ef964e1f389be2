#pragma once

#include <exception>
#include <string>

namespace Corvel {

/// The reason in `error` for a person. What the language and its library throw for want of memory or threads
/// says little about itself.
std::string reasonOf(const std::exception& error);

}  // namespace Corvel
