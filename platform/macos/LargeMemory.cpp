#include "platform/LargeMemory.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace Morvane::Platform {

void FreeLargeMemory::operator()(void* memory) const noexcept {
    std::free(memory);
}

// The system chooses its page sizes itself.
LargeMemory allocateLarge(std::size_t bytes) {
    constexpr std::size_t alignment = 64;
    const std::size_t length = (bytes / alignment + 1) * alignment;
    LargeMemory memory(static_cast<std::byte*>(std::aligned_alloc(alignment, length)));
    if (!memory) {
        throw std::bad_alloc();
    }
    std::memset(memory.get(), 0, length);
    return memory;
}

}  // namespace Morvane::Platform
