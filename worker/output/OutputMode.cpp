#include "worker/output/OutputMode.h"

#include <fmt/format.h>

namespace Morvane::Worker {

namespace {

struct Size {
    int width;
    int height;
};

// Square pixels throughout. A mode has no pixel aspect, so standard-definition video appears at its square
// sizes.
constexpr Size standardSizes[] = {
    {640, 360},   {640, 480},  {768, 576},   {960, 540},   {1280, 720},  {1920, 1080},
    {1998, 1080}, {2048, 858}, {2048, 1080}, {2048, 1556}, {3840, 2160}, {4096, 2160},
};

constexpr OutputMode::Rate standardRates[] = {
    {24000, 1001}, {24, 1}, {25, 1}, {30000, 1001}, {30, 1},
    {48000, 1001}, {48, 1}, {50, 1}, {60000, 1001}, {60, 1},
};

}  // namespace

std::int32_t OutputMode::thousandths() const {
    return static_cast<std::int32_t>((rate.frames * 1000 + rate.seconds / 2) / rate.seconds);
}

std::string OutputMode::name() const {
    return fmt::format("{} x {}, {:g}", width, height, thousandths() / 1000.0);
}

std::uint64_t OutputMode::frameBytes() const {
    return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) * 4 * sizeof(float);
}

std::vector<OutputMode> standardModes(int maxWidth, int maxHeight) {
    std::vector<OutputMode> modes;
    for (const Size& size : standardSizes) {
        if (size.width > maxWidth || size.height > maxHeight)
            continue;
        for (const OutputMode::Rate& rate : standardRates)
            modes.push_back({size.width, size.height, rate});
    }
    return modes;
}

}  // namespace Morvane::Worker
