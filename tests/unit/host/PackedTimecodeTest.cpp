#include "host/images/PackedTimecode.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

TEST(UnpackTimecode, ReadsTwoDigitsAField) {
    EXPECT_EQ(unpackTimecode(0x01020304, 24), "01:02:03:04");
    EXPECT_EQ(unpackTimecode(0x23595929, 0), "23:59:59:29");
}

TEST(UnpackTimecode, WritesASemicolonForDropFrame) {
    EXPECT_EQ(unpackTimecode(0x01000000 | 1u << 6, 29.97), "01:00:00;00");
}

TEST(UnpackTimecode, IgnoresFieldAndBinaryGroupFlags) {
    EXPECT_EQ(unpackTimecode(0x01020304 | 1u << 7 | 1u << 15 | 1u << 23 | 1u << 30 | 1u << 31, 30),
              "01:02:03:04");
}

TEST(UnpackTimecode, IsEmptyForNoTimeOfDay) {
    for (const std::uint32_t word : {0xffffffffu, 0x24000000u, 0x00600000u, 0x0000000au}) {
        EXPECT_EQ(unpackTimecode(word, 24), "") << word;
    }
}

TEST(UnpackTimecode, TakesFramesThatAreNoPairsAsTheyAre) {
    EXPECT_EQ(unpackTimecode(0x01000035, 50), "01:00:00:35");
}

TEST(PackTimecode, IsUndoneByUnpacking) {
    struct Case {
        double rate;
        int frames;
    };
    for (const Case& each : {Case{24, 24}, {25, 25}, {29.97, 30}, {47.952, 48}, {50, 50}, {60, 60}}) {
        for (int frame = 0; frame < each.frames; ++frame) {
            const std::string text = (frame < 10 ? "23:59:58:0" : "23:59:58:") + std::to_string(frame);
            const auto word = packTimecode(text, each.rate);
            ASSERT_TRUE(word) << text;
            EXPECT_EQ(unpackTimecode(*word, each.rate), text) << each.rate;
        }
    }
    EXPECT_EQ(unpackTimecode(packTimecode("01:00:00;59", 59.94).value(), 59.94), "01:00:00;59");
}

TEST(PackTimecode, HasNoRoomForMoreThanSixtyFrames) {
    EXPECT_EQ(packTimecode("01:00:00:10", 120), std::nullopt);
}

TEST(PackTimecode, RefusesOtherTexts) {
    for (const char* text : {"", "tomorrow", "24:00:00:00", "00:00:00:99"}) {
        EXPECT_EQ(packTimecode(text, 24), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace Corvel
