#include "worker/movie/TimeScale.h"

#include "worker/Status.h"

#include <gtest/gtest.h>

#include <climits>

namespace Morvane::Worker {
namespace {

void expectTimeScale(AVRational rate, std::uint32_t ticksPerSecond, std::uint32_t ticksPerFrame) {
    const TimeScale scale = timeScaleFor(rate);
    EXPECT_EQ(scale.ticksPerSecond, ticksPerSecond);
    EXPECT_EQ(scale.ticksPerFrame, ticksPerFrame);
}

TEST(TimeScaleTest, KeepsTheRateExactAndTheTicksShort) {
    expectTimeScale({24, 1}, 24000, 1000);
    expectTimeScale({24000, 1001}, 24000, 1001);
    expectTimeScale({60000, 1001}, 60000, 1001);
    expectTimeScale({25, 2}, 12500, 1000);
    expectTimeScale({1, 1}, 1000, 1000);
    expectTimeScale({1, 1000}, 1000, 1000000);
    expectTimeScale({100, 3}, 33400, 1002);
    expectTimeScale({1000, 1}, 1000000, 1000);
}

TEST(TimeScaleTest, EveryWholeRateAndItsThousandAndFirstIsExact) {
    for (int rate = 1; rate <= 120; ++rate) {
        for (const AVRational exact : {AVRational{rate, 1}, AVRational{rate * 1000, 1001}}) {
            const TimeScale scale = timeScaleFor(exact);
            EXPECT_EQ(std::int64_t{scale.ticksPerFrame} * exact.num,
                      std::int64_t{scale.ticksPerSecond} * exact.den);
        }
    }
}

TEST(TimeScaleTest, RefusesWhatIsNoRate) {
    for (const AVRational rate : {AVRational{0, 1}, AVRational{1, 0}, AVRational{-25, 1}, AVRational{25, -1},
                                  AVRational{INT_MAX, 1}, AVRational{1, INT_MAX}}) {
        EXPECT_THROW(timeScaleFor(rate), StatusError) << rate.num << "/" << rate.den;
    }
}

}  // namespace
}  // namespace Morvane::Worker
