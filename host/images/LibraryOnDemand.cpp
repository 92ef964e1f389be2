#include "host/images/LibraryOnDemand.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <cstdint>
#include <stdexcept>

#include "platform/Room.h"

namespace Corvel {
namespace {

// The largest of them brings some hundred libraries along, whose start-up does not get along with less.
constexpr std::uint64_t mappedBytes = std::uint64_t{512} << 20;

}  // namespace

void* entryOfLibrary(const char* file, const char* entry, const char* what) {
    if (!Morvane::Platform::hasRoomForMappings(mappedBytes)) {
        throw std::runtime_error(fmt::format(
            "the {} library cannot be loaded: a limit on memory (ulimit -v) leaves less than {} MiB", what,
            mappedBytes >> 20));
    }
    void* const library = dlopen(file, RTLD_NOW | RTLD_LOCAL);
    void* const found = library ? dlsym(library, entry) : nullptr;
    if (!found) {
        throw std::runtime_error(fmt::format("the {} library cannot be loaded: {}", what, dlerror()));
    }
    return found;
}

}  // namespace Corvel
