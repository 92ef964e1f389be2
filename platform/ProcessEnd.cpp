#include <sys/wait.h>

#include "platform/ProcessWatch.h"

namespace Morvane::Platform {

std::optional<ProcessEnd> endOfChild(pid_t child) {
    siginfo_t state{};  // si_pid stays 0 while the child runs
    if (waitid(P_PID, static_cast<id_t>(child), &state, WEXITED | WNOHANG | WNOWAIT) != 0 ||
        state.si_pid == 0)
        return std::nullopt;
    return ProcessEnd{state.si_code != CLD_EXITED, state.si_status};
}

}  // namespace Morvane::Platform
