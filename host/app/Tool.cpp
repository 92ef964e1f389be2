#include "host/app/Tool.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "host/render/Bundle.h"
#include "host/render/Failure.h"

namespace Corvel {

std::string toolPath(const std::string& program) {
    return Bundle().contents() + "/Resources/" + program;
}

void becomeTool(const std::string& program, const std::vector<std::string>& arguments) {
    const std::string path = toolPath(program);
    std::vector<const char*> words{path.c_str()};
    for (const std::string& argument : arguments) {
        words.push_back(argument.c_str());
    }
    words.push_back(nullptr);
    execv(path.c_str(), const_cast<char* const*>(words.data()));
    throw Failure(Exit::HelperFailed, fmt::format("cannot start {}: {}", path, std::strerror(errno)));
}

}  // namespace Corvel
