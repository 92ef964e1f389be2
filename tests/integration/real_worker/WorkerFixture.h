#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/integration/real_worker/StandardError.h"

namespace Morvane::Testing {

/// A test with real workers: a folder of its own for movies and for the bridge, standard error collected, and
/// at the end the proof that no file and no semaphore of the bridge is left.
class WorkerFixture : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    /// A new bridge name, remembered for the proof. Its semaphores' names differ from those of all others.
    std::string newBridgeName();

    bool semaphoreExists(const std::string& bridgeName) const;
    std::string path(const std::string& name) const { return (folder / name).string(); }

    /// The lines that the worker has written to standard error so far.
    std::string errors() const { return standardError->text(); }

    const std::filesystem::path folder =
        std::filesystem::path("/tmp") / ("corvel-real-worker-" + std::to_string(processNumber()));

private:
    static int processNumber();

    std::vector<std::string> bridgeNames;
    std::unique_ptr<StandardError> standardError;
};

}  // namespace Morvane::Testing
