#include "platform/ChildProcesses.h"

#include <libproc.h>
#include <sys/proc.h>
#include <sys/proc_info.h>
#include <unistd.h>

#include <array>

namespace Morvane::Platform {

std::vector<ChildProcess> childProcesses() {
    std::array<pid_t, 256> found{};
    const int count = proc_listchildpids(getpid(), found.data(), static_cast<int>(sizeof found));
    std::vector<ChildProcess> children;
    for (int i = 0; i < count; ++i) {
        proc_bsdinfo info{};
        const int bytes =
            proc_pidinfo(found[static_cast<std::size_t>(i)], PROC_PIDTBSDINFO, 0, &info, sizeof info);
        if (bytes == static_cast<int>(sizeof info) && info.pbi_status != SZOMB)
            children.push_back({found[static_cast<std::size_t>(i)], info.pbi_status == SSTOP});
    }
    return children;
}

}  // namespace Morvane::Platform
