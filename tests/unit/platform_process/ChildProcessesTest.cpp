#include "platform/ChildProcesses.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace Morvane::Platform {
namespace {

pid_t startSleeper() {
    const pid_t child = fork();
    if (child == 0) {
        for (;;)
            pause();
    }
    return child;
}

using Children = std::vector<ChildProcess>;

TEST(ChildProcesses, AreNoneAtFirst) {
    EXPECT_EQ(childProcesses(), Children{});
}

TEST(ChildProcesses, ShowAStoppedChildAndLeaveADeadOneOut) {
    const pid_t child = startSleeper();
    EXPECT_EQ(childProcesses(), (Children{{child, false}}));
    kill(child, SIGSTOP);
    waitpid(child, nullptr, WUNTRACED);
    EXPECT_EQ(childProcesses(), (Children{{child, true}}));
    kill(child, SIGKILL);
    siginfo_t state;
    waitid(P_PID, static_cast<id_t>(child), &state, WEXITED | WNOWAIT);
    EXPECT_EQ(childProcesses(), Children{});
    waitpid(child, nullptr, 0);
}

TEST(ChildProcesses, ShowAChildOfAnotherThread) {
    pid_t child = 0;
    std::thread([&child] { child = startSleeper(); }).join();
    EXPECT_EQ(childProcesses(), (Children{{child, false}}));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

}  // namespace
}  // namespace Morvane::Platform
