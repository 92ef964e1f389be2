#include "host/burnin/TextLibrary.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <stdexcept>

namespace Corvel {
namespace {

const TextLibrary& load() {
    // Found by the run path of whoever asks, as the SDK is.
    void* const library = dlopen(CORVEL_TEXT_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    void* const entry = library ? dlsym(library, textLibraryEntryName) : nullptr;
    if (!entry) {
        throw std::runtime_error(fmt::format("the text library cannot be loaded: {}", dlerror()));
    }
    return *reinterpret_cast<TextLibraryEntry>(entry)();
}

}  // namespace

const TextLibrary& textLibrary() {
    static const TextLibrary& loaded = load();
    return loaded;
}

}  // namespace Corvel
