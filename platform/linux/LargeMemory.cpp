#include "platform/LargeMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace Morvane::Platform {

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;
constexpr std::size_t usualAlignment = 64;  // bytes; of the widest vectors

std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

}  // namespace

void FreeLargeMemory::operator()(void* memory) const noexcept {
    std::free(memory);
}

LargeMemory allocateLarge(std::size_t bytes) {
    const std::size_t unit = bytes < 2 * largePage ? usualAlignment : largePage;
    const std::size_t length = roundedUp(bytes == 0 ? 1 : bytes, unit);
    LargeMemory memory(static_cast<std::byte*>(std::aligned_alloc(unit, length)));
    if (!memory) {
        throw std::bad_alloc();
    }
    if (unit == largePage) {
        // A system that is set never to use large pages goes on with small ones.
        madvise(memory.get(), length, MADV_HUGEPAGE);
    }
    return memory;
}

}  // namespace Morvane::Platform
