#include "processbridge/ControllerData.h"

#include <cstring>

#include "processbridge/Controller.h"
#include "processbridge/ControllerResources.h"

namespace Morvane::ProcessBridge {

ControllerData::ControllerData(Controller* controller, const std::string& request)
    : controller(controller), request(request) {}

void ControllerData::execute() {
    ControllerResources& shared = *controller->resources;
    if (!shared.requestFile.resize(request.size() + 1)) {
        return;
    }
    std::memcpy(shared.requestFile.data(), request.c_str(), request.size() + 1);
    // The controller holds no view of the request while the worker reads it.
    shared.requestFile.unmap();
    if (shared.readySemaphore.release(1) && shared.doneSemaphore.acquire(1)) {
        // Follows any growth by the worker.
        shared.dataFile.map();
        controller->completeRequest(std::string(request));
        shared.dataFile.unmap();
    }
}

}  // namespace Morvane::ProcessBridge
