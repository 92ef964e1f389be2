#include "tests/integration/real_worker/StandardError.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <sstream>

namespace Morvane::Testing {

StandardError::StandardError(const std::string& filePath) : path(filePath), original(dup(STDERR_FILENO)) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
}

StandardError::~StandardError() {
    dup2(original, STDERR_FILENO);
    close(original);
    // A test that failed can be understood then.
    std::cerr << text();
}

std::string StandardError::text() const {
    std::ostringstream all;
    all << std::ifstream(path).rdbuf();
    return all.str();
}

}  // namespace Morvane::Testing
