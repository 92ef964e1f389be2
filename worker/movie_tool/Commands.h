#pragma once

#include <string>

namespace Morvane::Worker {

/// `corvel-movie recover FILE`: makes an ordinary movie of what a crash left and says on standard output what
/// it kept. Throws StatusError.
void recoverCommand(const std::string& path);

/// `corvel-movie sound FILE`: says on standard output which sound of that file `addAudioFile` would take.
/// Throws StatusError where there is none.
void soundCommand(const std::string& path);

}  // namespace Morvane::Worker
