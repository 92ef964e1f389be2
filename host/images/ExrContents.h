#pragma once

#include <string>

#include "host/images/FileContents.h"

namespace Corvel {

class ExrFile;

/// What there is in an open OpenEXR file, of any kind. Reads nothing but what opening it has read.
FileContents contentsOf(const ExrFile& file);

/// A text of a part's header, empty where there is none of that name.
std::string exrText(const ExrFile& file, int part, const char* name);

}  // namespace Corvel
