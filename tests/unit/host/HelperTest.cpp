#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <latch>
#include <semaphore>

#include "host/render/HelperOutput.h"
#include "host/render/HelperWatch.h"
#include "host/render/Interrupts.h"

namespace Corvel {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// Returns once the shell runs: until then the child has this process's signal handlers.
pid_t startChild(const char* script) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", script, nullptr);
        _exit(126);
    }
    close(ends[1]);
    char nothing = 0;
    EXPECT_EQ(read(ends[0], &nothing, 1), 0);
    close(ends[0]);
    return child;
}

void reap(pid_t child) {
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child) << "nobody else may have reaped it";
}

TEST(HelperOutput, HandsOnWhatTheHelperWritesLineByLine) {
    Lines lines;
    HelperOutput sut([&](const std::string& line) { lines.push_back(line); });
    pid_t child = 0;
    sut.capture([&] { child = startChild("echo one >&2; echo two >&2; printf three >&2"); });
    reap(child);
    sut.drain(10s);
    EXPECT_EQ(lines, (Lines{"one", "two", "three"}));
}

TEST(HelperOutput, GivesStandardErrorBack) {
    HelperOutput sut([](const std::string& line) { ADD_FAILURE() << line; });
    char before[64] = {}, after[64] = {};
    EXPECT_GT(readlink("/proc/self/fd/2", before, sizeof before - 1), 0);
    sut.capture([] {});
    EXPECT_GT(readlink("/proc/self/fd/2", after, sizeof after - 1), 0);
    EXPECT_STREQ(before, after);
}

TEST(HelperOutput, PassesOnWhatStartingThrows) {
    HelperOutput sut([](const std::string&) {});
    EXPECT_THROW(sut.capture([] { throw std::runtime_error("no"); }), std::runtime_error);
}

TEST(HelperOutput, EndsThoughAGrandchildKeepsItsEndOpen) {
    pid_t child = 0;
    {
        HelperOutput sut([](const std::string&) {});
        sut.capture([&] { child = startChild("exec sleep 1000"); });
    }
    kill(child, SIGKILL);
    reap(child);
}

TEST(HelperOutputDeathTest, ShowsWhatWasSaidBeforeAnAbort) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            // The thread that reads is kept busy, as if it had no time before the process ends.
            std::latch never(1);
            HelperOutput sut([&](const std::string&) { never.wait(); });
            sut.capture([] {
                EXPECT_EQ(write(STDERR_FILENO, "first\n", 6), 6);
                std::this_thread::sleep_for(50ms);
                EXPECT_EQ(write(STDERR_FILENO, "Could not open semaphore\n", 25), 25);
                std::abort();
            });
        },
        testing::KilledBySignal(SIGABRT), "Could not open semaphore");
}

TEST(HelperWatch, TellsHowTheHelperDiedAndLeavesItToBeReaped) {
    const pid_t child = startChild("kill -9 $$");
    std::binary_semaphore told(0);
    Morvane::Platform::ProcessEnd end{};
    HelperWatch sut(
        [&](const auto& seen) {
            end = seen;
            told.release();
        },
        [] {});
    told.acquire();
    EXPECT_TRUE(end.signalled);
    EXPECT_EQ(end.number, 9);
    reap(child);
}

TEST(HelperWatch, TellsAnExitCode) {
    const pid_t child = startChild("exit 3");
    std::binary_semaphore told(0);
    Morvane::Platform::ProcessEnd end{};
    HelperWatch sut(
        [&](const auto& seen) {
            end = seen;
            told.release();
        },
        [] {});
    told.acquire();
    EXPECT_FALSE(end.signalled);
    EXPECT_EQ(end.number, 3);
    reap(child);
}

TEST(HelperWatch, IsQuietAboutAnEndThatIsExpected) {
    std::counting_semaphore<> looks(0);
    HelperWatch sut([](const auto&) { FAIL(); }, [&] { looks.release(); });
    sut.expectEnd();
    const pid_t child = startChild("exit 3");
    for (int i = 0; i < 5; ++i) {
        looks.acquire();
    }
    reap(child);
}

TEST(Interrupts, CountSignals) {
    const Interrupts sut;
    EXPECT_EQ(sut.count(), 0);
    raise(SIGINT);
    raise(SIGTERM);
    raise(SIGHUP);
    EXPECT_EQ(sut.count(), 3);
}

TEST(Interrupts, CountFromZeroEachTime) {
    {
        const Interrupts former;
        raise(SIGINT);
    }
    EXPECT_EQ(Interrupts().count(), 0);
}

TEST(Interrupts, LeaveASignalAloneThatWasIgnored) {
    std::signal(SIGHUP, SIG_IGN);
    {
        const Interrupts sut;
        raise(SIGHUP);
        EXPECT_EQ(sut.count(), 0);
    }
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_IGN);
}

TEST(Interrupts, CountWhatComesWhileTheyAreHeldBack) {
    const Interrupts sut;
    {
        const Interrupts::HeldBack heldBack;
        raise(SIGINT);
        EXPECT_EQ(sut.count(), 0);
    }
    EXPECT_EQ(sut.count(), 1);
}

TEST(Interrupts, DoNotReachAHelperThatIsStartedWhileTheyAreHeldBack) {
    const Interrupts sut;
    pid_t child = 0;
    {
        const Interrupts::HeldBack heldBack;
        child = startChild("kill -INT $$; kill -HUP $$; exit 7");
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(Interrupts, LeaveAHelperEndableBySigterm) {
    const Interrupts sut;
    pid_t child = 0;
    {
        const Interrupts::HeldBack heldBack;
        child = startChild("exec sleep 1000");
    }
    kill(child, SIGTERM);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
}

}  // namespace
}  // namespace Corvel
