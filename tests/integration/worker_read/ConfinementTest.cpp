#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <string>

#include "tests/integration/real_worker/RawController.h"
#include "tests/integration/real_worker/WorkerFixture.h"

namespace Morvane::Testing {
namespace {

class ConfinementTest : public WorkerFixture {
protected:
    void TearDown() override {
        unsetenv("CORVEL_HELPER_CONFINEMENT");
        WorkerFixture::TearDown();
    }

    /// How the system filters the worker's calls (2: it does, 0: not), once the worker has answered.
    std::string filterOf(const std::string& mode) {
        RawController sut(newBridgeName(), mode);
        sut.ask("R00000002");
        std::ifstream status("/proc/" + std::to_string(sut.workerProcess()) + "/status");
        for (std::string line; std::getline(status, line);)
            if (line.rfind("Seccomp:\t", 0) == 0)
                return line.substr(9);
        return "";
    }
};

TEST_F(ConfinementTest, IsInForceWhereMoviesAreRead) {
    EXPECT_EQ(filterOf("read"), "2");
}

TEST_F(ConfinementTest, CanBeTurnedOff) {
    setenv("CORVEL_HELPER_CONFINEMENT", "off", 1);
    EXPECT_EQ(filterOf("read"), "0");
}

}  // namespace
}  // namespace Morvane::Testing
