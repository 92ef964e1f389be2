#include "worker/codec/ExactRate.h"

#include "worker/Status.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Morvane::Worker {
namespace {

void expectRate(double framesPerSecond, int numerator, int denominator) {
    const AVRational rate = exactRate(framesPerSecond);
    EXPECT_EQ(rate.num, numerator) << framesPerSecond;
    EXPECT_EQ(rate.den, denominator) << framesPerSecond;
}

TEST(ExactRate, WholeRatesStayWhole) {
    for (int rate = 1; rate <= 120; ++rate)
        expectRate(rate, rate, 1);
}

TEST(ExactRate, RatesOfThe1001FamilyAreSnapped) {
    expectRate(23.976, 24000, 1001);
    expectRate(23.98, 24000, 1001);
    expectRate(29.97, 30000, 1001);
    expectRate(47.952, 48000, 1001);
    expectRate(59.94, 60000, 1001);
    expectRate(119.88, 120000, 1001);
    expectRate(24000.0 / 1001, 24000, 1001);
}

TEST(ExactRate, SnappingEndsAt5Thousandths) {
    expectRate(29.9749, 30000, 1001);
    EXPECT_NE(exactRate(29.976).den, 1001);
    EXPECT_NE(exactRate(29.964).den, 1001);
}

TEST(ExactRate, OtherRatesAreTheNearestFraction) {
    expectRate(12.5, 25, 2);
    expectRate(33.3333, 100, 3);
    expectRate(25.1, 251, 10);
    expectRate(0.5, 1, 2);
    expectRate(0.001, 1, 1000);
    expectRate(1000, 1000, 1);
}

/// Rates cross the bridge as floats: 25.1 arrives as 25.1000003815.
TEST(ExactRate, SinglePrecisionMakesNoDifference) {
    expectRate(static_cast<double>(25.1F), 251, 10);
    expectRate(static_cast<double>(23.976F), 24000, 1001);
    expectRate(static_cast<double>(14.985F), 2997, 200);
}

TEST(ExactRate, WhatIsNoRateIsRefused) {
    for (const double rate :
         {0.0, -24.0, 0.0009, 1000.1, std::nan(""), std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity()}) {
        try {
            exactRate(rate);
            ADD_FAILURE() << rate;
        } catch (const StatusError& error) {
            EXPECT_EQ(error.status, Status::BadArgument);
        }
    }
}

}  // namespace
}  // namespace Morvane::Worker
