#include "host/render/HelperProcesses.h"

#include <fmt/format.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <thread>
#include <vector>

#include "platform/ChildProcesses.h"

namespace Corvel {
namespace {

// Even a killed process may hang, in a file system that does not answer.
constexpr std::chrono::seconds killedWithin(1);

using Clock = std::chrono::steady_clock;
using Morvane::Platform::ChildProcess;
using Morvane::Platform::childProcesses;

void signalAll(int signal) {
    for (const ChildProcess& child : childProcesses()) {
        kill(child.process, signal);
    }
}

// Whether all children have ended; those that have are reaped.
bool reapAll() {
    pid_t reaped = 0;
    do {
        reaped = waitpid(-1, nullptr, WNOHANG);
    } while (reaped > 0);
    return reaped == -1;
}

}  // namespace

std::string helperProcessesText() {
    std::vector<ChildProcess> children = childProcesses();
    const auto runs = [](const ChildProcess& child) { return !child.stopped; };
    if (!std::all_of(children.begin(), children.end(), runs)) {
        children.erase(std::remove_if(children.begin(), children.end(), runs), children.end());
    }
    std::string text;
    for (const ChildProcess& child : children) {
        text += fmt::format("{}{}{}", text.empty() ? "QuickTime helper, process " : " and ", child.process,
                            child.stopped ? ", stopped" : "");
    }
    return text;
}

void continueStoppedHelpers() {
    for (const ChildProcess& child : childProcesses()) {
        if (child.stopped) {
            kill(child.process, SIGCONT);
        }
    }
}

void killHelpers() {
    signalAll(SIGKILL);
}

void endHelpers(std::chrono::milliseconds grace) {
    signalAll(SIGTERM);
    signalAll(SIGCONT);
    const auto end = Clock::now() + grace;
    while (!reapAll() && Clock::now() < end + killedWithin) {
        if (Clock::now() >= end) {
            signalAll(SIGKILL);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

}  // namespace Corvel
