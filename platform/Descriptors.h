#pragma once

namespace Morvane::Platform {

/// Closes every open descriptor of the calling process from `first` on. For the start of a program, before it
/// has opened anything of its own: whatever it inherited from the program that forked it goes.
void closeDescriptorsFrom(int first);

}  // namespace Morvane::Platform
