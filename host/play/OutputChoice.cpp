#include "host/play/OutputChoice.h"

#include <fmt/format.h>
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <set>

#include "host/render/Failure.h"

namespace Corvel {

using Morvane::QuickTime::VideoOutputMode;

namespace {

const std::string networkPrefix = "Network ";
constexpr double furthest = 5;  // thousandths of a frame a second

bool beginsWith(const std::string& text, const std::string& beginning) {
    return strncasecmp(text.c_str(), beginning.c_str(), beginning.size()) == 0;
}

std::string namesOf(const std::vector<const OutputDeviceEntry*>& devices) {
    std::string names;
    for (const OutputDeviceEntry* device : devices) {
        names += fmt::format("{}{} (\"{}\")", names.empty() ? "" : ", ", device->number(), device->name);
    }
    return names.empty() ? "none" : names;
}

std::vector<const OutputDeviceEntry*> devicesThat(const std::vector<OutputDeviceEntry>& devices,
                                                  const auto& condition) {
    std::vector<const OutputDeviceEntry*> meant;
    for (const OutputDeviceEntry& device : devices) {
        if (condition(device)) {
            meant.push_back(&device);
        }
    }
    return meant;
}

/// What is asked of a mode. Without a rate, any.
struct ModeRequest {
    int width = 0;
    int height = 0;
    std::optional<double> rate;
};

std::string withoutBlanks(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(), [](unsigned char c) { return std::isspace(c) != 0; }),
               text.end());
    return text;
}

/// "1920x1080@25", "1920x1080,25", "1920x1080"; nothing for any other text.
std::optional<ModeRequest> parseMode(const std::string& text) {
    const std::string packed = withoutBlanks(text);
    ModeRequest request;
    int sizeLength = 0;
    if (std::sscanf(packed.c_str(), "%5d%*[xX]%5d%n", &request.width, &request.height, &sizeLength) != 2) {
        return std::nullopt;
    }
    const std::string rest = packed.substr(static_cast<std::size_t>(sizeLength));
    if (rest.empty()) {
        return request;
    }
    char* end = nullptr;
    request.rate = std::strtod(rest.c_str() + 1, &end);
    const bool whole = rest.size() > 1 && *end == '\0' && (rest[0] == '@' || rest[0] == ',');
    return whole ? std::optional(request) : std::nullopt;
}

std::string sizesOf(const OutputDeviceEntry& device) {
    std::string sizes;
    const VideoOutputMode* previous = nullptr;
    for (const VideoOutputMode& mode : device.modes) {
        if (previous == nullptr || previous->width != mode.width || previous->height != mode.height) {
            sizes += fmt::format("{}{}x{}", sizes.empty() ? "" : ", ", mode.width, mode.height);
        }
        previous = &mode;
    }
    return sizes.empty() ? "none" : sizes;
}

std::string ratesOf(const std::vector<const VideoOutputMode*>& modes) {
    std::string rates;
    for (const VideoOutputMode* mode : modes) {
        rates += fmt::format("{}{:g}", rates.empty() ? "" : ", ", mode->rate / 1000.0);
    }
    return rates;
}

}  // namespace

ChosenDevice chooseDevice(const std::vector<OutputDeviceEntry>& devices, const std::string& text) {
    const bool isNumber = !text.empty() && std::all_of(text.begin(), text.end(),
                                                       [](unsigned char c) { return std::isdigit(c) != 0; });
    auto meant = devicesThat(devices, [&](const OutputDeviceEntry& device) {
        return isNumber ? std::to_string(device.number()) == text
                        : strcasecmp(device.name.c_str(), text.c_str()) == 0;
    });
    if (meant.empty() && !isNumber && !text.empty()) {
        meant = devicesThat(devices,
                            [&](const OutputDeviceEntry& device) { return beginsWith(device.name, text); });
    }
    if (meant.size() == 1) {
        return {meant.front(), meant.front()->name};
    }
    if (meant.empty() && beginsWith(text, networkPrefix)) {
        const auto network = devicesThat(
            devices, [](const OutputDeviceEntry& device) { return beginsWith(device.name, networkPrefix); });
        if (network.size() == 1) {
            return {network.front(), networkPrefix + text.substr(networkPrefix.size())};
        }
    }
    if (meant.size() > 1) {
        throw Failure(Exit::Usage,
                      fmt::format("\"{}\" may be any of these devices: {}", text, namesOf(meant)));
    }
    const auto all = devicesThat(devices, [](const OutputDeviceEntry&) { return true; });
    throw Failure(Exit::Usage,
                  fmt::format("there is no video output \"{}\"; there are: {}", text, namesOf(all)));
}

const VideoOutputMode& chooseMode(const OutputDeviceEntry& device, const std::string& text) {
    const std::optional<ModeRequest> request = parseMode(text);
    std::vector<const VideoOutputMode*> ofSize;
    for (const VideoOutputMode& mode : device.modes) {
        if (strcasecmp(mode.name.c_str(), text.c_str()) == 0) {
            return mode;
        }
        if (request && mode.width == request->width && mode.height == request->height) {
            ofSize.push_back(&mode);
        }
    }
    if (ofSize.empty()) {
        throw Failure(Exit::Usage, fmt::format("{} has no mode \"{}\"; its sizes are: {}", device.name, text,
                                               sizesOf(device)));
    }
    if (!request->rate && ofSize.size() == 1) {
        return *ofSize.front();
    }
    const double wanted = request->rate.value_or(0) * 1000;
    const auto distance = [wanted](const VideoOutputMode* mode) { return std::abs(mode->rate - wanted); };
    const VideoOutputMode* nearest = *std::min_element(
        ofSize.begin(), ofSize.end(), [&](const VideoOutputMode* one, const VideoOutputMode* other) {
            return distance(one) < distance(other);
        });
    if (!request->rate || !(distance(nearest) <= furthest)) {
        throw Failure(Exit::Usage, fmt::format("{} shows {}x{} at these rates: {}", device.name,
                                               request->width, request->height, ratesOf(ofSize)));
    }
    return *nearest;
}

}  // namespace Corvel
