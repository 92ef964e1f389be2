#include "host/movies/RunningTimecode.h"

#include <fmt/format.h>

#include <cstdint>
#include <cstdio>

namespace Corvel {
namespace {

// Numbers left out at the start of each minute but every tenth.
std::int64_t droppedEachMinute(std::int64_t rate) {
    return rate / 30 * 2;
}

std::int64_t withoutDropped(std::int64_t number, std::int64_t minutes, std::int64_t rate) {
    return number - droppedEachMinute(rate) * (minutes - minutes / 10);
}

std::int64_t withDropped(std::int64_t frame, std::int64_t rate) {
    const std::int64_t dropped = droppedEachMinute(rate);
    const std::int64_t tenMinutes = 600 * rate - 9 * dropped;
    const std::int64_t minute = 60 * rate - dropped;
    const std::int64_t rest = frame % tenMinutes;
    const std::int64_t minutes = rest < 60 * rate ? 0 : 1 + (rest - 60 * rate) / minute;
    return frame + dropped * (9 * (frame / tenMinutes) + minutes);
}

}  // namespace

std::string timecodeAfter(const std::string& start, int frames, int nominalRate) {
    int hours = 0, minutes = 0, seconds = 0, frame = 0;
    char separator = 0;
    if (nominalRate < 1 ||
        std::sscanf(start.c_str(), "%2d:%2d:%2d%c%3d", &hours, &minutes, &seconds, &separator, &frame) != 5) {
        return start;
    }
    const std::int64_t rate = nominalRate;
    const bool drop = separator != ':' && rate % 30 == 0;
    const std::int64_t totalMinutes = std::int64_t{hours} * 60 + minutes;
    std::int64_t number = (totalMinutes * 60 + seconds) * rate + frame;
    number = (drop ? withoutDropped(number, totalMinutes, rate) : number) + frames;
    const std::int64_t day = drop ? withoutDropped(86400 * rate, 1440, rate) : 86400 * rate;
    number = (number % day + day) % day;
    number = drop ? withDropped(number, rate) : number;
    const std::int64_t second = number / rate;
    return fmt::format("{:02}:{:02}:{:02}{}{:02}", second / 3600, second / 60 % 60, second % 60, separator,
                       number % rate);
}

}  // namespace Corvel
