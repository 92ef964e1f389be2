#pragma once

#include <string>

#include "host/images/PictureChoice.h"

namespace Corvel {

/// File names of stereo shots, in which %V stands for the view ("left") and %v for its first letter ("l"),
/// also among folders. %% is no mark. All functions are pure.

/// Whether the path has such a mark.
bool hasViewMark(const std::string& path);

/// The path of one view. `view` must not be empty.
std::string withView(const std::string& path, const std::string& view);

/// The view whose files are meant unless another one is asked for.
constexpr const char* usualView = "left";

/// The path of the view that is chosen, else of the usual one. A file whose very name has a mark is itself.
std::string pathOfView(const std::string& path, const PictureChoice& choice);

}  // namespace Corvel
