#include "host/play/OutputDeviceList.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "host/play/OutputHelper.h"
#include "host/render/HelperSession.h"

namespace Corvel {

using Morvane::QuickTime::VideoOutputDevice;
using Morvane::QuickTime::VideoOutputMode;

namespace {

double framesPerSecond(const VideoOutputMode& mode) {
    return mode.rate / 1000.0;
}

bool isSameSize(const VideoOutputMode& one, const VideoOutputMode& other) {
    return one.width == other.width && one.height == other.height;
}

}  // namespace

std::vector<OutputDeviceEntry> listOutputDevices(Morvane::QuickTime::QuickTimeVideoOutputInterface& output) {
    std::vector<VideoOutputDevice> found;
    output.getDevices(found);
    std::vector<OutputDeviceEntry> entries;
    for (const VideoOutputDevice& device : found) {
        OutputDeviceEntry entry{device.name, device.handle, {}};
        output.getModes(device.handle, entry.modes);
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<OutputDeviceEntry> askForOutputDevices(Reporter& reporter) {
    HelperSession session(0, reporter);
    OutputHelper helper(session);
    session.setActivity("asking for the video outputs");
    return listOutputDevices(helper.output());
}

std::string deviceTable(const std::vector<OutputDeviceEntry>& devices) {
    std::string text;
    for (const OutputDeviceEntry& device : devices) {
        text += fmt::format("{}  {}\n", device.number(), device.name);
        const VideoOutputMode* previous = nullptr;
        for (const VideoOutputMode& mode : device.modes) {
            const bool sameLine = previous != nullptr && isSameSize(*previous, mode);
            if (!sameLine) {
                const std::string size = fmt::format("{} x {}", mode.width, mode.height);
                text += fmt::format("{}     {:<11} at", previous != nullptr ? "\n" : "", size);
            }
            text += fmt::format("{} {:g}", sameLine ? "," : "", framesPerSecond(mode));
            previous = &mode;
        }
        text += previous != nullptr ? "\n" : "";
    }
    return text;
}

std::string deviceJson(const std::vector<OutputDeviceEntry>& devices) {
    auto array = nlohmann::ordered_json::array();
    for (const OutputDeviceEntry& device : devices) {
        auto modes = nlohmann::ordered_json::array();
        for (const VideoOutputMode& mode : device.modes) {
            modes.push_back({{"width", mode.width},
                             {"height", mode.height},
                             {"rate", framesPerSecond(mode)},
                             {"name", mode.name}});
        }
        array.push_back({{"name", device.name}, {"handle", device.number()}, {"modes", modes}});
    }
    // A display's name is whatever its maker wrote into it; bytes that are no UTF-8 must not stop the list.
    return array.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace Corvel
