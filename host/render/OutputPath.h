#pragma once

#include <string>

namespace Corvel {

/// The file that `output` stands for: where it is a symbolic link, what the link points to in the end, also
/// when there is nothing yet. A movie then takes the place of that file and the link stays, as with any
/// program that writes into a file; renaming a new movie over the link itself would cut it. The path
/// unchanged where it is no link, or one that goes round in circles.
std::string outputBehindLinks(const std::string& output);

}  // namespace Corvel
