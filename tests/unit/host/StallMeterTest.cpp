#include "host/render/StallMeter.h"

#include <gtest/gtest.h>

namespace Corvel {
namespace {

using namespace std::chrono_literals;

const StallMeter::Time start{};

TEST(StallMeter, SaysNothingInTheFirstSeconds) {
    StallMeter sut(start);
    EXPECT_EQ(sut.reportDue(start + 9999ms), std::nullopt);
    EXPECT_FALSE(sut.reported());
}

TEST(StallMeter, ReportsAfterTenSecondsAndThenLessAndLessOften) {
    StallMeter sut(start);
    EXPECT_EQ(sut.reportDue(start + 10100ms), 10s);
    EXPECT_TRUE(sut.reported());
    EXPECT_EQ(sut.reportDue(start + 11s), std::nullopt);
    EXPECT_EQ(sut.reportDue(start + 20s), 20s);
    EXPECT_EQ(sut.reportDue(start + 39s), std::nullopt);
    EXPECT_EQ(sut.reportDue(start + 40s), 40s);
}

TEST(StallMeter, BeginsAnewWithASignOfLife) {
    StallMeter sut(start);
    sut.reportDue(start + 10s);
    sut.progress(start + 11s);
    EXPECT_FALSE(sut.reported());
    EXPECT_EQ(sut.reportDue(start + 20s), std::nullopt);
    EXPECT_EQ(sut.reportDue(start + 21s), 10s);
}

TEST(StallMeter, WaitsForEverWithoutATimeout) {
    const StallMeter sut(start);
    EXPECT_FALSE(sut.timedOut(start + 1000h));
}

TEST(StallMeter, ReportsBeforeTheTimeoutEnds) {
    StallMeter sut(start);
    sut.setTimeout(4s);
    EXPECT_EQ(sut.reportDue(start + 2s), 2s);
    EXPECT_FALSE(sut.timedOut(start + 3999ms));
    EXPECT_TRUE(sut.timedOut(start + 4s));
}

}  // namespace
}  // namespace Corvel
