#include "platform/OpenFiles.h"

#include <filesystem>

namespace Morvane::Platform {

std::vector<std::string> openFilePaths() {
    namespace fs = std::filesystem;
    std::vector<std::string> paths;
    std::error_code error;
    fs::directory_iterator entry("/proc/self/fd", error);
    for (const fs::directory_iterator end; !error && entry != end; entry.increment(error)) {
        std::error_code unreadable;
        const std::string target = fs::read_symlink(entry->path(), unreadable).string();
        if (!unreadable && !target.empty() && target.front() == '/')
            paths.push_back(target);
    }
    return paths;
}

}  // namespace Morvane::Platform
