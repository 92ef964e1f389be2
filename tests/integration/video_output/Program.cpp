#include "Program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace Morvane::Testing {

namespace {

std::vector<char*> argumentVector(const std::vector<std::string>& arguments) {
    std::vector<char*> vector;
    for (const std::string& argument : arguments)
        vector.push_back(const_cast<char*>(argument.c_str()));
    vector.push_back(nullptr);
    return vector;
}

}  // namespace

Program::Program(const std::vector<std::string>& arguments, const Surroundings& surroundings)
    : name(arguments.front()) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        std::abort();
    const std::vector<char*> vector = argumentVector(arguments);
    child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        if (!surroundings.standardError.empty())
            dup2(open(surroundings.standardError.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        if (surroundings.extraDescriptor != -1)
            fcntl(surroundings.extraDescriptor, F_SETFD, 0);
        execvp(vector.front(), vector.data());
        _exit(127);
    }
    close(ends[1]);
    readEnd = ends[0];
}

Program::~Program() {
    if (child != -1)
        end(SIGKILL);
    close(readEnd);
}

std::string Program::allOutput() {
    std::string text;
    char buffer[65536];
    for (ssize_t count = 0; (count = read(readEnd, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(count));
    wait();
    return text;
}

std::string Program::output() {
    std::string text = allOutput();
    EXPECT_EQ(code, 0) << name << " failed";
    return text;
}

void Program::end(int signal) {
    kill(child, signal);
    wait();
}

void Program::wait() {
    int status = 0;
    waitpid(child, &status, 0);
    child = -1;
    code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::vector<pid_t> childrenOf(pid_t parent) {
    const std::string process = std::to_string(parent);
    std::ifstream file("/proc/" + process + "/task/" + process + "/children");
    return {std::istream_iterator<pid_t>(file), std::istream_iterator<pid_t>()};
}

bool hasProgram(const std::string& name) {
    std::istringstream folders(std::getenv("PATH"));
    for (std::string folder; std::getline(folders, folder, ':');)
        if (access((folder + "/" + name).c_str(), X_OK) == 0)
            return true;
    return false;
}

std::string outputOf(const std::vector<std::string>& arguments) {
    return Program(arguments).output();
}

}  // namespace Morvane::Testing
