#include "host/movies/RunningTimecode.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

TEST(RunningTimecode, CountsFramesSecondsMinutesAndHours) {
    EXPECT_EQ(timecodeAfter("01:00:00:00", 0, 24), "01:00:00:00");
    EXPECT_EQ(timecodeAfter("01:00:00:00", 24, 24), "01:00:01:00");
    EXPECT_EQ(timecodeAfter("01:59:59:24", 1, 25), "02:00:00:00");
}

TEST(RunningTimecode, CountsMoreThanAHundredFramesASecond) {
    EXPECT_EQ(timecodeAfter("01:00:00:99", 1, 120), "01:00:00:100");
    EXPECT_EQ(timecodeAfter("01:00:00:119", 1, 120), "01:00:01:00");
    EXPECT_EQ(timecodeAfter("01:00:00:010", 0, 120), "01:00:00:10");
}

TEST(RunningTimecode, WrapsAtMidnight) {
    EXPECT_EQ(timecodeAfter("23:59:59:23", 1, 24), "00:00:00:00");
    EXPECT_EQ(timecodeAfter("23:59:59;29", 1, 30), "00:00:00;00");
}

TEST(RunningTimecode, LeavesOutTheDroppedNumbers) {
    EXPECT_EQ(timecodeAfter("00:00:59;29", 1, 30), "00:01:00;02");
    EXPECT_EQ(timecodeAfter("00:09:59;29", 1, 30), "00:10:00;00");
    EXPECT_EQ(timecodeAfter("00:00:00;00", 17982, 30), "00:10:00;00");
    EXPECT_EQ(timecodeAfter("00:00:59;59", 1, 60), "00:01:00;04");
}

TEST(RunningTimecode, AFramesLaterIsTheSameAsOneByOne) {
    std::string oneByOne = "00:58:30;10";
    for (int frame = 1; frame <= 20000; ++frame) {
        oneByOne = timecodeAfter(oneByOne, 1, 30);
        ASSERT_EQ(timecodeAfter("00:58:30;10", frame, 30), oneByOne) << frame;
    }
}

TEST(RunningTimecode, LeavesOtherTextsAlone) {
    EXPECT_EQ(timecodeAfter("", 5, 24), "");
    EXPECT_EQ(timecodeAfter("tomorrow", 5, 24), "tomorrow");
}

}  // namespace
}  // namespace Corvel
