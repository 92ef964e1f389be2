#include "processbridge/ChildProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "processbridge/HostBundle.h"
#include "tests/unit/processbridge/ForkRefusal.h"
#include "tests/unit/processbridge/WaitGate.h"

namespace {

using Morvane::ProcessBridge::ChildProcess;

/// Starts `path` and leaves no child behind.
class Launched {
public:
    Launched(std::string startedPath, std::vector<const char*> startedArguments, bool usePipes)
        : path(std::move(startedPath)), arguments(std::move(startedArguments)) {
        answer = process.launch(path, arguments, usePipes);
        if (getpid() != test) {
            _exit(97);  // the program could not be executed
        }
    }
    ~Launched() {
        process.closePipes();
        if (process.pid > 0) {
            kill(process.pid, SIGKILL);
            process.waitForExit();
        }
        free(const_cast<char*>(arguments.front()));
    }

    std::string output() const {
        std::string all;
        char buffer[256];
        for (ssize_t length = 0; (length = process.readFromStdout(buffer, sizeof buffer)) > 0;) {
            all.append(buffer, static_cast<std::size_t>(length));
        }
        return all;
    }

    const pid_t test = getpid();
    std::string path;
    std::vector<const char*> arguments;
    ChildProcess process;
    int answer = -1;
};

TEST(ChildProcess, IsFiveNumbersOfMinusOne) {
    const ChildProcess sut;
    unsigned char untouched[sizeof sut];
    std::memset(untouched, 0xff, sizeof untouched);

    EXPECT_EQ(std::memcmp(&sut, untouched, sizeof sut), 0);
    EXPECT_EQ(offsetof(ChildProcess, pid), 0u);
    EXPECT_EQ(offsetof(ChildProcess, stdoutRead), 4u);
    EXPECT_EQ(offsetof(ChildProcess, stdoutWrite), 8u);
    EXPECT_EQ(offsetof(ChildProcess, stdinRead), 12u);
    EXPECT_EQ(offsetof(ChildProcess, stdinWrite), 16u);
}

// Deliberate: the program's name keeps its slash.
TEST(ChildProcess, IsCalledByTheLastPartOfItsPathSlashIncluded) {
    const Launched sut("/bin/sh", {"-c", "printf %s \"$0\""}, true);

    EXPECT_EQ(sut.output(), "/sh");
    EXPECT_STREQ(sut.arguments.front(), "/sh");
    EXPECT_EQ(sut.arguments.back(), nullptr);
    EXPECT_EQ(sut.arguments.size(), 4u);
    EXPECT_EQ(sut.answer, 0);
}

TEST(ChildProcess, ExecutesAPathWithoutLeadingDotsAsItIsGiven) {
    const Launched sut("/bin/true", {}, false);

    EXPECT_EQ(sut.path, "/bin/true");
    EXPECT_TRUE(sut.process.waitForExit());
}

TEST(ChildProcess, ReplacesLeadingDotsByTheHostBundlesContents) {
    Morvane::Testing::WaitGate gate;
    testing::internal::CaptureStderr();
    const Launched sut("../MacOS/no-such-program", {}, false);
    sut.process.isRunning();
    testing::internal::GetCapturedStderr();

    EXPECT_EQ(sut.path, Morvane::ProcessBridge::hostBundleContentsPath() + "/MacOS/no-such-program");
    EXPECT_STREQ(sut.arguments.front(), "/no-such-program");
}

TEST(ChildProcess, GetsTheWholeEnvironmentOfTheMoment) {
    setenv("CORVEL_CHILD_PROCESS_TEST", "here", 1);
    const Launched sut("/bin/sh", {"-c", "printf %s \"$CORVEL_CHILD_PROCESS_TEST\""}, true);
    unsetenv("CORVEL_CHILD_PROCESS_TEST");

    EXPECT_EQ(sut.output(), "here");
}

TEST(ChildProcess, StaysInTheCurrentFolder) {
    char folder[PATH_MAX];
    const Launched sut("/bin/sh", {"-c", "pwd -P"}, true);

    EXPECT_EQ(sut.output(), std::string(getcwd(folder, sizeof folder)) + "\n");
}

TEST(ChildProcess, TalksThroughItsPipes) {
    const Launched sut("/bin/cat", {}, true);

    EXPECT_EQ(sut.process.writeToStdin("abc", 3), 3);
    EXPECT_EQ(sut.process.writeToStdin(std::string("de")), 3);
    close(sut.process.stdinWrite);

    EXPECT_EQ(sut.output(), std::string("abcde\0", 6));
}

TEST(ChildProcess, KeepsTheNumbersOfThePipeEndsThatTheParentCloses) {
    const Launched sut("/bin/cat", {}, true);

    EXPECT_NE(sut.process.stdoutWrite, -1);
    EXPECT_NE(sut.process.stdinRead, -1);
    EXPECT_EQ(fcntl(sut.process.stdoutWrite, F_GETFD), -1);
    EXPECT_EQ(fcntl(sut.process.stdinRead, F_GETFD), -1);
    EXPECT_NE(fcntl(sut.process.stdoutRead, F_GETFD), -1);
    EXPECT_NE(fcntl(sut.process.stdinWrite, F_GETFD), -1);
}

TEST(ChildProcess, ClosesThePipeEndsOfThisSide) {
    ChildProcess sut;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    sut.stdoutRead = ends[0];
    sut.stdinWrite = ends[1];

    sut.closePipes();

    EXPECT_EQ(sut.stdoutRead, ends[0]);
    EXPECT_EQ(fcntl(ends[0], F_GETFD), -1);
    EXPECT_EQ(fcntl(ends[1], F_GETFD), -1);
}

TEST(ChildProcess, HasNoPipesUnlessTheyWereAskedFor) {
    const Launched sut("/bin/true", {}, false);
    char byte = 0;

    errno = EBADF;
    testing::internal::CaptureStderr();
    EXPECT_EQ(sut.process.readFromStdout(&byte, 1), 0);
    EXPECT_EQ(sut.process.writeToStdin(&byte, 1), 0);
    EXPECT_EQ(sut.process.writeToStdin(std::string("a")), 0);
    const std::string errors = testing::internal::GetCapturedStderr();

    EXPECT_EQ(errors.find("Could not read from stdout on child process: "), 0u);
    EXPECT_NE(errors.find("Could not write to stdin on child process: "), std::string::npos);
}

// Deliberate: writing asks about the other end of its pipe.
TEST(ChildProcess, WritesOnlyWhereTheReadEndIsKnown) {
    ChildProcess sut;
    sut.stdinWrite = STDERR_FILENO;
    testing::internal::CaptureStderr();

    EXPECT_EQ(sut.writeToStdin("x", 1), 0);

    EXPECT_EQ(testing::internal::GetCapturedStderr().find("Could not write to stdin on child process: "), 0u);
}

TEST(ChildProcess, RunsUntilItHasEnded) {
    const Launched sut("/bin/cat", {}, true);

    EXPECT_TRUE(sut.process.isRunning());
    close(sut.process.stdinWrite);
    EXPECT_TRUE(sut.process.waitForExit());
    EXPECT_FALSE(sut.process.isRunning());
    EXPECT_FALSE(sut.process.waitForExit());
}

TEST(ChildProcess, IsEndedBySigterm) {
    const Launched sut("/bin/cat", {}, true);

    EXPECT_TRUE(sut.process.terminate());

    int status = 0;
    EXPECT_EQ(waitpid(sut.process.pid, &status, 0), sut.process.pid);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST(ChildProcess, CannotBeEndedTwice) {
    const Launched sut("/bin/true", {}, false);
    sut.process.waitForExit();
    testing::internal::CaptureStderr();

    EXPECT_FALSE(sut.process.terminate());

    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Could not terminate sub process: No such process\n");
}

// Deliberate: the child of a failed execution comes back from the call like the parent.
TEST(ChildProcess, ComesBackInTheChildWhenTheProgramCannotBeExecuted) {
    Morvane::Testing::WaitGate gate;
    testing::internal::CaptureStderr();

    const Launched sut("/no/such/program", {}, false);
    const bool running = sut.process.isRunning();

    EXPECT_FALSE(running);
    EXPECT_EQ(Morvane::Testing::endSeenThroughGate(), 97);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "/no/such/program\nFailed to launch child: No such file or directory\n");
}

void launchWithoutDescriptors() {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_NOFILE, &none);
    std::string path = "/bin/true";
    std::vector<const char*> arguments;
    ChildProcess().launch(path, arguments, true);
}

void launchWithoutForks() {
    Morvane::Testing::refuseToFork();
    std::string path = "/bin/true";
    std::vector<const char*> arguments;
    ChildProcess().launch(path, arguments, false);
}

// Deliberate: the whole process ends.
TEST(ChildProcessDeathTest, EndsTheProcessWhenItCannotFork) {
    EXPECT_EXIT(launchWithoutForks(), testing::ExitedWithCode(1), "Could not fork for child: ");
}

TEST(ChildProcessDeathTest, AbortsWhenPipesCannotBeMade) {
    EXPECT_EXIT(launchWithoutDescriptors(), testing::KilledBySignal(SIGABRT), "Cannot create pipes: ");
}

}  // namespace
