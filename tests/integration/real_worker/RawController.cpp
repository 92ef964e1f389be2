#include "tests/integration/real_worker/RawController.h"

#include <cstring>

#include "processbridge/ControllerResources.h"
#include "quicktime/Worker.h"

namespace Morvane::Testing {

RawController::RawController(const std::string& bridgeName, const std::string& mode)
    : Controller(bridgeName, QuickTime::workerPath, {mode}) {}

std::string RawController::ask(const std::string& request) {
    sendRequest(request);
    return answer;
}

std::string RawController::ask(const std::string& request, const std::string& text) {
    writeSharedString(text);
    return ask(request);
}

std::string RawController::askWithZeros(const std::string& request, std::uint64_t bytes) {
    if (resizeSharedData(bytes))
        std::memset(const_cast<char*>(sharedData()), 0, bytes);
    return ask(request);
}

std::string RawController::askForBytes(const std::string& request, std::uint64_t bytes) {
    bytesWanted = bytes;
    const std::string result = ask(request);
    bytesWanted = 0;
    return result;
}

void RawController::putRequestBytes(const std::string& bytes) {
    ProcessBridge::SharedMemoryFile& file = resources->requestFile;
    file.resize(bytes.size());
    std::memcpy(file.data(), bytes.data(), bytes.size());
    file.unmap();
}

std::string RawController::askUnchanged() {
    resources->readySemaphore.release(1);
    resources->doneSemaphore.acquire(1);
    resources->dataFile.map();
    completeRequest("");
    resources->dataFile.unmap();
    return answer;
}

pid_t RawController::workerProcess() const {
    return resources->process.pid;
}

void RawController::completeRequest(const std::string&) {
    if (bytesWanted == 0)
        answer = sharedText();
    else if (sharedData() != nullptr && resources->dataFile.size() >= bytesWanted)
        answer.assign(sharedData(), bytesWanted);
    else
        answer.clear();
}

}  // namespace Morvane::Testing
