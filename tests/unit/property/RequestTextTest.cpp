#include "property/RequestText.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using Morvane::Property::requestText;

TEST(RequestText, IsTheHeadAloneWithoutArguments) {
    EXPECT_EQ(requestText('W', 2), "W00000002");
}

TEST(RequestText, WritesTheOpcodeInHexadecimal) {
    EXPECT_EQ(requestText('W', 10), "W0000000a");
    EXPECT_EQ(requestText('W', 12), "W0000000c");
    EXPECT_EQ(requestText('W', 20), "W00000014");
    EXPECT_EQ(requestText('R', 0), "R00000000");
}

TEST(RequestText, WritesNumbersAsStreamsDo) {
    EXPECT_EQ(requestText('W', 5, 1920, -3, 4000000000u, std::int64_t{-9000000000}),
              "W00000005:1920:-3:4000000000:-9000000000");
    EXPECT_EQ(requestText('W', 5, 25.0f, 23.976f, 1e-7f, 29.97002997), "W00000005:25:23.976:1e-07:29.97");
    EXPECT_EQ(requestText('W', 4, true, false), "W00000004:1:0");
}

TEST(RequestText, EscapesTexts) {
    EXPECT_EQ(requestText('W', 3, 1.5f, "a:b.wav"), R"(W00000003:1.5:"a:b.wav")");
    EXPECT_EQ(requestText('W', 12, std::string(R"(a"\b)")), R"(W0000000c:a\"\\b)");
}

TEST(RequestText, EndsInASeparatorAfterAnEmptyLastText) {
    EXPECT_EQ(requestText('W', 3, 1.5f, ""), "W00000003:1.5:");
}

TEST(RequestText, WritesPointersAsStreamsDo) {
    EXPECT_EQ(requestText('V', 10, reinterpret_cast<void*>(0x1f)), "V0000000a:0x1f");
    EXPECT_EQ(requestText('V', 10, static_cast<void*>(nullptr)), "V0000000a:0");
}

}  // namespace
