#pragma once

#include <string>

#include "processbridge/ExecutorI.h"

namespace Morvane::ProcessBridge {

class Controller;

/// One request on its way: lives on the stack of `Controller::sendRequest`.
class ControllerData : public ExecutorI {
public:
    /// The controller is not owned and must outlive this.
    ControllerData(Controller* controller, const std::string& request);
    ~ControllerData() override = default;

    /// The whole exchange. REQUIRES: the controller's mutex is held. A request file that cannot be grown ends
    /// it before the worker has heard anything: `completeRequest` is not called.
    void execute() override;

private:
    Controller* controller;
    std::string request;
};

}  // namespace Morvane::ProcessBridge
