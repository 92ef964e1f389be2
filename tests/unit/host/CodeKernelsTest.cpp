#include "host/images/CodeKernels.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

namespace Corvel {
namespace {

using Code = std::uint16_t;

constexpr Code untouched = 0xABCD;

/// Takes pixels apart into three planes, each with one code more, which must stay as it is.
class CodeKernels : public testing::TestWithParam<std::size_t> {
protected:
    CodeKernels() {
        std::mt19937 random(3);
        for (unsigned char& byte : bytes) {
            byte = static_cast<unsigned char>(random());
        }
        for (std::size_t i = 0; i < 3; ++i) {
            planes[i].assign(count + 1, untouched);
            targets[i] = planes[i].data();
        }
    }

    template <typename CodeOf>
    void expectCodes(CodeOf codeOf) const {
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t x = 0; x < count; ++x) {
                ASSERT_EQ(planes[i][x], codeOf(x, i)) << "pixel " << x << ", place " << i;
            }
            EXPECT_EQ(planes[i][count], untouched) << "wrote past the end";
        }
    }

    unsigned byteAt(std::size_t place) const { return bytes[1 + place]; }

    const std::size_t count = GetParam();
    // One byte off, so that words are not aligned.
    std::vector<unsigned char> bytes = std::vector<unsigned char>(1 + 6 * count);
    const unsigned char* pixels = bytes.data() + 1;
    std::array<std::vector<Code>, 3> planes;
    std::array<Code*, 3> targets{};
};

TEST_P(CodeKernels, TakeBytesApart) {
    splitBytes(pixels, count, targets.data());
    expectCodes([&](std::size_t x, std::size_t i) { return byteAt(3 * x + i); });
}

TEST_P(CodeKernels, TakeWordsApart) {
    splitWords(pixels, false, count, targets.data());
    expectCodes([&](std::size_t x, std::size_t i) {
        return byteAt(2 * (3 * x + i)) | byteAt(2 * (3 * x + i) + 1) << 8;
    });
}

TEST_P(CodeKernels, TakeSwappedWordsApart) {
    splitWords(pixels, true, count, targets.data());
    expectCodes([&](std::size_t x, std::size_t i) {
        return byteAt(2 * (3 * x + i)) << 8 | byteAt(2 * (3 * x + i) + 1);
    });
}

TEST_P(CodeKernels, TakeTenBitsApart) {
    splitTenBits(pixels, false, count, targets.data());
    expectCodes([&](std::size_t x, std::size_t i) {
        const unsigned word =
            byteAt(4 * x) | byteAt(4 * x + 1) << 8 | byteAt(4 * x + 2) << 16 | byteAt(4 * x + 3) << 24;
        return word >> (22 - 10 * i) & 1023;
    });
}

TEST_P(CodeKernels, TakeSwappedTenBitsApart) {
    splitTenBits(pixels, true, count, targets.data());
    expectCodes([&](std::size_t x, std::size_t i) {
        const unsigned word =
            byteAt(4 * x) << 24 | byteAt(4 * x + 1) << 16 | byteAt(4 * x + 2) << 8 | byteAt(4 * x + 3);
        return word >> (22 - 10 * i) & 1023;
    });
}

// Fewer than a vector of any processor, some whole ones, and some left over.
INSTANTIATE_TEST_SUITE_P(Pixels, CodeKernels, testing::Values(1, 7, 64, 157));

}  // namespace
}  // namespace Corvel
