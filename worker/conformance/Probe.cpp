#include "worker/conformance/Probe.h"

#include <semaphore.h>

#include <algorithm>
#include <stdexcept>

#include "processbridge/ControllerResources.h"

namespace Morvane::Worker {

Probe::Probe(const std::string& bridgeName, const std::string& workerPath, const std::string& mode)
    : Controller(bridgeName, workerPath, {mode}), name(bridgeName) {}

std::string Probe::ask(const std::string& request) {
    sendRequest(request);
    return answer;
}

std::string Probe::ask(const std::string& request, const std::string& text) {
    writeSharedString(text);
    return ask(request);
}

std::string Probe::askWithFrame(const std::string& request, std::size_t frameBytes) {
    if (!resizeSharedData(frameBytes)) {
        throw std::runtime_error("no room for a frame in shared memory");
    }
    float* samples = reinterpret_cast<float*>(const_cast<char*>(sharedData()));
    std::fill_n(samples, frameBytes / sizeof(float), 0.5f);
    return ask(request);
}

int Probe::extraPosts() const {
    const ProcessBridge::ResourceNames names(name);
    sem_t* done = sem_open(names.doneSemaphore.substr(0, 30).c_str(), 0);
    if (done == SEM_FAILED) {
        throw std::runtime_error("the done semaphore is gone while the host still uses it");
    }
    int value = 0;
    sem_getvalue(done, &value);
    sem_close(done);
    return value;
}

void Probe::completeRequest(const std::string&) {
    answer = sharedText();
    bytes = resources->dataFile.size();
}

pid_t Probe::worker() const {
    return resources->process.pid;
}

}  // namespace Morvane::Worker
