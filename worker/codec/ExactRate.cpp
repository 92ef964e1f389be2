#include "worker/codec/ExactRate.h"

#include "worker/Status.h"

extern "C" {
#include <libavutil/mathematics.h>
}

#include <fmt/format.h>

#include <cmath>

namespace Morvane::Worker {

namespace {

constexpr double lowestRate = 0.001;
constexpr double highestRate = 1000;
constexpr int largestDenominator = 1000;
/// How far a rate may be from a 1001 rate and still mean it; 23.98 and 23.976 both do.
constexpr double snapDistance = 0.005;

AVRational lowestTerms(int numerator, int denominator) {
    const int divisor = static_cast<int>(av_gcd(numerator, denominator));
    return {numerator / divisor, denominator / divisor};
}

AVRational nearestFraction(double rate) {
    int best = 1;
    double bestError = HUGE_VAL;
    for (int denominator = 1; denominator <= largestDenominator; ++denominator) {
        const double error = std::abs(std::round(rate * denominator) / denominator - rate);
        if (error < bestError) {
            best = denominator;
            bestError = error;
        }
    }
    return lowestTerms(static_cast<int>(std::lround(rate * best)), best);
}

}  // namespace

AVRational exactRate(double framesPerSecond) {
    // Written so that what is not a number is refused too.
    if (!(framesPerSecond >= lowestRate && framesPerSecond <= highestRate))
        throw StatusError(Status::BadArgument,
                          fmt::format("{} is no frame rate; frames a second must be from {} to {}",
                                      framesPerSecond, lowestRate, highestRate));
    for (const int nominal : {24, 30, 48, 60, 120})
        if (std::abs(framesPerSecond - nominal * 1000.0 / 1001.0) < snapDistance)
            return {nominal * 1000, 1001};
    return nearestFraction(framesPerSecond);
}

}  // namespace Morvane::Worker
