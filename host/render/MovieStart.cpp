#include "host/render/MovieStart.h"

#include <fmt/format.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>

#include "timecode/Timecode.h"

namespace Corvel {

using Morvane::Timecode::FrameRate;

namespace {

// Four fields of one or two digits; frames of three at more than 100 a second.
bool hasFourFields(const std::string& text) {
    int fields = 0;
    std::size_t digits = 0;
    for (const char character : text + ':') {
        const std::size_t mostDigits = fields == 3 ? 3 : 2;
        if (std::isdigit(static_cast<unsigned char>(character))) {
            ++digits;
        } else if ((character != ':' && character != ';') || digits < 1 || digits > mostDigits) {
            return false;
        } else {
            ++fields;
            digits = 0;
        }
    }
    return fields == 4;
}

}  // namespace

std::string timecodeFault(const std::string& text, FrameRate rate) {
    if (!hasFourFields(text)) {
        return fmt::format("\"{}\" is not a time code; it reads HH:MM:SS:FF, such as 01:00:00:00", text);
    }
    if (std::atoi(text.c_str()) > 23) {
        return fmt::format("the time code {} is beyond 23 hours", text);
    }
    if (parseTimecode(text, rate, Morvane::Timecode::Mode::NonDrop) == Morvane::Timecode::invalidTimecode) {
        return fmt::format(
            "the time code {} has minutes or seconds above 59, or frames not below the rate of {}", text,
            rate.nominalRate());
    }
    return "";
}

bool isDropFrame(const std::string& text) {
    return text.find(';') != std::string::npos;
}

std::string timecodeBefore(const std::string& text, FrameRate rate, int frames) {
    const std::int64_t day = std::int64_t{24} * 60 * 60 * (rate.nominalRate() == 0 ? 1 : rate.nominalRate());
    const std::int64_t start = parseTimecode(text, rate, Morvane::Timecode::Mode::NonDrop) - frames;
    return formatTimecode((start % day + day) % day, rate, Morvane::Timecode::Mode::NonDrop);
}

}  // namespace Corvel
