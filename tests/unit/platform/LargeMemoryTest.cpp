#include "platform/LargeMemory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

namespace {

using Morvane::Platform::allocateLarge;

TEST(LargeMemory, CanBeWrittenToItsEndWhateverItsSize) {
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{1}, std::size_t{1000}, std::size_t{5} << 20,
                                    (std::size_t{25} << 20) + 1}) {
        const auto sut = allocateLarge(bytes);

        ASSERT_NE(sut, nullptr);
        std::memset(sut.get(), 0x55, bytes);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(sut.get()) % 64, 0u);
    }
}

TEST(LargeMemory, IsZeroWhateverItsSizeAndWhateverWasThere) {
    for (const std::size_t bytes : {std::size_t{1000}, std::size_t{5} << 20, (std::size_t{8} << 20) - 4096})
        for (int round = 0; round < 2; ++round) {
            const auto sut = allocateLarge(bytes);

            EXPECT_EQ(std::count(sut.get(), sut.get() + bytes, std::byte{0}),
                      static_cast<std::ptrdiff_t>(bytes));
            std::memset(sut.get(), 0x55, bytes);
        }
}

TEST(LargeMemory, IsLeftOutOfChildren) {
    const auto sut = allocateLarge(std::size_t{5} << 20);
    std::memset(sut.get(), 1, 1);
    const pid_t child = fork();
    if (child == 0) {
        // Fails where there is no such memory, instead of ending by a signal.
        unsigned char resident = 0;
        _exit(mincore(sut.get(), 1, &resident) == 0 ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST(LargeMemory, SaysWhenThereIsNone) {
    EXPECT_THROW(allocateLarge(std::size_t{1} << 62), std::bad_alloc);
}

}  // namespace
