#include "host/images/ImageLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <stdexcept>

namespace Corvel {
namespace {

const ImageLibrary& load() {
    // Found by the run path of whoever asks, as the SDK is.
    void* const library = dlopen(CORVEL_IMAGE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    void* const entry = library ? dlsym(library, imageLibraryEntryName) : nullptr;
    if (!entry) {
        throw std::runtime_error(fmt::format("the image library cannot be loaded: {}", dlerror()));
    }
    return *reinterpret_cast<ImageLibraryEntry>(entry)();
}

}  // namespace

const ImageLibrary& imageLibrary() {
    static const ImageLibrary& loaded = load();
    return loaded;
}

}  // namespace Corvel
