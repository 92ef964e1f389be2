#pragma once

#include <string>

#include "host/manual/OptionFacts.h"

namespace Corvel {

/// Completions as each shell wants them.
std::string bashCompletion(const ProgramFacts& program);
std::string zshCompletion(const ProgramFacts& program);
std::string fishCompletion(const ProgramFacts& program);

/// The manual page's section on commands, in scdoc's markup (scdoc(5)).
std::string manualSection(const ProgramFacts& program);

}  // namespace Corvel
