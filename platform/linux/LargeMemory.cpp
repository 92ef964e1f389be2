#include "platform/LargeMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace Morvane::Platform {

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;
constexpr std::size_t usualAlignment = 64;  // bytes; of the widest vectors

}  // namespace

void FreeLargeMemory::operator()(void* memory) const noexcept {
    std::free(memory);
}

LargeMemory allocateLarge(std::size_t bytes) {
    const bool large = bytes >= largePage;
    const std::size_t alignment = large ? largePage : usualAlignment;
    void* memory = nullptr;
    if (posix_memalign(&memory, alignment, bytes == 0 ? 1 : bytes) != 0) {
        throw std::bad_alloc();
    }
    if (large) {
        // The rest beyond the last whole large page stays in small ones, as does everything on a system that
        // is set never to use large ones.
        madvise(memory, bytes / largePage * largePage, MADV_HUGEPAGE);
    }
    return LargeMemory(static_cast<std::byte*>(memory));
}

}  // namespace Morvane::Platform
