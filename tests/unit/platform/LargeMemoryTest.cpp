#include "platform/LargeMemory.h"

#include <gtest/gtest.h>

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

TEST(LargeMemory, SaysWhenThereIsNone) {
    EXPECT_THROW(allocateLarge(std::size_t{1} << 62), std::bad_alloc);
}

}  // namespace
