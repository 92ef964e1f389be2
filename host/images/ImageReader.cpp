#include "host/images/ImageReader.h"

#include "host/images/LibraryReader.h"

namespace Corvel {

std::unique_ptr<ImageReader> createImageReader() {
    return std::make_unique<LibraryReader>();
}

}  // namespace Corvel
