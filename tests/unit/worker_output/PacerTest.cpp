#include "worker/output/Pacer.h"

#include <gtest/gtest.h>

namespace Morvane::Worker {
namespace {

using std::chrono_literals::operator""h;
using std::chrono_literals::operator""s;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""ns;

const Pacer::Clock::time_point start{1234567890123ns};

TEST(Pacer, FramesAreOneOverTheRateApart) {
    Pacer sut({25, 1});
    sut.start(start, 0);

    EXPECT_EQ(sut.due(0), start);
    EXPECT_EQ(sut.due(1), start + 40ms);
    EXPECT_EQ(sut.due(600), start + 24s);
}

TEST(Pacer, DoesNotDriftInWeeks) {
    Pacer sut({30000, 1001});
    sut.start(start, 0);

    // 30000 frames last 1001 seconds, to the nanosecond, however often.
    EXPECT_EQ(sut.due(30000), start + 1001s);
    EXPECT_EQ(sut.due(30000LL * 5000), start + 1001s * 5000);
    EXPECT_EQ(sut.due(30000LL * 5000 + 1), start + 1001s * 5000 + 33366666ns);
}

TEST(Pacer, RoundingOfOneFrameDoesNotReachTheNext) {
    Pacer sut({24000, 1001});
    sut.start(start, 0);

    for (int frame = 0; frame < 24000; ++frame) {
        const std::int64_t exact = std::int64_t{frame} * 1001 * 1'000'000'000 / 24000;
        ASSERT_EQ((sut.due(frame) - start).count(), exact) << frame;
    }
}

TEST(Pacer, StartsAtAnyFrame) {
    Pacer sut({50, 1});
    sut.start(start, 100);

    EXPECT_EQ(sut.due(100), start);
    EXPECT_EQ(sut.due(103), start + 60ms);
    EXPECT_EQ(sut.due(99), start - 20ms);
}

TEST(Pacer, AFrameIsLateWhenTheNextOneIsDue) {
    Pacer sut({25, 1});
    sut.start(start, 0);

    EXPECT_FALSE(sut.isLate(3, start));
    EXPECT_FALSE(sut.isLate(3, sut.due(3)));
    EXPECT_FALSE(sut.isLate(3, sut.due(4) - 1ns));
    EXPECT_TRUE(sut.isLate(3, sut.due(4)));
}

TEST(Pacer, NothingIsLateWhileTheClockIsHeld) {
    Pacer sut({25, 1});
    EXPECT_FALSE(sut.isRunning());
    EXPECT_FALSE(sut.isLate(0, start + 1h));

    sut.start(start, 0);
    EXPECT_TRUE(sut.isLate(0, start + 1h));

    sut.stop();
    EXPECT_FALSE(sut.isRunning());
    EXPECT_FALSE(sut.isLate(0, start + 1h));
}

}  // namespace
}  // namespace Morvane::Worker
