#include "tests/unit/processbridge/WaitGate.h"

#include <sys/resource.h>
#include <sys/wait.h>

namespace {

bool gateIsUp = false;
int lastEnd = 0;

}  // namespace

namespace Morvane::Testing {

WaitGate::WaitGate() {
    gateIsUp = true;
}

WaitGate::~WaitGate() {
    gateIsUp = false;
}

int endSeenThroughGate() {
    return lastEnd;
}

}  // namespace Morvane::Testing

/// Stands in for the C library's function of that name in this program.
extern "C" pid_t waitpid(pid_t process, int* status, int options) {
    siginfo_t end{};
    // A process number of -1 is a child in which a program could not be executed: it has no children to wait
    // for.
    if (gateIsUp && options == WNOHANG && process > 0) {
        if (waitid(P_PID, static_cast<id_t>(process), &end, WEXITED | WNOWAIT) == 0) {
            lastEnd = end.si_code == CLD_EXITED ? end.si_status : -end.si_status;
        }
    }
    return wait4(process, status, options, nullptr);
}
