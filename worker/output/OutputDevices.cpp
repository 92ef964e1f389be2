#include "worker/output/OutputDevices.h"

#include <iterator>

#include "worker/output/NetworkDevice.h"
#include "worker/output/WindowDevice.h"

namespace Morvane::Worker {

std::vector<std::unique_ptr<OutputDevice>> findOutputDevices() {
    std::vector<std::unique_ptr<OutputDevice>> devices = NetworkDevice::findAll();
    std::vector<std::unique_ptr<OutputDevice>> displays = WindowDevice::findAll();
    std::move(displays.begin(), displays.end(), std::back_inserter(devices));
    return devices;
}

const std::vector<std::unique_ptr<OutputDevice>>& OutputDevices::all() {
    if (!found) {
        devices = find();
        found = true;
    }
    return devices;
}

const OutputDevice* OutputDevices::byHandle(std::uintptr_t handle) {
    return handle >= 1 && handle <= all().size() ? devices[handle - 1].get() : nullptr;
}

}  // namespace Morvane::Worker
