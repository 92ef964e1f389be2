#pragma once

#include <cstddef>
#include <memory>

namespace Morvane::Platform {

struct FreeLargeMemory {
    void operator()(void* memory) const noexcept;

    std::size_t bytes = 0;  ///< as allocated
};

/// Memory from `allocateLarge`.
using LargeMemory = std::unique_ptr<std::byte, FreeLargeMemory>;

/// Memory of `bytes` bytes, all of them 0, aligned for anything, vectors included, for what is as large as a
/// picture: it lies in large pages where the system has them, so that touching it for the first time, and
/// looking up its addresses later, costs a fraction. The child of a fork may not touch it. Throws
/// std::bad_alloc.
LargeMemory allocateLarge(std::size_t bytes);

}  // namespace Morvane::Platform
