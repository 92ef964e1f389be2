#include "platform/ProcessWatch.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <system_error>
#include <thread>

namespace Morvane::Platform {
namespace {

/// A child of the test that ends, and is reaped, with the object at the latest.
class Child {
public:
    explicit Child(const std::function<void()>& body) : pid(fork()) {
        if (pid == 0) {
            body();
            _exit(0);
        }
    }
    ~Child() {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }

    const pid_t pid;
};

void sleepForEver() {
    for (;;)
        pause();
}

TEST(ProcessWatchTest, TellsThatAKilledProcessDied) {
    Child child(sleepForEver);
    ProcessWatch sut(child.pid);
    EXPECT_FALSE(sut.isDead());

    kill(child.pid, SIGKILL);

    EXPECT_EQ(sut.wait(), ProcessWatch::Outcome::Died);
    EXPECT_TRUE(sut.isDead());
}

TEST(ProcessWatchTest, LeavesTheChildToBeReaped) {
    Child child([] { _exit(7); });
    ProcessWatch sut(child.pid);
    ASSERT_EQ(sut.wait(), ProcessWatch::Outcome::Died);

    int status = 0;
    EXPECT_EQ(waitpid(child.pid, &status, 0), child.pid);
    EXPECT_EQ(WEXITSTATUS(status), 7);
}

TEST(ProcessWatchTest, WatchesADeadChildThatNobodyHasReaped) {
    Child child([] {});
    siginfo_t state{};
    waitid(P_PID, static_cast<id_t>(child.pid), &state, WEXITED | WNOWAIT);

    ProcessWatch sut(child.pid);

    EXPECT_TRUE(sut.isDead());
}

TEST(ProcessWatchTest, IgnoresTheEndOfTheFirstThread) {
    int ended[2];
    ASSERT_EQ(pipe(ended), 0);
    std::unique_ptr<Child> child;
    // Forked by a thread of our own, so that the child's first thread can end without unwinding the test
    // framework.
    std::thread forking([&] {
        child = std::make_unique<Child>([&] {
            std::thread([&] {
                [[maybe_unused]] const auto told = write(ended[1], "", 1);
                sleepForEver();
            }).detach();
            pthread_exit(nullptr);
        });
    });
    forking.join();
    ProcessWatch sut(child->pid);
    char byte;
    ASSERT_EQ(read(ended[0], &byte, 1), 1);

    EXPECT_EQ(sut.wait(std::chrono::milliseconds(50)), ProcessWatch::Outcome::TimedOut);

    close(ended[0]);
    close(ended[1]);
}

TEST(ProcessWatchTest, StopsWaitingWhenItIsCancelled) {
    Child child(sleepForEver);
    ProcessWatch sut(child.pid);

    std::thread canceller([&] { sut.cancel(); });

    EXPECT_EQ(sut.wait(), ProcessWatch::Outcome::Cancelled);
    canceller.join();
    EXPECT_EQ(sut.wait(), ProcessWatch::Outcome::Cancelled);
}

TEST(ProcessWatchTest, RefusesAProcessThatDoesNotExist) {
    pid_t gone;
    {
        Child child([] {});
        gone = child.pid;
    }

    EXPECT_THROW(ProcessWatch sut(gone), std::system_error);
}

TEST(EndOfChildTest, TellsTheSignalThatKilledTheChild) {
    Child child(sleepForEver);
    EXPECT_FALSE(endOfChild(child.pid).has_value());
    kill(child.pid, SIGKILL);
    ProcessWatch(child.pid).wait();

    const auto end = endOfChild(child.pid);

    ASSERT_TRUE(end.has_value());
    EXPECT_TRUE(end->signalled);
    EXPECT_EQ(end->number, SIGKILL);
}

TEST(EndOfChildTest, TellsTheExitCode) {
    Child child([] { _exit(4); });
    ProcessWatch(child.pid).wait();

    const auto end = endOfChild(child.pid);

    ASSERT_TRUE(end.has_value());
    EXPECT_FALSE(end->signalled);
    EXPECT_EQ(end->number, 4);
}

}  // namespace
}  // namespace Morvane::Platform
