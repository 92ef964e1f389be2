#pragma once

#include <gtest/gtest.h>
#include <semaphore.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <memory>
#include <string>

#include "processbridge/NamedSemaphore.h"
#include "processbridge/ResourceNames.h"
#include "processbridge/SharedMemoryFile.h"
#include "worker/bridge/BridgeEnd.h"

namespace Morvane::Worker {

/// A bridge whose host is the test itself: it makes the four objects as a controller does, puts requests into
/// the files and looks at the answers.
class BridgeFixture : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
        setenv("CORVEL_TEMP_DIR", folder.c_str(), 1);
        removeSharedObjects(names);
        dataFile = std::make_unique<ProcessBridge::SharedMemoryFile>(names.dataFile, true);
        requestFile = std::make_unique<ProcessBridge::SharedMemoryFile>(names.requestFile, true);
        ready = std::make_unique<ProcessBridge::NamedSemaphore>(names.readySemaphore, true, 0);
        done = std::make_unique<ProcessBridge::NamedSemaphore>(names.doneSemaphore, true, 0);
        bridge = std::make_unique<BridgeEnd>(names);
    }

    void TearDown() override {
        bridge.reset();
        done.reset();
        ready.reset();
        requestFile.reset();
        dataFile.reset();
        EXPECT_TRUE(std::filesystem::is_empty(folder / "processbridge"));
        std::filesystem::remove_all(folder);
    }

    /// Writes `bytes` as they are to the start of `file`.
    static void put(ProcessBridge::SharedMemoryFile& file, const std::string& bytes) {
        ASSERT_TRUE(file.resize(bytes.size()));
        std::memcpy(file.data(), bytes.data(), bytes.size());
        file.unmap();
    }
    void putRequest(const std::string& text) { put(*requestFile, text + '\0'); }
    void putData(const std::string& bytes) { put(*dataFile, bytes); }

    std::string answer() {
        EXPECT_TRUE(dataFile->map());
        const std::string text(dataFile->data(), strnlen(dataFile->data(), dataFile->lengthOnDisk()));
        dataFile->unmap();
        return text;
    }

    /// How many answers have been posted since the last call.
    int takeAnswers() {
        sem_t* semaphore = sem_open(semaphoreName(names.doneSemaphore).c_str(), 0);
        int count = 0;
        while (sem_trywait(semaphore) == 0)
            ++count;
        sem_close(semaphore);
        return count;
    }

    std::filesystem::path dataPath() const { return folder / "processbridge" / names.dataFile; }
    std::filesystem::path requestPath() const { return folder / "processbridge" / names.requestFile; }

    const std::filesystem::path folder = "/tmp/corvel-worker-core-" + std::to_string(getpid());
    /// The number stands in front: semaphores keep only the first 28 digits of a bridge name.
    const ProcessBridge::ResourceNames names{std::to_string(100000000000 + getpid()) +
                                             "00000000000000000000"};
    std::unique_ptr<ProcessBridge::SharedMemoryFile> dataFile, requestFile;
    std::unique_ptr<ProcessBridge::NamedSemaphore> ready, done;
    std::unique_ptr<BridgeEnd> bridge;
};

}  // namespace Morvane::Worker
