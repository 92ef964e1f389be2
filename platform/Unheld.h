#pragma once

#include <string>
#include <vector>

namespace Morvane::Platform {

/// What dead processes have left, told by the system itself: a file that no process anywhere has open for
/// writing or mapped for it, in whatever container or user's session that process may be. Age and process
/// numbers are not looked at. Any thread; nothing blocks.

/// Whether `path` is a regular file of the calling process's user that nobody holds open for writing, itself
/// included. False also where that cannot be told for certain: another user's file, a symbolic link, a file
/// system that does not know.
bool isUnheldFile(const std::string& path);

/// The names (without a leading "/") of the user's named semaphores that begin with `prefix` and that nobody
/// has open. Empty where the system does not list semaphores.
std::vector<std::string> unheldSemaphores(const std::string& prefix);

/// Removes the named semaphore (no leading "/"), also where it still has the passing name under which the C
/// library made it, since its maker was killed before that name was taken away. False when it is gone already
/// or is not this user's to remove.
bool removeSemaphore(const std::string& name);

}  // namespace Morvane::Platform
