#include "platform/Confinement.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/ResourceLimits.h"

namespace Morvane::Platform {

bool isConfinementWanted() {
    const char* wanted = std::getenv("CORVEL_HELPER_CONFINEMENT");
    return wanted == nullptr || std::string(wanted) != "off";
}

std::uint64_t generousMemoryBytes() {
    const auto pages = static_cast<std::uint64_t>(std::max(sysconf(_SC_PHYS_PAGES), 0L));
    const auto pageBytes = static_cast<std::uint64_t>(std::max(sysconf(_SC_PAGESIZE), 1L));
    return std::max(pages * pageBytes / 4 * 3, std::uint64_t{2} << 30);
}

void limitResources(std::uint64_t memoryBytes, std::uint64_t fileBytes) {
    const auto lower = [](auto resource, std::uint64_t bytes) {
        struct rlimit limit {};
        getrlimit(resource, &limit);
        limit.rlim_cur = limit.rlim_max = std::min<rlim_t>(limit.rlim_max, bytes);
        setrlimit(resource, &limit);
    };
    if (!sanitized)
        lower(RLIMIT_DATA, memoryBytes);
    lower(RLIMIT_FSIZE, fileBytes);
    lower(RLIMIT_CORE, 0);
}

}  // namespace Morvane::Platform
