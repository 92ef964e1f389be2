#include "processbridge/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "platform/Environment.h"
#include "processbridge/HostBundle.h"

namespace Morvane::ProcessBridge {

namespace {

constexpr const char* hostBundlePrefix = "..";

void makePipe(std::int32_t& readEnd, std::int32_t& writeEnd) {
    int ends[2];
    if (pipe(ends) != 0) {
        std::perror("Cannot create pipes");
        std::abort();
    }
    readEnd = ends[0];
    writeEnd = ends[1];
}

/// "/name" of "some/folder/name": the slash deliberately stays.
char* keptProgramName(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    // Never freed: the argument vector may be used as long as the process lives.
    return strdup(path.c_str() + (slash == std::string::npos ? 0 : slash));
}

void becomeChild(const ChildProcess& process, const std::string& path, std::vector<const char*>& arguments,
                 bool usePipes) {
    if (usePipes) {
        close(process.stdoutRead);
        close(process.stdinWrite);
        dup2(process.stdinRead, STDIN_FILENO);
        close(process.stdinRead);
        dup2(process.stdoutWrite, STDOUT_FILENO);
        close(process.stdoutWrite);
    }
    execve(path.c_str(), const_cast<char* const*>(arguments.data()), Platform::environment());
    const int reason = errno;
    std::cerr << path << std::endl;
    errno = reason;
    std::perror("Failed to launch child");
}

}  // namespace

int ChildProcess::launch(std::string& path, std::vector<const char*>& arguments, bool usePipes) {
    if (usePipes) {
        makePipe(stdoutRead, stdoutWrite);
        makePipe(stdinRead, stdinWrite);
    }
    arguments.insert(arguments.begin(), keptProgramName(path));
    arguments.push_back(nullptr);
    if (path.compare(0, 2, hostBundlePrefix) == 0) {
        path.replace(0, 2, hostBundleContentsPath());
    }

    const pid_t forked = fork();
    if (forked == -1) {
        std::perror("Could not fork for child");
        std::exit(1);
    }
    if (forked == 0) {
        // Returns only if the program could not be executed; then the child deliberately goes on as the
        // parent does.
        becomeChild(*this, path, arguments, usePipes);
        return 0;
    }
    pid = forked;
    if (usePipes) {
        close(stdoutWrite);
        close(stdinRead);
    }
    return 0;
}

bool ChildProcess::isRunning() const {
    int status = 0;
    return waitpid(pid, &status, WNOHANG) == 0;
}

bool ChildProcess::waitForExit() const {
    int status = 0;
    return waitpid(pid, &status, 0) == pid;
}

bool ChildProcess::terminate() const {
    if (kill(pid, SIGTERM) != 0) {
        std::perror("Could not terminate sub process");
        return false;
    }
    return true;
}

ssize_t ChildProcess::readFromStdout(void* buffer, std::size_t length) const {
    if (stdoutRead == -1) {
        std::perror("Could not read from stdout on child process");
        return 0;
    }
    return read(stdoutRead, buffer, length);
}

ssize_t ChildProcess::writeToStdin(const void* buffer, std::size_t length) const {
    // The other end is deliberately the one tested: it only tells whether pipes were ever made.
    if (stdinRead == -1) {
        std::perror("Could not write to stdin on child process");
        return 0;
    }
    return write(stdinWrite, buffer, length);
}

ssize_t ChildProcess::writeToStdin(const std::string& text) const {
    return writeToStdin(text.c_str(), text.size() + 1);
}

void ChildProcess::closePipes() const {
    if (stdoutRead != -1) {
        close(stdoutRead);
    }
    if (stdinWrite != -1) {
        close(stdinWrite);
    }
}

}  // namespace Morvane::ProcessBridge
