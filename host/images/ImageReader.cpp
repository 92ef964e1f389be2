#include "host/images/ImageReader.h"

#include <OpenImageIO/imageio.h>

#include "host/images/LibraryReader.h"

namespace Corvel {

std::unique_ptr<ImageReader> createImageReader() {
    return std::make_unique<LibraryReader>();
}

std::string readableFormats() {
    std::string names;
    for (const char character : OIIO::get_string_attribute("input_format_list")) {
        names += character;
        names += character == ',' ? " " : "";
    }
    return names;
}

}  // namespace Corvel
