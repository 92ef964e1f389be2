#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include "processbridge/ControllerData.h"
#include "tests/children/recording_worker/Recording.h"
#include "tests/unit/processbridge/TestController.h"

namespace {

using Morvane::ProcessBridge::ControllerData;
using Morvane::ProcessBridge::ExecutorI;
using Morvane::Testing::TestController;
using Texts = std::vector<std::string>;

std::string nameOfThisProcess() {
    std::string digits = "fedcba9876543210fedcba9876543210";
    const std::string process = std::to_string(getpid());
    return digits.replace(8, process.size(), process);
}

class ControllerRequest : public testing::Test {
protected:
    ~ControllerRequest() override {
        sut.reset();
        if (!recording.arguments().empty()) {
            EXPECT_EQ(recording.leftovers(), Texts{});
        }
    }

    std::string requestFileOnDisk() const {
        std::ifstream stream(recording.folder / "shared" / "processbridge" / (name + "T"), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    const Morvane::Testing::Recording recording;
    const std::string name = nameOfThisProcess();
    std::unique_ptr<TestController> sut = std::make_unique<TestController>(name);
};

TEST_F(ControllerRequest, ReachesTheWorkerAndComesBackWithItsAnswer) {
    recording.answer("W00000001", "Error: 3");

    sut->sendRequest("W00000001:12:0");

    EXPECT_EQ(recording.requests(), Texts{"W00000001:12:0"});
    EXPECT_EQ(sut->completed, Texts{"W00000001:12:0"});
    EXPECT_EQ(sut->answers, Texts{"Error: 3"});
}

TEST_F(ControllerRequest, MayBeEmpty) {
    sut->sendRequest("");

    EXPECT_EQ(recording.requests(), Texts{""});
    EXPECT_EQ(requestFileOnDisk(), std::string("\0", 1));
}

TEST_F(ControllerRequest, LeavesTheTailOfALongerOneBehindItsNul) {
    sut->sendRequest("W00000003:1.5:a.wav");
    sut->sendRequest("W00000002");

    EXPECT_EQ(recording.requests(), (Texts{"W00000003:1.5:a.wav", "W00000002"}));
    EXPECT_EQ(requestFileOnDisk(), std::string("W00000002\0001.5:a.wav\0", 20));
}

TEST_F(ControllerRequest, UnmapsBothFilesWhenItIsDone) {
    sut->writeSharedString("payload");
    EXPECT_NE(sut->sharedData(), nullptr);

    sut->sendRequest("W00000002");

    EXPECT_EQ(sut->sharedData(), nullptr);
    EXPECT_FALSE(sut->resources->requestFile.isValid());
}

TEST_F(ControllerRequest, FollowsTheWorkersGrowthOfTheDataFile) {
    const std::string large(300000, 'x');
    recording.answer("W00000015", large);
    sut->writeSharedString("small");

    sut->sendRequest("W00000015");

    EXPECT_EQ(sut->answers, Texts{large});
    EXPECT_EQ(sut->readSharedString(), large);
    EXPECT_EQ(sut->sharedData(), nullptr);
}

TEST_F(ControllerRequest, CarriesAPayload) {
    ASSERT_TRUE(sut->resizeSharedData(4));
    std::memcpy(sut->resources->dataFile.data(), "\0\1\2\3", 4);

    sut->sendRequest("W00000001:1:0");

    EXPECT_EQ(recording.payload(0), std::string("\0\1\2\3", 4));
}

TEST_F(ControllerRequest, CarriesATextWithItsNul) {
    sut->writeSharedString("text");

    EXPECT_STREQ(sut->sharedData(), "text");
    sut->sendRequest("W00000006");
    EXPECT_EQ(recording.payload(0), std::string("text\0", 5));
}

TEST_F(ControllerRequest, EndsATextWithTheMappingWhereTheWorkerWroteNoNul) {
    recording.answerBytes("W00000006", std::string(8192, 'x'));

    sut->sendRequest("W00000006");

    EXPECT_EQ(sut->answers, Texts{std::string(8192, 'x')});
}

TEST_F(ControllerRequest, GivesItsMutexBackWhenItCannotBeCompleted) {
    sut->failToComplete = true;
    EXPECT_THROW(sut->sendRequest("W00000002"), std::runtime_error);
    // Deliberate: the data file stays mapped until the next use.
    EXPECT_NE(sut->sharedData(), nullptr);

    sut->failToComplete = false;
    sut->sendRequest("W00000004:1");

    EXPECT_EQ(sut->completed, Texts{"W00000004:1"});
    EXPECT_EQ(sut->sharedData(), nullptr);
}

TEST_F(ControllerRequest, ServesThreadsOneAfterTheOther) {
    constexpr int each = 200;
    const auto send = [&](char kind) {
        for (int index = 0; index < each; ++index) {
            sut->sendRequest(kind + std::to_string(10000000 + index));
        }
    };

    std::thread other(send, 'a');
    send('b');
    other.join();

    // What was completed is what the worker saw, in the same order.
    EXPECT_EQ(sut->completed.size(), std::size_t{2 * each});
    EXPECT_EQ(sut->completed, recording.requests());
}

TEST_F(ControllerRequest, IsIndependentOfOtherControllers) {
    std::string otherName = name;
    otherName.replace(20, 4, "beef");
    recording.hold("W00000001");
    std::thread waiting([&] { sut->sendRequest("W00000001:1:0"); });
    recording.waitForRequests(1);

    {
        TestController other(otherName);
        other.sendRequest("W00000002");
        EXPECT_EQ(other.completed, Texts{"W00000002"});
    }

    EXPECT_EQ(sut->completed, Texts{});
    sut->resources->doneSemaphore.release(1);  // in place of the worker, which holds
    waiting.join();
    EXPECT_EQ(sut->completed, Texts{"W00000001:1:0"});
}

TEST_F(ControllerRequest, IsNotSentWhereTheRequestFileCannotGrow) {
    setenv("CORVEL_TEMP_DIR", "/no/such/folder", 1);
    std::string otherName = name;
    otherName.replace(20, 4, "beef");
    TestController other(otherName);
    testing::internal::CaptureStderr();

    other.sendRequest("W00000002");

    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Could not open file: No such file or directory\nfile resize failed: Bad file descriptor\n");
    EXPECT_EQ(other.completed, Texts{});
}

TEST_F(ControllerRequest, WritesNoTextWhereTheDataFileCannotGrow) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(sut->resizeSharedData(std::uint64_t{1} << 62));
    sut->writeSharedString("text");
    testing::internal::GetCapturedStderr();

    EXPECT_EQ(sut->sharedData(), nullptr);
    EXPECT_EQ(sut->sharedText(), "");
}

/// The place of a virtual operation in its class's table, in the Itanium C++ ABI.
template <typename Operation>
std::size_t slotOf(Operation operation) {
    std::size_t value = 0;
    std::memcpy(&value, &operation, sizeof value);
    return (value - 1) / sizeof(void*);
}

struct Slots : TestController {
    using TestController::completeRequest;
};

TEST(ControllerInterface, KeepsTheOrderOfItsOperations) {
    EXPECT_EQ(slotOf(&Slots::completeRequest), 2u);
    EXPECT_EQ(slotOf(&ExecutorI::execute), 2u);
    EXPECT_EQ(slotOf(&ControllerData::execute), 2u);
}

/// In a process of its own: kills the worker in the middle of a request, then exits with 0 if neither the
/// request nor a second one has come back after a while.
[[noreturn]] void killWorkerDuringRequest(const Morvane::Testing::Recording& recording) {
    recording.hold("W00000001");
    auto* const sut = new TestController(nameOfThisProcess());
    std::atomic<int> returned = 0;
    const auto send = [&] {
        sut->sendRequest("W00000001:1:0");
        ++returned;
    };
    std::thread(send).detach();
    recording.waitForRequests(1);
    kill(sut->resources->process.pid, SIGKILL);
    sut->resources->process.waitForExit();
    std::thread(send).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    _exit(returned == 0 ? 0 : 1);
}

// Deliberate: nothing watches the worker.
TEST(ControllerWithoutWorker, WaitsForEverOnceTheWorkerHasBeenKilled) {
    const Morvane::Testing::Recording recording;

    const pid_t process = fork();
    if (process == 0) {
        killWorkerDuringRequest(recording);
    }
    int status = 0;
    waitpid(process, &status, 0);

    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(recording.requests(), Texts{"W00000001:1:0"});
}

}  // namespace
