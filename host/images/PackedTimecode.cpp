#include "host/images/PackedTimecode.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdio>

namespace Corvel {
namespace {

constexpr std::uint32_t dropFrame = 1u << 6;
constexpr std::uint32_t fieldMark = 1u << 15;

constexpr long mostFrames = 30;  // a second that are counted one by one

int decimalOf(std::uint32_t word, int shift, std::uint32_t tensMask) {
    const std::uint32_t ones = word >> shift & 15u;
    const std::uint32_t tens = word >> (shift + 4) & tensMask;
    return ones > 9 ? 100 : static_cast<int>(tens * 10 + ones);
}

std::uint32_t codedDecimal(unsigned number, int shift) {
    return (number / 10 << 4 | number % 10) << shift;
}

}  // namespace

std::string unpackTimecode(std::uint32_t timeAndFlags, double rate) {
    int frames = decimalOf(timeAndFlags, 0, 3);
    const int seconds = decimalOf(timeAndFlags, 8, 7);
    const int minutes = decimalOf(timeAndFlags, 16, 7);
    const int hours = decimalOf(timeAndFlags, 24, 3);
    if (hours > 23 || minutes > 59 || seconds > 59 || frames > 39) {
        return "";
    }
    const long nominal = std::lround(rate);
    if (nominal > mostFrames && 2 * frames < nominal) {
        frames = 2 * frames + ((timeAndFlags & fieldMark) != 0 ? 1 : 0);
    }
    const bool drop = (timeAndFlags & dropFrame) != 0;
    return fmt::format("{:02}:{:02}:{:02}{}{:02}", hours, minutes, seconds, drop ? ';' : ':', frames);
}

std::optional<std::uint32_t> packTimecode(const std::string& text, double rate) {
    unsigned hours = 0, minutes = 0, seconds = 0, frames = 0;
    char separator = 0;
    const bool read =
        std::sscanf(text.c_str(), "%2u:%2u:%2u%c%3u", &hours, &minutes, &seconds, &separator, &frames) == 5;
    const long nominal = std::lround(rate);
    if (!read || nominal > 2 * mostFrames) {
        return std::nullopt;
    }
    std::uint32_t flags = separator == ';' ? dropFrame : 0;
    if (nominal > mostFrames) {
        flags |= frames % 2 != 0 ? fieldMark : 0;
        frames /= 2;
    }
    if (hours > 23 || minutes > 59 || seconds > 59 || frames > 39) {
        return std::nullopt;
    }
    return codedDecimal(hours, 24) | codedDecimal(minutes, 16) | codedDecimal(seconds, 8) |
           codedDecimal(frames, 0) | flags;
}

}  // namespace Corvel
