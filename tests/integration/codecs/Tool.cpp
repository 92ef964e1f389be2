#include "tests/integration/codecs/Tool.h"

#include <stdlib.h>

#include <array>
#include <cstdio>
#include <stdexcept>

namespace Morvane::Worker::Trial {

TestFolder::TestFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "codecs-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("cannot make a folder for the test");
    path = pattern;
}

TestFolder::~TestFolder() {
    std::filesystem::remove_all(path);
}

std::string outputOf(const std::string& command) {
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe)
        throw std::runtime_error("cannot run " + command);
    std::string output;
    std::array<char, 65536> part;
    while (const std::size_t count = fread(part.data(), 1, part.size(), pipe))
        output.append(part.data(), count);
    if (pclose(pipe) != 0)
        throw std::runtime_error("failed: " + command);
    return output;
}

}  // namespace Morvane::Worker::Trial
