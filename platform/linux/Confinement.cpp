#include "platform/Confinement.h"

#include <sys/prctl.h>

#include <cerrno>
#include <csignal>
#include <system_error>

#include "platform/ResourceLimits.h"
#include "platform/linux/CallFilter.h"
#include "platform/linux/Landlock.h"

namespace Morvane::Platform {

void confine(const Confinement& confinement) {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot give up new privileges");
    limitResources(confinement.memoryBytes, confinement.fileBytes);
    if (landlockVersion() > 0)
        restrictFiles(confinement);
    // Every kernel that this is built for can filter system calls, unless somebody configured that away.
    if (prctl(PR_GET_SECCOMP) >= 0)
        filterCalls();
}

std::string confinementText() {
    std::string text = "no new privileges, limits on memory and file size";
    if (prctl(PR_GET_SECCOMP) >= 0)
        text += ", no network, no other programs (system call filter)";
    const int version = landlockVersion();
    return text + (version > 0
                       ? ", no files written but the bridge's (Landlock " + std::to_string(version) + ")"
                       : "; files are not restricted, since the kernel has no Landlock");
}

void endWithParent() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

}  // namespace Morvane::Platform
