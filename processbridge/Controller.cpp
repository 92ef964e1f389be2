#include "processbridge/Controller.h"

#include <algorithm>
#include <cstring>
#include <iostream>
#include <mutex>
#include <stdexcept>

#include "processbridge/ControllerData.h"
#include "processbridge/ControllerResources.h"

namespace Morvane::ProcessBridge {

namespace {

/// In a plain pointer, since files and semaphores are deliberately left in place when construction or
/// destruction of their controller fails.
ControllerResources* makeResources(const std::string& bridgeName) {
    return new ControllerResources(ResourceNames(bridgeName));
}

}  // namespace

Controller::Controller(const std::string& name, const std::string& workerPath,
                       const std::vector<std::string>& arguments)
    : resources(makeResources(name)) {
    std::vector<const char*> argumentList{name.c_str()};
    for (const std::string& argument : arguments) {
        argumentList.push_back(argument.c_str());
    }
    std::string path = workerPath;
    resources->process.launch(path, argumentList, false);
    if (!resources->process.isRunning()) {
        std::cerr << "Worker process " << workerPath << " failed" << std::endl;
        throw std::runtime_error("Could not launch worker process");
    }
}

Controller::~Controller() noexcept(false) {
    if (!resources->process.terminate()) {
        std::cerr << "Worker process failed" << std::endl;
        throw std::runtime_error("Worker process already stopped?");
    }
    resources->process.waitForExit();
    resources->dataFile.release();
    resources->requestFile.release();
    resources->process.closePipes();
    // Closes and unlinks the done semaphore, the ready semaphore, the request file and the data file.
    delete resources;
}

void Controller::sendRequest(const std::string& request) {
    const std::lock_guard lock(mutex);
    ControllerData exchange(this, request);
    static_cast<ExecutorI&>(exchange).execute();
}

const char* Controller::sharedData() const {
    return resources->dataFile.data();
}

bool Controller::resizeSharedData(std::uint64_t length) {
    return resources->dataFile.resize(length);
}

void Controller::writeSharedString(const std::string& text) {
    if (resources->dataFile.resize(text.size() + 1)) {
        std::memcpy(resources->dataFile.data(), text.c_str(), text.size() + 1);
    }
}

std::string Controller::readSharedString() {
    resources->dataFile.map();
    const std::string text = sharedText();
    resources->dataFile.unmap();
    return text;
}

std::string Controller::sharedText(std::uint64_t longest) const {
    const char* start = resources->dataFile.data();
    if (start == nullptr) {
        return {};
    }
    return {
        start,
        strnlen(start, std::min({longest, resources->dataFile.size(), resources->dataFile.lengthOnDisk()}))};
}

}  // namespace Morvane::ProcessBridge
