#include "host/render/MovieStart.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

using Morvane::Timecode::FrameRate;

const FrameRate film(24, false);
const FrameRate ntsc(30, true);

TEST(TimecodeFault, IsNoneForATimeOfDay) {
    for (const char* text :
         {"00:00:00:00", "01:02:03:04", "23:59:59:23", "1:2:3:4", "01:00:00;00", "01;00;00;00"}) {
        EXPECT_EQ(timecodeFault(text, film), "") << text;
    }
}

TEST(TimecodeFault, QuotesTheText) {
    for (const char* text : {"99:99", "", "abc", "01:00:00", "01:00:00:00:00", "01:00:00:", ":::",
                             "001:00:00:00", "-1:00:00:00", "01.00.00.00", "01:00:00:0x"}) {
        EXPECT_NE(timecodeFault(text, film).find(text), std::string::npos) << text;
    }
}

TEST(TimecodeFault, IsTooGreatAField) {
    for (const char* text : {"24:00:00:00", "00:60:00:00", "00:00:60:00", "00:00:00:24"}) {
        EXPECT_NE(timecodeFault(text, film), "") << text;
    }
    EXPECT_EQ(timecodeFault("00:00:00:24", FrameRate(25, false)), "");
    EXPECT_EQ(timecodeFault("00:00:00:29", ntsc), "");
    EXPECT_NE(timecodeFault("00:00:00:30", ntsc), "");
}

TEST(TimecodeFault, IsNoneForFramesOfThreeDigits) {
    EXPECT_EQ(timecodeFault("00:00:00:119", FrameRate(120, false)), "");
    EXPECT_NE(timecodeFault("00:00:00:0119", FrameRate(120, false)), "");
}

TEST(TimecodeBefore, CountsBackAtTheRate) {
    EXPECT_EQ(timecodeBefore("01:00:00:00", film, 1), "00:59:59:23");
    EXPECT_EQ(timecodeBefore("01:00:00:00", ntsc, 1), "00:59:59:29");
}

TEST(TimecodeBefore, WritesTwoDigitsAFieldAndNonDrop) {
    EXPECT_EQ(timecodeBefore("1:2:3;4", film, 0), "01:02:03:04");
}

TEST(TimecodeBefore, GoesRoundAtMidnight) {
    EXPECT_EQ(timecodeBefore("00:00:00:00", film, 2), "23:59:59:22");
}

TEST(DropFrame, IsWrittenWithSemicolons) {
    EXPECT_TRUE(isDropFrame("01:00:00;00"));
    EXPECT_FALSE(isDropFrame("01:00:00:00"));
}

}  // namespace
}  // namespace Corvel
