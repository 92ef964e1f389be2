#include "host/render/HelperWatch.h"

#include <sys/wait.h>

#include <chrono>
#include <optional>

namespace Corvel {
namespace {

using Morvane::Platform::ProcessEnd;

std::optional<ProcessEnd> endOfAnyChild() {
    siginfo_t state{};
    if (waitid(P_ALL, 0, &state, WEXITED | WNOWAIT | WNOHANG) != 0 || state.si_pid == 0) {
        return std::nullopt;
    }
    return ProcessEnd{state.si_code != CLD_EXITED, state.si_status};
}

}  // namespace

HelperWatch::HelperWatch(Died died, std::function<void()> look)
    : died(std::move(died)), look(std::move(look)), thread([this] { watch(); }) {}

HelperWatch::~HelperWatch() {
    {
        const std::lock_guard lock(mutex);
        stopping = true;
    }
    stopped.notify_all();
    thread.join();
}

void HelperWatch::expectEnd() {
    const std::lock_guard lock(mutex);
    expected = true;
}

void HelperWatch::watch() {
    std::unique_lock lock(mutex);
    while (!stopped.wait_for(lock, std::chrono::milliseconds(100), [this] { return stopping; })) {
        look();
        const std::optional<ProcessEnd> end = expected ? std::nullopt : endOfAnyChild();
        if (end) {
            expected = true;
            died(*end);
        }
    }
}

}  // namespace Corvel
