#include "worker/output/ByteConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace Morvane::Worker {
namespace {

std::uint8_t byteOf(float value) {
    std::uint8_t byte = 77;
    floatsToBytes(&value, 1, &byte);
    return byte;
}

TEST(ByteConversion, EveryByteComesBackFromItsOwnValue) {
    for (int byte = 0; byte <= 255; ++byte)
        EXPECT_EQ(byteOf(static_cast<float>(byte) / 255.0F), byte);
}

TEST(ByteConversion, RoundsToTheNearestByte) {
    EXPECT_EQ(byteOf(100.49F / 255.0F), 100);
    EXPECT_EQ(byteOf(100.51F / 255.0F), 101);
    EXPECT_EQ(byteOf(254.6F / 255.0F), 255);
}

TEST(ByteConversion, LimitsWhatIsBeyondTheRange) {
    EXPECT_EQ(byteOf(-0.25F), 0);
    EXPECT_EQ(byteOf(7.5F), 255);
    EXPECT_EQ(byteOf(-std::numeric_limits<float>::infinity()), 0);
    EXPECT_EQ(byteOf(std::numeric_limits<float>::infinity()), 255);
    EXPECT_EQ(byteOf(std::numeric_limits<float>::max()), 255);
}

TEST(ByteConversion, WhatIsNotANumberBecomesZero) {
    EXPECT_EQ(byteOf(std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(byteOf(-std::numeric_limits<float>::quiet_NaN()), 0);
}

TEST(ByteConversion, WritesExactlyAsManyBytesAsThereAreFloats) {
    for (std::size_t count = 0; count < 70; ++count) {
        const std::vector<float> floats(count + 1, 0.2F);
        std::vector<std::uint8_t> bytes(count + 1, 9);

        floatsToBytes(floats.data(), count, bytes.data());

        for (std::size_t index = 0; index < count; ++index)
            ASSERT_EQ(bytes[index], 51);
        EXPECT_EQ(bytes[count], 9);
    }
}

}  // namespace
}  // namespace Morvane::Worker
