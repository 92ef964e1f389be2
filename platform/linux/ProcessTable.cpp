#include "platform/linux/ProcessTable.h"

#include <fstream>
#include <sstream>
#include <string>

namespace Morvane::Platform {

std::optional<ProcessEntry> processEntry(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string stat;
    // The second field is the program's name in brackets and may hold anything, line breaks too.
    std::getline(file, stat, '\0');
    const std::size_t name = stat.rfind(')');
    if (name == std::string::npos)
        return std::nullopt;
    std::istringstream fields(stat.substr(name + 1));
    ProcessEntry entry{};
    fields >> entry.state >> entry.parent;
    constexpr int between = 17;  // fields 5 to 21
    std::string passed;
    for (int i = 0; i < between; ++i)
        fields >> passed;
    fields >> entry.start;
    return fields ? std::optional(entry) : std::nullopt;
}

}  // namespace Morvane::Platform
