#include "platform/ChildProcesses.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "platform/linux/ProcessTable.h"

namespace Morvane::Platform {

std::vector<ChildProcess> childProcesses() {
    namespace fs = std::filesystem;
    std::vector<ChildProcess> children;
    std::error_code error;
    fs::directory_iterator folder("/proc", error);
    for (const fs::directory_iterator end; !error && folder != end; folder.increment(error)) {
        const pid_t process = std::atoi(folder->path().filename().c_str());
        const auto entry = process > 0 ? processEntry(process) : std::nullopt;
        if (entry && entry->parent == getpid() && entry->state != 'Z' && entry->state != 'X')
            children.push_back({process, entry->state == 'T'});
    }
    return children;
}

}  // namespace Morvane::Platform
