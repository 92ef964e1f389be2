#include <gtest/gtest.h>

#include "host/render/ProgressText.h"
#include "host/render/RateMeter.h"

namespace Corvel {
namespace {

using namespace std::chrono_literals;

TEST(DurationText, CountsMinutesAndHours) {
    EXPECT_EQ(durationText(0), "0:00");
    EXPECT_EQ(durationText(4.2), "0:05");
    EXPECT_EQ(durationText(754), "12:34");
    EXPECT_EQ(durationText(3723), "1:02:03");
    EXPECT_EQ(durationText(-3), "0:00");
}

TEST(SizeText, UsesPowersOfAThousand) {
    EXPECT_EQ(sizeText(0), "0 bytes");
    EXPECT_EQ(sizeText(999), "999 bytes");
    EXPECT_EQ(sizeText(1234), "1.2 kB");
    EXPECT_EQ(sizeText(999'960), "1.0 MB") << "never 1000.0 kB";
    EXPECT_EQ(sizeText(12'400'000), "12.4 MB");
    EXPECT_EQ(sizeText(3'000'000'000), "3.0 GB");
    EXPECT_EQ(sizeText(5'000'000'000'000'000), "5000.0 TB");
}

const FrameProgress halfWay{.frame = 1037,
                            .done = 50,
                            .total = 100,
                            .fraction = 0,
                            .fps = 12.34,
                            .secondsLeft = 4.05,
                            .bytes = 12'400'000};

TEST(PlainText, SaysEverything) {
    EXPECT_EQ(plainText(halfWay), "frame 1037 (50 of 100), 12.3 frames/s, 0:05 left, 12.4 MB");
}

TEST(PlainText, LeavesOutWhatIsNotKnownYet) {
    EXPECT_EQ(plainText({.frame = 1, .done = 0, .total = 9}), "frame 1 (0 of 9), 0 bytes");
}

TEST(BarText, FillsHalfTheBarHalfWay) {
    EXPECT_EQ(barText(halfWay, 70), "frame 1037 [=========>         ]  50/100  12.3 fps  0:05 left  12.4 MB");
}

TEST(BarText, CountsThePartOfTheFrameUnderWay) {
    FrameProgress progress = halfWay;
    progress.total = 1;
    progress.done = 0;
    progress.fraction = 0.5;
    const std::string text = barText(progress, 70);
    EXPECT_EQ(std::count(text.begin(), text.end(), '='), 11) << text;
}

TEST(BarText, NeverGetsWiderThanTheTerminal) {
    for (int columns = 1; columns < 200; ++columns) {
        EXPECT_LE(static_cast<int>(barText(halfWay, columns).size()), columns);
    }
}

TEST(BarText, LeavesOutTheLastThingsFirst) {
    EXPECT_EQ(barText(halfWay, 30), "frame 1037  50/100  12.3 fps");
    EXPECT_EQ(barText(halfWay, 11), "frame 1037");
}

TEST(RateMeter, KnowsNothingBeforeTheFirstFrame) {
    const RateMeter sut{RateMeter::Time{}};
    EXPECT_FALSE(sut.framesPerSecond());
    EXPECT_FALSE(sut.secondsFor(10));
}

TEST(RateMeter, CountsFromTheStart) {
    RateMeter sut{RateMeter::Time{}};
    sut.add(RateMeter::Time{500ms});
    EXPECT_DOUBLE_EQ(*sut.framesPerSecond(), 2);
    EXPECT_DOUBLE_EQ(*sut.secondsFor(10), 5);
}

TEST(RateMeter, ForgetsWhatIsLongAgo) {
    RateMeter sut{RateMeter::Time{}};
    RateMeter::Time now{};
    for (int i = 0; i < 100; ++i) {
        sut.add(now += 10s);
    }
    for (int i = 0; i < 100; ++i) {
        sut.add(now += 100ms);
    }
    EXPECT_NEAR(*sut.framesPerSecond(), 10, 1e-9);
}

TEST(RateMeter, SurvivesFramesAtTheSameTime) {
    RateMeter sut{RateMeter::Time{}};
    sut.add(RateMeter::Time{});
    EXPECT_FALSE(sut.framesPerSecond());
}

}  // namespace
}  // namespace Corvel
