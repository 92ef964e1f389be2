#include "host/images/ImageReader.h"

#include <OpenImageIO/imageio.h>

#include "host/images/LibraryReader.h"

namespace Corvel {

std::unique_ptr<ImageReader> createImageReader() {
    return std::make_unique<LibraryReader>();
}

std::string readableFormats() {
    std::string names = OIIO::get_string_attribute("input_format_list");
    for (std::size_t comma = names.find(','); comma != std::string::npos;
         comma = names.find(',', comma + 1)) {
        names.insert(comma + 1, " ");
    }
    return names;
}

}  // namespace Corvel
