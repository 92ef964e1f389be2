#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Corvel {

/// What a person asks to have written into the pictures.
struct BurnInRequest {
    std::string burnIn;              ///< name or file of a template, empty for none
    std::string slate;               ///< the same for the frame before the first one
    std::vector<std::string> texts;  ///< "PLACE=TEXT", besides the template's
    std::vector<std::pair<std::string, std::string>> fields;
};

}  // namespace Corvel
