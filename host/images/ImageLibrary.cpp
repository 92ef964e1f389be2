#include "host/images/ImageLibrary.h"

#include "host/images/LibraryOnDemand.h"

namespace Corvel {

const ImageLibrary& imageLibrary() {
    static const ImageLibrary& loaded = *reinterpret_cast<ImageLibraryEntry>(
        entryOfLibrary(CORVEL_IMAGE_LIBRARY, imageLibraryEntryName, "image"))();
    return loaded;
}

}  // namespace Corvel
