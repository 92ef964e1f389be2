#pragma once

#include <optional>
#include <string>

#include "host/images/IntegerFile.h"
#include "host/images/PictureChoice.h"
#include "host/images/PictureHeader.h"

namespace Corvel {

/// What an ordinary file of whole numbers says, which is one that IntegerFile.h reads and whose header has
/// nothing unusual in it.
struct IntegerStatement {
    IntegerFile file;
    PictureHeader header;
    ChannelLayout layout;  ///< of the picture that was chosen
    bool straightAlpha = false;
};

/// The statement of the file at `path`; nothing for a file that is not ordinary, of which the image library
/// knows more, and for one whose name does not end as its kind does. Says what the library says of the same
/// picture, but for its attributes, which are left in the file. Throws UnreadableImage where the file has not
/// what was chosen.
std::optional<IntegerStatement> stateOfIntegers(const std::string& path, const PictureChoice& choice);

}  // namespace Corvel
