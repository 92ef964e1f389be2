#include "platform/OpenFiles.h"

#include <fcntl.h>
#include <sys/param.h>
#include <unistd.h>

namespace Morvane::Platform {

std::vector<std::string> openFilePaths() {
    std::vector<std::string> paths;
    char path[MAXPATHLEN];
    for (int descriptor = 0; descriptor < getdtablesize(); ++descriptor)
        if (fcntl(descriptor, F_GETPATH, path) != -1 && path[0] == '/')
            paths.emplace_back(path);
    return paths;
}

}  // namespace Morvane::Platform
