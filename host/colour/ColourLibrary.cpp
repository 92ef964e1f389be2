#include "host/colour/ColourLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <stdexcept>

namespace Corvel {
namespace {

const ColourLibrary& load() {
    // Found by the run path of whoever asks, as the SDK is.
    void* const library = dlopen(CORVEL_COLOUR_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    void* const entry = library ? dlsym(library, colourLibraryEntryName) : nullptr;
    if (!entry) {
        throw std::runtime_error(fmt::format("the colour library cannot be loaded: {}", dlerror()));
    }
    return *reinterpret_cast<ColourLibraryEntry>(entry)();
}

}  // namespace

const ColourLibrary& colourLibrary() {
    static const ColourLibrary& loaded = load();
    return loaded;
}

}  // namespace Corvel
