#pragma once

#include <string>

namespace Morvane::QuickTime {

/// What a controller and its worker share, seen from outside of both. A controller removes its own objects
/// when it is destroyed; these operations are for an application that cannot destroy it, since the
/// controller's thread waits for an answer of a worker that has died.

/// The bridge name that a shared file's path names (data or request file); empty for any other path.
std::string bridgeNameOf(const std::string& path);

/// Removes the shared file `path` and both semaphores of its bridge. Nothing happens for a path that is no
/// shared file's. Objects that are gone already are passed over.
void removeSharedObjects(const std::string& path);

}  // namespace Morvane::QuickTime
