#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// Removes what bridges of this user's dead processes have left: private folders, shared files in the folder
/// that bridges use without a private one, and semaphores. Answers what has been removed, in words for a
/// person.
///
/// What a living process uses is never touched, however old it is and wherever that process runs: a private
/// folder is its process's as long as a lock on it is held, everything else as long as anybody has it open.
std::vector<std::string> sweepStaleObjects();

}  // namespace Corvel
