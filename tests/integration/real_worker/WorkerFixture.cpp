#include "tests/integration/real_worker/WorkerFixture.h"

#include <semaphore.h>
#include <stdlib.h>
#include <unistd.h>

#include "processbridge/ResourceNames.h"
#include "quicktime/BridgeName.h"

namespace Morvane::Testing {

int WorkerFixture::processNumber() {
    return getpid();
}

void WorkerFixture::SetUp() {
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder / "bridge");
    setenv("CORVEL_TEMP_DIR", (folder / "bridge").c_str(), 1);
    standardError = std::make_unique<StandardError>(path("stderr.txt"));
}

void WorkerFixture::TearDown() {
    for (const std::string& name : bridgeNames)
        EXPECT_FALSE(semaphoreExists(name)) << name;
    const std::filesystem::path bridge = folder / "bridge" / "processbridge";
    EXPECT_TRUE(!std::filesystem::exists(bridge) || std::filesystem::is_empty(bridge));
    standardError.reset();
    std::filesystem::remove_all(folder);
}

std::string WorkerFixture::newBridgeName() {
    bridgeNames.push_back(QuickTime::makeBridgeName());
    return bridgeNames.back();
}

bool WorkerFixture::semaphoreExists(const std::string& bridgeName) const {
    const ProcessBridge::ResourceNames names(bridgeName);
    for (const std::string& name : {names.readySemaphore, names.doneSemaphore}) {
        sem_t* semaphore = sem_open(name.substr(0, 30).c_str(), 0);
        if (semaphore != SEM_FAILED) {
            sem_close(semaphore);
            return true;
        }
    }
    return false;
}

}  // namespace Morvane::Testing
