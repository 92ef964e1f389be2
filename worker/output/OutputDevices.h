#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "worker/output/OutputDevice.h"

namespace Morvane::Worker {

/// Makes the devices of this machine, each time anew. A test puts in devices of its own.
using FindDevices = std::function<std::vector<std::unique_ptr<OutputDevice>>()>;

/// The network device, if there is one, then the displays: the one that is always there comes first, so that
/// its handle does not depend on which displays are plugged in.
std::vector<std::unique_ptr<OutputDevice>> findOutputDevices();

/// The devices under the handles that the host knows them by. Looked for once, when first asked, so that a
/// handle means the same device as long as the worker runs. Request thread.
class OutputDevices {
public:
    explicit OutputDevices(FindDevices find) : find(std::move(find)) {}

    /// All devices; the handle of each is its index plus 1, never 0.
    const std::vector<std::unique_ptr<OutputDevice>>& all();

    /// The device behind `handle`, null where there is none. Lives as long as this object.
    const OutputDevice* byHandle(std::uintptr_t handle);

private:
    FindDevices find;
    bool found = false;
    std::vector<std::unique_ptr<OutputDevice>> devices;
};

}  // namespace Morvane::Worker
