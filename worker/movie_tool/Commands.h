#pragma once

#include <string>

namespace Morvane::Worker {

/// `corvel-movie recover FILE`: makes an ordinary movie of what a crash left and says on standard output what
/// it kept. Throws StatusError.
void recoverCommand(const std::string& path);

}  // namespace Morvane::Worker
