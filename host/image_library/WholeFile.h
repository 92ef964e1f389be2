#pragma once

#include <string>
#include <vector>

namespace Corvel {

/// Reads all of a file into `bytes`, which is as long as the file then. False where it cannot be read.
bool readWholeFile(const std::string& path, std::vector<unsigned char>& bytes);

}  // namespace Corvel
