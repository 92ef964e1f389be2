#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "processbridge/Controller.h"
#include "processbridge/ControllerResources.h"

namespace Morvane::Testing {

inline const std::string bundledWorker = "../Resources/CorvelQuickTimeHelper-32.app/CorvelQuickTimeHelper-32";

/// A controller that keeps what `completeRequest` finds.
class TestController : public ProcessBridge::Controller {
public:
    explicit TestController(const std::string& name, const std::string& workerPath = bundledWorker,
                            const std::vector<std::string>& arguments = {"write"})
        : Controller(name, workerPath, arguments) {}

    using Controller::resources;
    using Controller::sharedText;

    std::vector<std::string> completed;  ///< the requests that were answered
    std::vector<std::string> answers;    ///< the texts that answered them
    bool failToComplete = false;

protected:
    void completeRequest(const std::string& request) override {
        if (failToComplete) {
            throw std::runtime_error("cannot complete");
        }
        completed.push_back(request);
        answers.push_back(sharedText());
    }
};

}  // namespace Morvane::Testing
