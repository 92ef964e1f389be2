#include "timecode/FrameRate.h"

#include <cmath>
#include <iomanip>
#include <locale>
#include <sstream>

namespace Morvane::Timecode {

namespace {

constexpr std::uint32_t flagBit = 0x80000000u;

FrameRate fromHundredths(std::int64_t hundredths) {
    switch (hundredths) {
        case 5994:
            return FrameRate(60, true);
        case 2997:
            return FrameRate(30, true);
        case 2397:
        case 2398:
            return FrameRate(24, true);
        default:
            return FrameRate(static_cast<std::uint32_t>(hundredths / 100), false);
    }
}

bool is(std::uint32_t numerator, std::uint32_t denominator, std::uint32_t wantedNumerator,
        std::uint32_t wantedDenominator) {
    return numerator == wantedNumerator && denominator == wantedDenominator;
}

}  // namespace

FrameRate::FrameRate(std::uint32_t nominalRate, bool flag)
    : frameRateCode((nominalRate & ~flagBit) | (flag ? flagBit : 0)) {}

std::uint32_t FrameRate::nominalRate() const {
    return frameRateCode & ~flagBit;
}

bool FrameRate::hasFlag() const {
    return (frameRateCode & flagBit) != 0;
}

float FrameRate::toFloat() const {
    return static_cast<float>(hasFlag() ? nominalRate() * 1000.0 / 1001.0 : nominalRate());
}

Ratio FrameRate::toRatio() const {
    if (hasFlag()) {
        switch (nominalRate()) {
            case 60:
                return {60000, 1001};
            case 30:
                return {30000, 1001};
            case 24:
                return {23976, 1000};
            default:
                break;
        }
    }
    return {nominalRate() * 100, 100};
}

std::string FrameRate::rateText() const {
    if (!hasFlag()) {
        return std::to_string(nominalRate());
    }
    // Not snprintf, which writes the decimal point of the host's locale.
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << std::fixed << std::setprecision(3) << toFloat();
    return text.str();
}

std::string FrameRate::ratioText() const {
    return hasFlag() ? std::to_string(nominalRate() * 1000) + "/1001" : std::to_string(nominalRate()) + "/1";
}

FrameRate toFrameRateCode(float framesPerSecond) {
    // Rounds halves away from zero.
    const double hundredths = std::round(framesPerSecond * 100.0);
    constexpr double int64Limit = 9223372036854775808.0;
    if (!(std::abs(hundredths) < int64Limit)) {
        return FrameRate();  // not a number, or nothing that could be a rate
    }
    return fromHundredths(static_cast<std::int64_t>(hundredths));
}

FrameRate frameRateFromRatio(std::uint32_t numerator, std::uint32_t denominator) {
    if (denominator == 1001) {
        return FrameRate(numerator / 1001 + 1, true);
    }
    if (is(numerator, denominator, 23976, 1000)) {
        return FrameRate(24, true);
    }
    if (is(numerator, denominator, 5994, 100)) {
        return FrameRate(60, true);
    }
    if (is(numerator, denominator, 2997, 100)) {
        return FrameRate(30, true);
    }
    if (is(numerator, denominator, 2997, 125) || is(numerator, denominator, 2397, 100) ||
        is(numerator, denominator, 2398, 100)) {
        return FrameRate(24, true);
    }
    return FrameRate(numerator / denominator, false);
}

std::int64_t rescale(FrameRate rate, std::int32_t count, FrameRate target) {
    const Ratio from = rate.toRatio();
    const Ratio to = target.toRatio();
    // Unsigned arithmetic wraps in 64 bits instead of being undefined.
    const std::uint64_t divisor = static_cast<std::uint64_t>(to.denominator) * from.numerator;
    const std::uint64_t product =
        static_cast<std::uint64_t>(static_cast<std::int64_t>(count)) * to.numerator * from.denominator;
    return static_cast<std::int64_t>(product + divisor / 2 - 1) / static_cast<std::int64_t>(divisor);
}

}  // namespace Morvane::Timecode
