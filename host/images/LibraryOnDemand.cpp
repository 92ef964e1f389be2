#include "host/images/LibraryOnDemand.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <stdexcept>

namespace Corvel {

void* entryOfLibrary(const char* file, const char* entry, const char* what) {
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* const found = library ? dlsym(library, entry) : nullptr;
    if (!found) {
        throw std::runtime_error(fmt::format("the {} library cannot be loaded: {}", what, dlerror()));
    }
    return found;
}

}  // namespace Corvel
