#include "worker/output/WindowDevice.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "worker/FailureReport.h"
#include "worker/Status.h"
#include "worker/output/DisplayServer.h"
#include "worker/output/SdlLibrary.h"
#include "worker/output/WindowPort.h"

namespace Morvane::Worker {

namespace {

// A plain array, since a jump may leave the code that fills it.
struct FoundDisplay {
    char label[128];
    int width;
    int height;
    int rate;
};

constexpr int mostDisplays = 16;

int listDisplays(const SdlLibrary& sdl, FoundDisplay* found) {
    const int count = std::clamp(sdl.getNumVideoDisplays(), 0, mostDisplays);
    for (int index = 0; index < count; ++index) {
        const char* label = sdl.getDisplayName(index);
        std::snprintf(found[index].label, sizeof found[index].label, "%s", label ? label : "");
        SDL_DisplayMode desktop = {};
        sdl.getDesktopDisplayMode(index, &desktop);
        found[index].width = desktop.w;
        found[index].height = desktop.h;
        found[index].rate = desktop.refresh_rate > 0 ? desktop.refresh_rate : 60;
    }
    return count;
}

}  // namespace

std::vector<std::unique_ptr<OutputDevice>> WindowDevice::findAll() {
    std::vector<std::unique_ptr<OutputDevice>> devices;
    if (!DisplayServer::isNamed())
        return devices;
    FoundDisplay found[mostDisplays] = {};
    int count = 0;
    try {
        const SdlLibrary& sdl = SdlLibrary::instance();
        DisplayServer::call([&] {
            if (sdl.init(SDL_INIT_VIDEO) != 0) {
                reportRemark(fmt::format("cannot use the displays: {}", sdl.getError()));
                return;
            }
            DisplayServer::watchForLoss();
            count = listDisplays(sdl, found);
            sdl.quit();
        });
    } catch (const StatusError& error) {
        reportRemark(error.what());
        return devices;
    }
    for (int index = 0; index < count; ++index) {
        const OutputMode own{found[index].width, found[index].height, {found[index].rate, 1}};
        devices.push_back(std::make_unique<WindowDevice>(index, found[index].label, own));
    }
    return devices;
}

WindowDevice::WindowDevice(int index, std::string label, const OutputMode& own)
    : index(index), label(std::move(label)), own(own) {}

std::string WindowDevice::name() const {
    return label.empty() ? fmt::format("Display {}", index + 1)
                         : fmt::format("Display {}: {}", index + 1, label);
}

std::vector<OutputMode> WindowDevice::modes() const {
    std::vector<OutputMode> modes = standardModes(own.width, own.height);
    if (std::find(modes.begin(), modes.end(), own) == modes.end())
        modes.push_back(own);
    return modes;
}

std::string WindowDevice::lockKey(const std::string& /*title*/) const {
    const char* server = std::getenv("DISPLAY");
    return fmt::format("display-{}-{}", server ? server : "", index + 1);
}

std::unique_ptr<OutputPort> WindowDevice::open(const OutputMode& mode, Presentation presentation,
                                               const std::string& title) const {
    return std::make_unique<WindowPort>(index, mode, presentation, title.empty() ? name() : title);
}

}  // namespace Morvane::Worker
