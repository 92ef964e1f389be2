#include "timecode/Timecode.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace Morvane::Timecode {

namespace {

/// Fields of a time code from left to right.
struct Fields {
    std::uint32_t hours = 0;
    std::uint32_t minutes = 0;
    std::uint32_t seconds = 0;
    std::uint32_t frames = 0;
    std::int32_t count = 0;  ///< how many of them the text had; above 4 it is no time code
};

bool isSeparator(char character) {
    return character == ':' || character == ';';
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

std::int64_t framesASecond(FrameRate rate) {
    return std::max<std::int64_t>(rate.nominalRate(), 1);
}

/// From the last character to the first, so that the rightmost field is frames however many there are.
Fields separatedFields(const std::string& text) {
    Fields fields;
    std::uint32_t* const leftwards[] = {&fields.frames, &fields.seconds, &fields.minutes, &fields.hours};
    std::uint32_t place = 1;
    for (auto character = text.rbegin(); character != text.rend(); ++character) {
        if (isSeparator(*character)) {
            place = 1;
            if (++fields.count > 3) {
                break;
            }
        } else {
            *leftwards[fields.count] += place * static_cast<std::uint32_t>(*character - '0');
            place *= 10;
        }
    }
    ++fields.count;
    return fields;
}

/// Digits alone: two for each field, counted from the right.
Fields packedFields(const std::string& text) {
    std::uint64_t number = 0;
    for (const char digit : text) {
        number = number * 10 + static_cast<std::uint64_t>(digit - '0');
    }
    Fields fields;
    fields.frames = number % 100;
    fields.seconds = number / 100 % 100;
    fields.minutes = number / 10000 % 100;
    fields.hours = number / 1000000 % 100;
    fields.count = static_cast<std::int32_t>(std::min<std::size_t>((text.size() + 1) / 2, 4));
    return fields;
}

/// Every operation wraps in 32 bits.
std::int32_t totalFrames(std::uint32_t rate, bool drop, std::uint32_t hours, std::uint32_t minutes,
                         std::uint32_t seconds, std::uint32_t frames) {
    const std::uint32_t totalMinutes = hours * 60 + minutes;
    const std::uint32_t total = (totalMinutes * 60 + seconds) * rate + frames;
    const std::int32_t tens = static_cast<std::int32_t>(totalMinutes) / 10;
    return static_cast<std::int32_t>(drop ? total - 20 * static_cast<std::uint32_t>(tens) : total);
}

std::int64_t wrappingDifference(std::int64_t left, std::int64_t right) {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(left) - static_cast<std::uint64_t>(right));
}

std::int64_t parseFields(const std::string& text, FrameRate rate, Mode mode, std::int64_t offset,
                         std::int32_t* fieldCount) {
    const bool onlyKnown = std::all_of(text.begin(), text.end(), [](char character) {
        return isSeparator(character) || isDigit(character);
    });
    if (!onlyKnown) {
        return invalidTimecode;
    }
    const bool separated = std::any_of(text.begin(), text.end(), isSeparator);
    const Fields fields = separated ? separatedFields(text) : packedFields(text);
    if (fields.count > 4) {
        return 0;
    }
    if (fieldCount != nullptr) {
        *fieldCount = fields.count;
    }
    const std::int64_t nominal = framesASecond(rate);
    if (fields.seconds > 59 || fields.minutes > 59 || fields.frames >= nominal) {
        return invalidTimecode;
    }
    if (mode == Mode::Drop) {
        // The rule of framesFromFields, deliberately at rates without the flag as well.
        const std::int32_t frames = totalFrames(static_cast<std::uint32_t>(nominal), true, fields.hours,
                                                fields.minutes, fields.seconds, fields.frames);
        return wrappingDifference(frames, offset);
    }
    const std::uint64_t seconds =
        fields.seconds + 60 * (static_cast<std::uint64_t>(fields.hours) * 60 + fields.minutes);
    const std::uint64_t frames = static_cast<std::uint64_t>(nominal) * seconds + fields.frames;
    return wrappingDifference(static_cast<std::int64_t>(frames), offset);
}

/// A decimal integer as `scanf` reads one, cut to 32 bits; moves `text` behind it. False without a digit.
bool readInteger(const char*& text, std::int32_t& number) {
    char* end = nullptr;
    number = static_cast<std::int32_t>(std::strtoll(text, &end, 10));
    const bool found = end != text;
    text = end;
    return found;
}

std::int64_t parseFeet(const std::string& text, std::int64_t framesAFoot) {
    const char* position = text.c_str();
    std::int32_t feet = 0;
    std::int32_t frames = 0;
    const bool both = readInteger(position, feet) && *position++ == '+' && readInteger(position, frames);
    return both ? feet * framesAFoot + frames : 0;
}

std::uint64_t magnitude(std::int64_t frame) {
    return frame < 0 ? 0 - static_cast<std::uint64_t>(frame) : static_cast<std::uint64_t>(frame);
}

/// The frame number that 29.97 drop-frame counting shows for a count of frames.
std::int64_t dropFrameNumber(std::int64_t count) {
    constexpr std::int64_t framesInTenMinutes = 17982;
    constexpr std::int64_t framesInOneMinute = 1798;
    const std::int64_t skipped =
        18 * (count / framesInTenMinutes) + 2 * ((count % framesInTenMinutes - 2) / framesInOneMinute);
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(count) + static_cast<std::uint64_t>(skipped));
}

std::string formatFields(std::int64_t frame, FrameRate rate, Mode mode, const char* sign,
                         std::int64_t offset) {
    std::int64_t number = static_cast<std::int64_t>(static_cast<std::uint64_t>(offset) + magnitude(frame));
    if (mode == Mode::Drop) {
        number = dropFrameNumber(number);
    }
    const std::int64_t nominal = framesASecond(rate);
    const std::int64_t seconds = number / nominal;
    const char separator = mode == Mode::Drop ? ';' : ':';
    char text[64];
    std::snprintf(text, sizeof text, "%s%02d%c%02d%c%02d%c%02d", sign, static_cast<int>(seconds / 3600 % 24),
                  separator, static_cast<int>(seconds / 60 % 60), separator, static_cast<int>(seconds % 60),
                  separator, static_cast<int>(number % nominal));
    return text;
}

std::string formatFeet(std::int64_t frame, std::uint64_t framesAFoot, const char* sign) {
    char text[64];
    std::snprintf(text, sizeof text, "%s%02d+%02d", sign, static_cast<int>(magnitude(frame) / framesAFoot),
                  static_cast<int>(magnitude(frame) % framesAFoot));
    return text;
}

}  // namespace

std::int32_t framesFromFields(FrameRate rate, bool drop, std::int32_t hours, std::int32_t minutes,
                              std::int32_t seconds, std::int32_t frames) {
    return totalFrames(rate.nominalRate(), drop && rate.hasFlag(), static_cast<std::uint32_t>(hours),
                       static_cast<std::uint32_t>(minutes), static_cast<std::uint32_t>(seconds),
                       static_cast<std::uint32_t>(frames));
}

std::string formatTimecode(std::int64_t frame, FrameRate rate, Mode mode, bool showPlus,
                           std::int64_t offset) {
    const char* sign = frame < 0 ? "-" : showPlus ? "+" : "";
    switch (mode) {
        case Mode::NonDrop:
        case Mode::Drop:
            return formatFields(frame, rate, mode, sign, offset);
        case Mode::FrameNumber:
            return std::to_string(static_cast<std::int32_t>(frame));
        case Mode::Feet40:
            return formatFeet(frame, 40, sign);
        case Mode::Feet16:
            return formatFeet(frame, 16, sign);
    }
    return {};
}

std::int64_t parseTimecode(const std::string& text, FrameRate rate, Mode mode, std::int64_t offset,
                           std::int32_t* fieldCount) {
    if (fieldCount != nullptr) {
        *fieldCount = 4;
    }
    switch (mode) {
        case Mode::NonDrop:
        case Mode::Drop:
            return parseFields(text, rate, mode, offset, fieldCount);
        case Mode::FrameNumber: {
            const char* position = text.c_str();
            std::int32_t number = 0;
            readInteger(position, number);
            return number;
        }
        case Mode::Feet40:
            return parseFeet(text, 40);
        case Mode::Feet16:
            return parseFeet(text, 16);
    }
    return 0;
}

}  // namespace Morvane::Timecode
