#include "platform/LargeMemory.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace Morvane::Platform {

namespace {

constexpr std::size_t largePage = std::size_t{2} << 20;
constexpr std::size_t smallPage = 4096;
constexpr std::size_t usualAlignment = 64;  // bytes; of the widest vectors

std::size_t inWhole(std::size_t page, std::size_t bytes) {
    return (bytes + page - 1) / page * page;
}

/// Whole large pages, unless that wastes more than an eighth: the rest lies in small pages then.
std::size_t lengthOf(std::size_t bytes) {
    const std::size_t length = inWhole(largePage, bytes);
    return (length - bytes) * 8 <= bytes ? length : inWhole(smallPage, bytes);
}

void* allocateZero(std::size_t bytes) {
    void* memory = nullptr;
    if (posix_memalign(&memory, usualAlignment, bytes == 0 ? 1 : bytes) != 0) {
        throw std::bad_alloc();
    }
    return std::memset(memory, 0, bytes);
}

/// Fresh pages, which the system has made 0, at an address where large ones fit.
void* mapLarge(std::size_t length) {
    void* const place =
        mmap(nullptr, length + largePage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (place == MAP_FAILED) {
        throw std::bad_alloc();
    }
    const std::size_t before = (largePage - reinterpret_cast<std::uintptr_t>(place) % largePage) % largePage;
    auto* const memory = static_cast<std::byte*>(place) + before;
    if (before > 0) {
        munmap(place, before);
    }
    munmap(memory + length, largePage - before);
    // A child would only be given it to leave it alone, and every write would be to a copy until then.
    madvise(memory, length, MADV_DONTFORK);
    // As small pages on a system that is set never to use large ones.
    madvise(memory, length, MADV_HUGEPAGE);
    return memory;
}

}  // namespace

void FreeLargeMemory::operator()(void* memory) const noexcept {
    if (bytes < largePage) {
        std::free(memory);
    } else {
        munmap(memory, lengthOf(bytes));
    }
}

LargeMemory allocateLarge(std::size_t bytes) {
    if (bytes > std::numeric_limits<std::size_t>::max() / 2) {
        throw std::bad_alloc();
    }
    void* const memory = bytes < largePage ? allocateZero(bytes) : mapLarge(lengthOf(bytes));
    return LargeMemory(static_cast<std::byte*>(memory), FreeLargeMemory{bytes});
}

}  // namespace Morvane::Platform
