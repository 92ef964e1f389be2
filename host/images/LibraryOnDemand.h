#pragma once

namespace Corvel {

/// The function `entry` of the shared library `file`, one of those that are only loaded when something needs
/// them, by the first that does; the library stays until the process ends. It is found by the run path of
/// whoever asks, as the SDK is. `what` names it for people: "image". Throws std::runtime_error with the
/// loader's reason, or where a limit on memory leaves no room for it.
void* entryOfLibrary(const char* file, const char* entry, const char* what);

}  // namespace Corvel
