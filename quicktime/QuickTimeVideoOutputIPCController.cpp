#include "quicktime/QuickTimeVideoOutputIPCController.h"

#include <cstring>
#include <iostream>
#include <map>
#include <new>

#include "processbridge/ControllerResources.h"
#include "property/RequestText.h"
#include "quicktime/Answer.h"
#include "quicktime/BridgeName.h"
#include "quicktime/VideoOutputTask.h"
#include "quicktime/Worker.h"

namespace Morvane::QuickTime {

namespace {

using Property::readNumber;
using Property::splitFields;

template <typename... Arguments>
std::string request(std::int32_t opcode, const Arguments&... arguments) {
    return Property::requestText('V', opcode, arguments...);
}

// What the worker has told about devices, for all controllers of the process and until it ends. Each is
// written under the mutex of the controller that asked.
std::vector<VideoOutputDevice> knownDevices;
std::map<std::string, std::vector<VideoOutputMode>> knownModes;  ///< by the text of the device's handle

void completeDevices(const std::string& answer) {
    const std::deque<std::string> fields = splitFields(answer);
    for (std::size_t index = 0; index + 2 <= fields.size(); index += 2) {
        VideoOutputDevice device{fields[index], nullptr};
        readNumber(fields[index + 1], device.handle);
        knownDevices.push_back(device);
    }
}

std::vector<VideoOutputMode> readModes(const std::string& answer) {
    std::vector<VideoOutputMode> modes;
    const std::deque<std::string> entries = splitFields(answer);
    for (const std::string& entry : entries) {
        if (entry.empty()) {
            break;
        }
        const std::deque<std::string> fields = splitFields(entry);
        if (fields.size() < 4) {
            std::cerr << "Video output mode dropped, it has fewer than four fields: " << entry << std::endl;
            continue;
        }
        VideoOutputMode mode;
        readNumber(fields[0], mode.width);
        readNumber(fields[1], mode.height);
        readNumber(fields[2], mode.rate);
        mode.name = fields[3];
        modes.push_back(mode);
    }
    return modes;
}

}  // namespace

QuickTimeVideoOutputIPCController::QuickTimeVideoOutputIPCController(const std::string& identifier)
    : Controller(identifier, workerPath, {"videooutput"}) {}

QuickTimeVideoOutputIPCController::QuickTimeVideoOutputIPCController(const std::string& identifier,
                                                                     VideoOutputHandle device,
                                                                     const std::string& name)
    : QuickTimeVideoOutputIPCController(identifier) {
    sendRequest(request(0, device, name));
}

std::int32_t QuickTimeVideoOutputIPCController::selectMode(const VideoOutputMode& mode,
                                                           std::int32_t display) {
    sendRequest(request(2, mode.width, mode.height, mode.rate, display));
    return result;
}

std::int32_t QuickTimeVideoOutputIPCController::closeOutput() {
    sendRequest(request(3));
    frameSize = 0;
    value6 = -1;
    value5 = -1;
    value7 = -1;
    // value8 deliberately keeps its answer: it belongs to the device, not to the mode.
    return -1;
}

std::int32_t QuickTimeVideoOutputIPCController::sendFrame(const char* frame) {
    const std::uint64_t bytes = getFrameSize();
    const bool mapped = resizeSharedData(bytes);
    if (bytes != 0) {
        if (!mapped) {
            return result = noSharedMemory;
        }
        std::memcpy(resources->dataFile.data(), frame, bytes);
    }
    sendRequest(request(4));
    return result;
}

std::int32_t QuickTimeVideoOutputIPCController::query(std::int32_t& value, std::int32_t opcode) {
    if (value == -1) {
        sendRequest(request(opcode));
    }
    return value;
}

std::int32_t QuickTimeVideoOutputIPCController::queryValue5() {
    return query(value5, 5);
}

std::int32_t QuickTimeVideoOutputIPCController::queryValue6() {
    return query(value6, 6);
}

std::int32_t QuickTimeVideoOutputIPCController::queryValue7() {
    return query(value7, 7);
}

std::int32_t QuickTimeVideoOutputIPCController::queryValue8() {
    return query(value8, 8);
}

std::uint64_t QuickTimeVideoOutputIPCController::getFrameSize() {
    if (frameSize == 0) {
        sendRequest(request(9));
    }
    return frameSize;
}

void QuickTimeVideoOutputIPCController::getModes(VideoOutputHandle device,
                                                 std::vector<VideoOutputMode>& modes) {
    const std::string key = Property::numberText(device);
    if (knownModes.find(key) == knownModes.end()) {
        sendRequest(request(10, device));
    }
    const auto found = knownModes.find(key);
    if (found != knownModes.end()) {
        modes = found->second;
    }
}

void QuickTimeVideoOutputIPCController::getDevices(std::vector<VideoOutputDevice>& devices) {
    if (knownDevices.empty()) {
        sendRequest(request(11));
    }
    devices = knownDevices;
}

void QuickTimeVideoOutputIPCController::completeRequest(const std::string& request) {
    const std::string answer = sharedText();
    switch (Property::parseOpcode(request)) {
        case 2:
        case 4:
            readNumber(answer, result);
            break;
        case 5:
            readNumber(answer, value5);
            break;
        case 6:
            readNumber(answer, value6);
            break;
        case 7:
            readNumber(answer, value7);
            break;
        case 8:
            readNumber(answer, value8);
            break;
        case 9:
            readNumber(answer, frameSize);
            break;
        case 10:
            completeModes(request, answer);
            break;
        case 11:
            completeDevices(answer);
            break;
        default:
            break;
    }
}

void QuickTimeVideoOutputIPCController::completeModes(const std::string& request, const std::string& answer) {
    if (isError(answer)) {
        readErrorCode(answer, result);
        return;
    }
    const VideoOutputTask task(request);
    knownModes[Property::numberText(task.device)] = readModes(answer);
}

QuickTimeVideoOutputIPCController* createVideoOutputController() {
    return new (std::nothrow) QuickTimeVideoOutputIPCController(makeBridgeName());
}

QuickTimeVideoOutputIPCController* createVideoOutputController(VideoOutputHandle device,
                                                               const std::string& name) {
    return new (std::nothrow) QuickTimeVideoOutputIPCController(makeBridgeName(), device, name);
}

}  // namespace Morvane::QuickTime
