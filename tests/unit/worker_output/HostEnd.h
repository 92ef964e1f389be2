#pragma once

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"
#include "quicktime/BridgeName.h"
#include "worker/bridge/BridgeEnd.h"
#include "worker/bridge/RequestLoop.h"

namespace Morvane::Worker {

/// Both ends of a bridge in the test's own process, with no worker and no waiting: what a host would send
/// goes through the real files to the mode, and what the host would read comes back.
class HostEnd {
public:
    explicit HostEnd(Mode& mode)
        : folder("/tmp/corvel-output-test-" + identifier),
          names(nameIn(folder)),
          dataFile(names.dataFile, true),
          requestFile(names.requestFile, true),
          ready(names.readySemaphore, true, 0),
          done(names.doneSemaphore, true, 0),
          worker(names),
          loop(worker, mode) {}

    ~HostEnd() {
        dataFile.unmap();
        std::filesystem::remove_all(folder);
    }

    /// Sends `text` and answers with what the worker answered.
    std::string send(const std::string& text) {
        requestFile.resize(text.size() + 1);
        std::memcpy(requestFile.data(), text.c_str(), text.size() + 1);
        requestFile.unmap();
        dataFile.unmap();
        loop.serve();
        done.acquire(1);
        dataFile.map();
        std::string answer(dataFile.data(), strnlen(dataFile.data(), dataFile.size()));
        dataFile.unmap();
        return answer;
    }

    /// Places `pixels` and sends them as a frame.
    std::string sendFrame(const std::vector<float>& pixels) {
        dataFile.resize(pixels.size() * sizeof(float));
        std::memcpy(dataFile.data(), pixels.data(), pixels.size() * sizeof(float));
        return send("V00000004");
    }

private:
    static std::string nameIn(const std::string& folder) {
        std::filesystem::create_directories(folder);
        setenv("CORVEL_TEMP_DIR", folder.c_str(), 1);
        return folder.substr(folder.size() - 32);
    }

    const std::string identifier = QuickTime::makeBridgeName();
    const std::string folder;
    const ProcessBridge::ResourceNames names;
    ProcessBridge::SharedMemoryFile dataFile;
    ProcessBridge::SharedMemoryFile requestFile;
    ProcessBridge::NamedSemaphore ready;
    ProcessBridge::NamedSemaphore done;
    BridgeEnd worker;
    RequestLoop loop;
};

}  // namespace Morvane::Worker
