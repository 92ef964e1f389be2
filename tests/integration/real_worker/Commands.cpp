#include "tests/integration/real_worker/Commands.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

namespace Morvane::Testing {

namespace {

[[noreturn]] void execute(const std::vector<std::string>& arguments, int output) {
    std::vector<char*> vector;
    for (const std::string& argument : arguments)
        vector.push_back(const_cast<char*>(argument.c_str()));
    vector.push_back(nullptr);
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    execvp(vector[0], vector.data());
    _exit(127);
}

}  // namespace

std::string outputOf(const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const pid_t child = fork();
    if (child == 0)
        execute(arguments, ends[1]);
    close(ends[1]);
    std::string output;
    char buffer[65536];
    for (ssize_t count; (count = read(ends[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, static_cast<std::size_t>(count));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw std::runtime_error(arguments[0] + " failed");
    return output;
}

}  // namespace Morvane::Testing
