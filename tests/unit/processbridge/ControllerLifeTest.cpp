#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <type_traits>

#include "tests/children/recording_worker/Recording.h"
#include "tests/unit/processbridge/TestController.h"
#include "tests/unit/processbridge/WaitGate.h"

namespace {

using Morvane::ProcessBridge::Controller;
using Morvane::ProcessBridge::ResourceNames;
using Morvane::Testing::TestController;

class ControllerLife : public testing::Test {
protected:
    ~ControllerLife() override {
        // What a failed construction or destruction leaves, deliberately.
        sem_unlink(readyName.c_str());
        sem_unlink(doneName.c_str());
    }

    static bool semaphoreExists(const std::string& name) {
        sem_t* semaphore = sem_open(name.c_str(), 0);
        if (semaphore == SEM_FAILED) {
            return false;
        }
        sem_close(semaphore);
        return true;
    }

    /// The message of the exception that `action` throws. A child in which the worker could not be executed
    /// ends here: with 42 if it was thrown the same.
    static std::string messageOf(const std::function<void()>& action) {
        const pid_t test = getpid();
        std::string message = "nothing thrown";
        try {
            action();
        } catch (const std::runtime_error& error) {
            message = error.what();
        }
        if (getpid() != test) {
            _exit(message == "Could not launch worker process" ? 42 : 43);
        }
        return message;
    }

    const Morvane::Testing::Recording recording;
    // A name for each test process: 32 characters, and those that the semaphores keep differ.
    const std::string name = [] {
        std::string digits = "0123456789abcdef0123456789abcdef";
        const std::string process = std::to_string(getpid());
        return digits.replace(8, process.size(), process);
    }();
    const ResourceNames names{name};
    const std::string readyName = names.readySemaphore.substr(0, 30);
    const std::string doneName = names.doneSemaphore.substr(0, 30);
};

TEST_F(ControllerLife, StartsTheWorkerWithBridgeNameAndMode) {
    TestController sut(name);
    sut.sendRequest("W00000002");

    EXPECT_EQ(recording.arguments(), (std::vector<std::string>{"/CorvelQuickTimeHelper-32", name, "write"}));
}

TEST_F(ControllerLife, GivesTheWorkerTheHostsWholeEnvironment) {
    setenv("CORVEL_CONTROLLER_TEST", "value with blanks", 1);
    TestController sut(name);
    sut.sendRequest("W00000002");
    unsetenv("CORVEL_CONTROLLER_TEST");

    std::vector<std::string> expected;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        expected.push_back(*entry);
    }
    expected.push_back("CORVEL_CONTROLLER_TEST=value with blanks");
    std::vector<std::string> found = recording.environment();
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected);
}

TEST_F(ControllerLife, GivesTheWorkerTheEnvironmentWithoutATemporaryFolderToo) {
    unsetenv("CORVEL_TEMP_DIR");
    {
        TestController sut(name);
        sut.sendRequest("W00000002");
        EXPECT_EQ(access(("/tmp/processbridge/" + name).c_str(), F_OK), 0);
    }

    std::vector<std::string> expected;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        expected.emplace_back(*entry);
        EXPECT_NE(expected.back().rfind("CORVEL_TEMP_DIR=", 0), 0u);
    }
    std::vector<std::string> found = recording.environment();
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected);
    EXPECT_NE(access(("/tmp/processbridge/" + name).c_str(), F_OK), 0);
    std::filesystem::create_directories(recording.folder / "shared" / "processbridge");
}

TEST_F(ControllerLife, ExecutesAWorkerPathWithoutLeadingDotsAsItIsGiven) {
    TestController sut(name, RECORDING_WORKER, {"read", "more"});
    sut.sendRequest("R00000003");

    EXPECT_EQ(recording.arguments(), (std::vector<std::string>{"/recording_worker", name, "read", "more"}));
}

TEST_F(ControllerLife, CreatesSemaphoresAtOnceAndFilesWhenTheyAreNeeded) {
    TestController sut(name);

    EXPECT_TRUE(semaphoreExists(readyName));
    EXPECT_TRUE(semaphoreExists(doneName));
    EXPECT_FALSE(sut.resources->dataFile.isValid());
    EXPECT_FALSE(sut.resources->requestFile.isValid());
}

TEST_F(ControllerLife, LeavesNothingBehind) {
    pid_t worker = -1;
    {
        TestController sut(name);
        sut.writeSharedString("text");
        sut.sendRequest("W00000002");
        worker = sut.resources->process.pid;
    }

    EXPECT_EQ(recording.leftovers(), std::vector<std::string>{});
    EXPECT_EQ(kill(worker, 0), -1);
    EXPECT_EQ(errno, ESRCH);
}

TEST_F(ControllerLife, ReportsAWorkerThatHasEndedAtOnce) {
    const Morvane::Testing::WaitGate gate;
    testing::internal::CaptureStderr();

    EXPECT_EQ(messageOf([&] { TestController(name, "/bin/false"); }), "Could not launch worker process");

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Worker process /bin/false failed\n");
    // Deliberate: what was created so far stays.
    EXPECT_TRUE(semaphoreExists(readyName));
    EXPECT_TRUE(semaphoreExists(doneName));
}

TEST_F(ControllerLife, NamesTheWorkerAsItWasGiven) {
    const Morvane::Testing::WaitGate gate;
    testing::internal::CaptureStderr();

    messageOf([&] { TestController(name, "../MacOS/none"); });

    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_NE(errors.find("Worker process ../MacOS/none failed\n"), std::string::npos) << errors;
}

// Deliberate: the child of a failed execution throws from the constructor too.
TEST_F(ControllerLife, ThrowsInTheChildInWhichTheWorkerCannotBeExecuted) {
    const Morvane::Testing::WaitGate gate;
    testing::internal::CaptureStderr();

    EXPECT_EQ(messageOf([&] { TestController(name, "/no/such/worker"); }), "Could not launch worker process");

    EXPECT_EQ(Morvane::Testing::endSeenThroughGate(), 42);
    testing::internal::GetCapturedStderr();
}

TEST_F(ControllerLife, DoesNotNoticeAWorkerThatDiesLater) {
    auto sut = std::make_unique<TestController>(name);
    const pid_t worker = sut->resources->process.pid;

    kill(worker, SIGKILL);
    siginfo_t end{};
    waitid(P_PID, static_cast<id_t>(worker), &end, WEXITED | WNOWAIT);

    // Nobody has reaped it, so it can still be signalled.
    EXPECT_EQ(messageOf([&] { sut.reset(); }), "nothing thrown");
    EXPECT_FALSE(semaphoreExists(readyName));
}

TEST_F(ControllerLife, ThrowsFromItsDestructorWhenTheWorkerIsGone) {
    testing::internal::CaptureStderr();

    const std::string message = messageOf([&] {
        TestController sut(name);
        kill(sut.resources->process.pid, SIGKILL);
        sut.resources->process.waitForExit();
    });

    EXPECT_EQ(message, "Worker process already stopped?");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Could not terminate sub process: No such process\nWorker process failed\n");
    // Deliberate: the shared objects are left alone.
    EXPECT_TRUE(semaphoreExists(readyName));
    EXPECT_TRUE(semaphoreExists(doneName));
}

TEST_F(ControllerLife, MayThrowFromItsDestructor) {
    EXPECT_FALSE(std::is_nothrow_destructible_v<Controller>);
    EXPECT_FALSE(std::is_nothrow_destructible_v<TestController>);
}

using ControllerLifeDeathTest = ControllerLife;

TEST_F(ControllerLifeDeathTest, AbortsWhereItsSemaphoresExistAlready) {
    const Morvane::ProcessBridge::NamedSemaphore taken(names.readySemaphore, true, 0);

    EXPECT_EXIT(TestController{name}, testing::KilledBySignal(SIGABRT),
                "Could not open semaphore: File exists");
}

}  // namespace
